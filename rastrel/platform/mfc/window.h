#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

#include "rastrel/export.h"
#include "rastrel/platform/os/handle.h"

/// One posted message. The meaning of the parameters is the message's own.
struct CWndMessage {
  unsigned message = 0;
  std::uintptr_t wParam = 0;
  std::intptr_t lParam = 0;
};

/// A window, as far as this library needs one: a queue of messages. Any thread posts them, and the
/// host's thread takes them, in order. The queue has no limit, and none is dropped.
class RASTREL_API CWnd {
 public:
  /// A window with no messages.
  CWnd();
  virtual ~CWnd();
  CWnd(const CWnd&) = delete;
  CWnd& operator=(const CWnd&) = delete;

  /// Appends a message and returns at once. Any thread. A host with a toolkit of its own overrides
  /// this and posts to the toolkit's queue; it must not block. True if the message was queued.
  virtual bool PostMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam);

  /// Removes and returns the oldest message; nothing if there is none. Does not wait.
  [[nodiscard]] std::optional<CWndMessage> TakeMessage();

  /// The number of messages in the queue.
  [[nodiscard]] std::size_t CountMessages();

  /// A descriptor that is readable while the queue is not empty, for the host's own poll. Owned by
  /// the window; TakeMessage reads it. INVALID_HANDLE_VALUE if the system had none to give.
  [[nodiscard]] HANDLE GetMessageHandle() const { return m_hEvent; }

 private:
  std::mutex m_Mutex;
  std::deque<CWndMessage> m_Messages;
  HANDLE m_hEvent;
};
