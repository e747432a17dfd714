#include "rastrel/printing/pipe_reader.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "rastrel/job/app_log.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/thread.h"

namespace os = rastrel::os;

namespace rastrel::printing {

void AppendPiece(std::wstring& text, const char* bytes, unsigned count) {
  const std::string_view piece(bytes, count);
  os::AppendWideFromUtf8(text, piece.substr(0, std::min(piece.find('\0'), piece.size())));
}

}  // namespace rastrel::printing

CPipeReader::CPipeReader(HANDLE* pipe) : m_pPipe(pipe), m_pBuffer(new char[BufferSize]) {}

CPipeReader::~CPipeReader() = default;

bool CPipeReader::Start() {
  m_pSemaphore = std::make_unique<CSemaphore>(1, 1);
  m_pLock = std::make_unique<CSingleLock>(m_pSemaphore.get());
  if (m_pSemaphore->m_hObject == INVALID_HANDLE_VALUE || !m_pLock->Lock()) {
    m_pLock.reset();
    m_pSemaphore.reset();
    CAppLog::Instance().Write("[Print]: Couldn't set up synchronization");
    return false;
  }
  m_hThread = os::Thread::Start([this] { ReadAll(); });
  return m_hThread != nullptr;
}

void CPipeReader::Wait() {
  if (m_hThread == nullptr) return;
  m_hThread->Join();
  m_hThread.reset();
}

void CPipeReader::ReadAll() {
  m_pLock->Unlock();
  while (*m_pPipe != 0) {
    const long count = m_Stops.empty()
                           ? os::ReadSome(*m_pPipe, m_pBuffer.get(), m_BufferSize)
                           : os::ReadSomeUnless(m_Stops, *m_pPipe, m_pBuffer.get(), m_BufferSize);
    if (count == 0) return;  // the child has closed its end, or nobody wants to know more
    if (count < 0) {
      CAppLog::Instance().Printf(L"[Print] Pipe terminated with error: %u", errno);
      return;
    }
    OnData(m_pBuffer.get(), static_cast<unsigned>(count));
  }
}

CRipOutReader::~CRipOutReader() = default;

void CRipOutReader::OnData(const char* bytes, unsigned count) {
  rastrel::printing::AppendPiece(m_Text, bytes, count);
}
