#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>

#include "cutting/device/sender.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/quiet_write.h"

namespace rastrel::cutting {
namespace {

/// The system says nothing when bytes leave its own buffer, so it is asked so often.
constexpr auto AskInterval = std::chrono::milliseconds(20);
constexpr auto OrderInterval = std::chrono::seconds(1);
/// One write. Small enough for a pause to be soon.
constexpr std::size_t LargestWrite = 65536;

/// One job on its way through one descriptor.
class Transmission {
 public:
  Transmission(int descriptor, const std::string& where, std::string_view bytes,
               const DeviceReach& reach, int chunk, const SendControl& control)
      : m_Descriptor(descriptor),
        m_Where(where),
        m_Bytes(bytes),
        m_Chunk(static_cast<std::size_t>(std::max(chunk, 0))),
        m_Limit(std::chrono::seconds(reach.timeoutSeconds)),
        m_Control(control),
        m_Deadline(os::Deadline::After(m_Limit)) {
    m_IsLine = ::isatty(descriptor) == 1;
    int type = 0;
    socklen_t size = sizeof type;
    m_IsSocket = ::getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0;
    m_Progress.total = bytes.size();
  }

  Expected<SendResult> Run() {
    for (;;) {
      const SendOrder order = m_Control.order ? m_Control.order() : SendOrder::Go;
      if (order == SendOrder::Cancel) return Cancelled();
      SetPaused(order == SendOrder::Pause);
      if (!m_Progress.isPaused) {
        if (auto written = Write(); !written) return Ended(written.Error());
      }
      Count();
      if (m_Written == m_Bytes.size() && m_Progress.taken == m_Bytes.size()) break;
      if (auto waited = Wait(); !waited) return Ended(waited.Error());
      if (!m_Progress.isPaused && m_Deadline.HasPassed()) {
        return Ended(
            FailureOf("it took nothing for " + std::to_string(m_Limit.count()) + " seconds"));
      }
    }
    return SendResult{.progress = m_Progress};
  }

 private:
  /// Bytes that were written and are in this machine still.
  std::size_t Pending() const {
    int pending = 0;
    if (m_IsSocket && ::ioctl(m_Descriptor, SIOCOUTQ, &pending) != 0) return 0;
    if (m_IsLine && ::ioctl(m_Descriptor, TIOCOUTQ, &pending) != 0) return 0;
    return std::min(static_cast<std::size_t>(std::max(pending, 0)), m_Written);
  }

  /// How many bytes may be written now.
  std::size_t Room() const {
    const std::size_t rest = std::min(m_Bytes.size() - m_Written, LargestWrite);
    if (m_Chunk == 0) return rest;
    const std::size_t pending = Pending();
    return std::min(rest, m_Chunk - std::min(m_Chunk, pending));
  }

  /// Writes until the device or the chunk is full, for one turn.
  Expected<void> Write() {
    m_IsFull = false;
    const std::size_t room = Room();
    if (room == 0) return {};
    const char* const from = m_Bytes.data() + m_Written;
    const ssize_t count = os::WriteWithoutSignal(m_Descriptor, from, room);
    if (count > 0) {
      m_Written += static_cast<std::size_t>(count);
      return {};
    }
    if (count < 0 && errno != EAGAIN && errno != EINTR) return Failure{"write", m_Where, errno};
    m_IsFull = true;
    return {};
  }

  void SetPaused(bool paused) {
    if (m_Progress.isPaused == paused) return;
    m_Progress.isPaused = paused;
    m_Deadline = os::Deadline::After(m_Limit);
    Report();
  }

  /// Looks how far the device is. A step forward gives it its whole time again.
  void Count() {
    const std::uint64_t taken = m_Written - Pending();
    if (taken <= m_Progress.taken) return;
    m_Progress.taken = taken;
    m_Deadline = os::Deadline::After(m_Limit);
    Report();
  }

  void Report() const {
    if (m_Control.onProgress) m_Control.onProgress(m_Progress);
  }

  /// Until there may be more to do: the device takes bytes or answers, an order comes, or some time
  /// is over.
  Expected<void> Wait() {
    const bool wantsToWrite = !m_Progress.isPaused && m_Written < m_Bytes.size();
    const bool hasRoom = wantsToWrite && (m_IsFull || Room() > 0);
    std::vector<pollfd> entries{
        {m_Descriptor, static_cast<short>((hasRoom ? POLLOUT : 0) | (m_IsAnswering ? POLLIN : 0)),
         0}};
    for (const int watched : m_Control.descriptors) entries.push_back({watched, POLLIN, 0});
    const auto interval = hasRoom || m_Progress.isPaused
                              ? std::chrono::duration_cast<std::chrono::nanoseconds>(OrderInterval)
                              : std::chrono::duration_cast<std::chrono::nanoseconds>(AskInterval);
    int wait = os::Deadline::After(interval).PollTimeout();
    if (!m_Progress.isPaused) wait = std::min(wait, m_Deadline.PollTimeout());
    // A line that was hung up stays ready for ever: its write reports it.
    if (::poll(entries.data(), entries.size(), wait) < 0 && errno != EINTR) {
      return Failure{"poll", m_Where, errno};
    }
    if (entries[0].revents & POLLIN) TakeAnswer();
    if (entries[0].revents & (POLLERR | POLLHUP | POLLNVAL)) return HangUp();
    return {};
  }

  /// A device may report its state; bytes that nobody takes would stop it.
  void TakeAnswer() {
    std::array<char, 4096> bytes;
    const ssize_t count = ::read(m_Descriptor, bytes.data(), bytes.size());
    if (count == 0) m_IsAnswering = false;
  }

  Expected<void> HangUp() const {
    int error = 0;
    socklen_t size = sizeof error;
    if (m_IsSocket) ::getsockopt(m_Descriptor, SOL_SOCKET, SO_ERROR, &error, &size);
    return Failure{"write", m_Where, error != 0 ? error : EPIPE};
  }

  SendResult Cancelled() {
    Forget();
    return SendResult{.progress = m_Progress, .isCancelled = true};
  }

  Failure Ended(const Failure& failure) {
    Forget();
    return FailureOf("'" + m_Where + "' took " + std::to_string(m_Progress.taken) + " of " +
                     std::to_string(m_Bytes.size()) + " bytes: " +
                     (failure.error != 0 ? DescribeError(failure.error) : failure.why));
  }

  /// The close of a line waits for bytes that its device does not take, and that of a socket goes
  /// on sending.
  void Forget() {
    Count();
    if (m_IsLine) ::tcflush(m_Descriptor, TCOFLUSH);
    const linger none{1, 0};
    if (m_IsSocket) ::setsockopt(m_Descriptor, SOL_SOCKET, SO_LINGER, &none, sizeof none);
  }

  int m_Descriptor;
  std::string m_Where;
  std::string_view m_Bytes;
  std::size_t m_Chunk;
  std::chrono::seconds m_Limit;
  const SendControl& m_Control;
  os::Deadline m_Deadline;
  bool m_IsSocket = false;
  bool m_IsLine = false;
  bool m_IsFull = false;
  bool m_IsAnswering = true;
  std::size_t m_Written = 0;
  SendProgress m_Progress;
};

}  // namespace

Expected<SendResult> SendThrough(int descriptor, const std::string& where, std::string_view bytes,
                                 const DeviceReach& reach, int chunk, const SendControl& control) {
  return Transmission(descriptor, where, bytes, reach, chunk, control).Run();
}

}  // namespace rastrel::cutting
