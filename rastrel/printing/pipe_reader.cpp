#include "rastrel/printing/pipe_reader.h"

#include <algorithm>
#include <exception>
#include <string_view>

#include "rastrel/job/app_log.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/thread.h"
#include "rastrel/printing/held_semaphore.h"

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
  if (!rastrel::printing::MakeHeldSemaphore(m_pSemaphore, m_pLock)) return false;
  m_hThread = os::Thread::Start([this] { ReadAll(); });
  return m_hThread != nullptr;
}

void CPipeReader::Wait() {
  if (m_hThread == nullptr) return;
  m_hThread->Join();
  m_hThread.reset();
}

void CPipeReader::Lose() noexcept {
  m_bLost = true;
  m_pLock->Unlock();
}

void CPipeReader::ReadAll() {
  while (*m_pPipe != 0 && !m_bLost) {
    const auto count = m_Stops.empty()
                           ? os::ReadSome(*m_pPipe, m_pBuffer.get(), m_BufferSize)
                           : os::ReadSomeUnless(m_Stops, *m_pPipe, m_pBuffer.get(), m_BufferSize);
    if (!count) {
      CAppLog::Instance().Printf(L"[Print] Pipe terminated with error: %u", count.Error().error);
      return;
    }
    if (*count == 0) return;  // the child has closed its end, or a stop was signalled
    OnData(m_pBuffer.get(), static_cast<unsigned>(*count));
  }
}

CRipOutReader::~CRipOutReader() = default;

// A stream that takes all memory must not end the host.
void CRipOutReader::OnData(const char* bytes, unsigned count) {
  try {
    rastrel::printing::AppendPiece(m_Text, bytes, count);
  } catch (const std::exception&) {  // bad_alloc, or length_error
    m_Text = formatstringT<wchar_t>();
    Lose();
  }
}

CDroppingReader::~CDroppingReader() = default;

void CDroppingReader::OnData(const char* /*bytes*/, unsigned /*count*/) {}
