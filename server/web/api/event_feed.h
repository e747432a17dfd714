#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "rastrel/platform/os/expected.h"
#include "server/queue/job_queue.h"
#include "server/web/http/event_stream.h"
#include "server/web/http/router.h"

namespace rastrel::os {
class Thread;
}

namespace rastrel::server::web {

/// Brings the queue's events to all who read them: one thread, which the queue's bell wakes, and a
/// query for each owner and not for each reader. Any thread.
///
///     id: 412                                         the event's number
///     event: state                                    or progress, message
///     data: {"number":412,"job":7,"time":...,"kind":"state","text":"done"}
///
///     event: changed                                  jobs came, went or have another priority
///     data: {}
///
/// A reader that does not keep up with the events for half a minute is dropped.
class EventFeed {
 public:
  explicit EventFeed(JobQueue& queue);
  /// Ends all streams.
  ~EventFeed();
  EventFeed(const EventFeed&) = delete;
  EventFeed& operator=(const EventFeed&) = delete;

  /// Once, before Open.
  [[nodiscard]] Expected<void> Start();
  /// The events of an owner's jobs, of all if it is empty, after a number; those from now on if it
  /// is negative. The stream ends when `mayRead`, which is asked about every second, says no.
  [[nodiscard]] Expected<std::shared_ptr<EventStream>> Open(const std::string& owner,
                                                            std::int64_t after,
                                                            std::function<bool()> mayRead = {});

 private:
  struct Reader {
    std::shared_ptr<EventStream> stream;
    std::string owner;
    std::int64_t after = 0;
    std::string mark;
    std::function<bool()> mayRead;
    /// Since when it has much to take and doesn't; the epoch while it takes.
    std::chrono::steady_clock::time_point fullSince{};
  };
  using Read = std::map<std::pair<std::string, std::int64_t>, std::pair<std::string, std::int64_t>>;

  void Run();
  void Pump();
  [[nodiscard]] bool Give(Reader& reader, Read& read);
  void EndRefused();
  void GiveMarks();
  void Beat();

  JobQueue& m_Queue;
  std::mutex m_Mutex;
  bool m_Stop = false;
  std::list<Reader> m_Readers;
  int m_Wake = -1;
  std::unique_ptr<os::Thread> m_Thread;
};

/// Whether a request would be let in still.
using IsStillIn = std::function<bool(const std::string& cookie, bool isSecure)>;
/// GET /api/v1/events. The feed outlives the router. `isStillIn` is asked of streams that came by a
/// session's cookie, on the feed's thread.
void AddEvents(Router& router, EventFeed& feed, const IsStillIn& isStillIn);

}  // namespace rastrel::server::web
