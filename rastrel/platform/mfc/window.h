#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

#include "rastrel/export.h"
#include "rastrel/platform/os/handle.h"

/// One posted message.
struct CWndMessage {
  unsigned message = 0;
  std::uintptr_t wParam = 0;
  std::intptr_t lParam = 0;
};

/// A window as far as this library needs one: the place where messages are posted from any thread
/// and taken by the host's. Messages wait in order until they are taken, and none is dropped.
class RASTREL_API CWnd {
 public:
  /// A window with no messages.
  CWnd();
  virtual ~CWnd();
  CWnd(const CWnd&) = delete;
  CWnd& operator=(const CWnd&) = delete;

  /// Appends a message and returns at once. A host with a toolkit of its own overrides this and
  /// posts to its own queue; it must not block.
  virtual bool PostMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam);

  /// Takes the oldest message, or nothing if there is none.
  [[nodiscard]] std::optional<CWndMessage> TakeMessage();

  /// How many messages wait.
  [[nodiscard]] std::size_t CountMessages();

  /// A descriptor that is readable while messages wait, for the host's own poll. Owned by the
  /// window; INVALID_HANDLE_VALUE if the system had none to give.
  [[nodiscard]] HANDLE GetMessageHandle() const { return m_hEvent; }

 private:
  std::mutex m_Mutex;
  std::deque<CWndMessage> m_Messages;
  HANDLE m_hEvent;
};
