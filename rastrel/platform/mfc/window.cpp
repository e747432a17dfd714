#include "rastrel/platform/mfc/window.h"

#include <new>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/wait.h"

namespace os = rastrel::os;

CWnd::CWnd() : m_hEvent(os::CreateSemaphoreHandle(0).ValueOr(INVALID_HANDLE_VALUE)) {}

CWnd::~CWnd() { os::CloseHandle(m_hEvent); }

bool CWnd::PostMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  const std::scoped_lock lock(m_Mutex);
  try {
    m_Messages.push_back({message, wParam, lParam});
  } catch (const std::bad_alloc&) {
    return false;
  }
  if (m_hEvent != INVALID_HANDLE_VALUE) static_cast<void>(os::ReleaseSemaphoreHandle(m_hEvent));
  return true;
}

std::optional<CWndMessage> CWnd::TakeMessage() {
  const std::scoped_lock lock(m_Mutex);
  if (m_Messages.empty()) return std::nullopt;
  const CWndMessage oldest = m_Messages.front();
  m_Messages.pop_front();
  // Without waiting: a host may have read the descriptor itself.
  if (m_hEvent != INVALID_HANDLE_VALUE) static_cast<void>(os::TryAcquireSemaphoreHandle(m_hEvent));
  return oldest;
}

std::size_t CWnd::CountMessages() {
  const std::scoped_lock lock(m_Mutex);
  return m_Messages.size();
}
