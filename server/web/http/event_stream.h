#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

namespace rastrel::server::web {

/// The way of events to one reader (text/event-stream). A producer sends whole messages, the server
/// takes bytes as the reader's connection takes them. Nobody waits: a stream costs no thread. Any
/// thread.
class EventStream {
 public:
  /// More bytes than these that a reader has not taken end the stream.
  static constexpr std::size_t WaitingLimit = 262144;

  /// Adds text to what waits. False once the stream is closed, or if the reader is too slow, which
  /// drops it.
  bool Send(std::string_view text);
  /// No more comes: what waits is given still.
  void Close();
  /// No more comes, and what waits is given up: the reader is too slow.
  void Drop();
  /// The reader has gone: nothing is kept any more.
  void Abandon();
  [[nodiscard]] bool IsOpen() const;
  [[nodiscard]] std::size_t WaitingBytes() const;

  /// For the server: `wake` is called, outside all locks, when there is something to take. Called
  /// at once if there is something already.
  void SetWake(std::function<void()> wake);
  /// Takes up to `limit` bytes. 0 if nothing waits.
  [[nodiscard]] std::size_t Take(char* target, std::size_t limit);
  /// Whether it is closed and nothing waits.
  [[nodiscard]] bool IsDone() const;

 private:
  mutable std::mutex m_Mutex;
  std::string m_Waiting;
  std::size_t m_Taken = 0;  // of m_Waiting
  bool m_Open = true;
  std::function<void()> m_Wake;
};

/// One message of a stream: "id: 7\nevent: state\ndata: {...}\n\n". `data` may have several lines.
/// An id of 0 and an empty event are left out.
[[nodiscard]] std::string EventText(long long id, std::string_view event, std::string_view data);

}  // namespace rastrel::server::web
