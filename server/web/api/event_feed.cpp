#include "server/web/api/event_feed.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "rastrel/platform/os/thread.h"
#include "server/web/access/gate.h"
#include "server/web/api/job_json.h"
#include "server/web/api/job_request.h"

namespace rastrel::server::web {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int LookMilliseconds = 1000;  // for changes that rang no bell
constexpr milliseconds BeatInterval{15000};
constexpr milliseconds MarkInterval{1000};
constexpr int EventsAtOnce = 500;
// A reader with so much to take still gets its next events later.
constexpr std::size_t FullReader = 65536;
constexpr milliseconds FullLimit{30000};

}  // namespace

EventFeed::EventFeed(JobQueue& queue) : m_Queue(queue) {}

EventFeed::~EventFeed() {
  {
    const std::lock_guard lock(m_Mutex);
    m_Stop = true;
  }
  if (m_Wake >= 0) static_cast<void>(::eventfd_write(m_Wake, 1));
  if (m_Thread) m_Thread->Join();
  if (m_Wake >= 0) ::close(m_Wake);
  for (Reader& reader : m_Readers) reader.stream->Close();
}

Expected<void> EventFeed::Start() {
  m_Wake = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (m_Wake < 0) return Failure{"eventfd", "", errno};
  m_Thread = os::Thread::Start([this] { Run(); });
  if (!m_Thread) return FailureOf("there is no thread for the queue's events");
  return {};
}

Expected<std::shared_ptr<EventStream>> EventFeed::Open(const std::string& owner, std::int64_t after,
                                                       std::function<bool()> mayRead) {
  if (after < 0) {
    const auto last = m_Queue.LastEvent();
    if (!last) return last.Error();
    after = *last;
  }
  const auto mark = m_Queue.Mark(owner);
  if (!mark) return mark.Error();
  auto stream = std::make_shared<EventStream>();
  // The reader sees at once that it is connected.
  stream->Send(": connected\n\n");
  {
    const std::lock_guard lock(m_Mutex);
    m_Readers.push_back({stream, owner, after, *mark, std::move(mayRead)});
  }
  static_cast<void>(::eventfd_write(m_Wake, 1));
  return stream;
}

void EventFeed::Run() {
  auto nextBeat = Clock::now() + BeatInterval;
  auto nextMark = Clock::now();
  for (;;) {
    std::array<pollfd, 2> waits{{{m_Wake, POLLIN, 0}, {m_Queue.Bell(), POLLIN, 0}}};
    static_cast<void>(::poll(waits.data(), waits.size(), LookMilliseconds));
    eventfd_t count = 0;
    static_cast<void>(::eventfd_read(m_Wake, &count));
    m_Queue.RestBell();
    const std::lock_guard lock(m_Mutex);
    if (m_Stop) return;
    m_Readers.remove_if([](const Reader& reader) { return !reader.stream->IsOpen(); });
    Pump();
    if (Clock::now() >= nextMark) {
      EndRefused();
      GiveMarks();
      nextMark = Clock::now() + MarkInterval;
    }
    if (Clock::now() >= nextBeat) {
      Beat();
      nextBeat = Clock::now() + BeatInterval;
    }
  }
}

void EventFeed::Pump() {
  Read read;
  for (Reader& reader : m_Readers)
    while (Give(reader, read)) {
    }
}

// Returns whether there may be more for this reader.
bool EventFeed::Give(Reader& reader, Read& read) {
  if (!reader.stream->IsOpen()) return false;
  if (reader.stream->WaitingBytes() > FullReader) {
    if (reader.fullSince == Clock::time_point()) reader.fullSince = Clock::now();
    if (Clock::now() - reader.fullSince > FullLimit) reader.stream->Drop();
    return false;
  }
  reader.fullSince = {};
  const std::pair key(reader.owner, reader.after);
  auto found = read.find(key);
  if (found == read.end()) {
    const auto events = m_Queue.Events(reader.after, 0, EventsAtOnce, reader.owner);
    if (!events) return false;
    std::string text;
    for (const JobEvent& event : *events)
      text += EventText(event.number, event.kind, TextOf(JsonOf(event, reader.owner)));
    const std::int64_t last = events->empty() ? reader.after : events->back().number;
    found = read.emplace(key, std::pair(std::move(text), last)).first;
  }
  const auto& [text, last] = found->second;
  if (last == reader.after) return false;
  if (!reader.stream->Send(text)) return false;
  reader.after = last;
  return true;
}

void EventFeed::EndRefused() {
  for (Reader& reader : m_Readers)
    if (reader.mayRead && !reader.mayRead()) reader.stream->Drop();
}

void EventFeed::GiveMarks() {
  std::map<std::string, std::string> marks;
  for (Reader& reader : m_Readers) {
    auto found = marks.find(reader.owner);
    if (found == marks.end())
      found = marks.emplace(reader.owner, m_Queue.Mark(reader.owner).ValueOr(reader.mark)).first;
    if (found->second == reader.mark) continue;
    reader.mark = found->second;
    reader.stream->Send(EventText(0, "changed", "{}"));
  }
}

void EventFeed::Beat() {
  for (Reader& reader : m_Readers) reader.stream->Send(": beat\n\n");
}

void AddEvents(Router& router, EventFeed& feed, const IsStillIn& isStillIn) {
  const auto open = [&feed, isStillIn](const Request& request) {
    const std::string& header = request.Header("last-event-id");
    const std::string& text = header.empty() ? request.Query("after") : header;
    std::int64_t after = -1;
    if (!text.empty()) {
      const auto number = WholeNumber(text, 0, INT64_MAX);
      if (!number) return ErrorResponse(400, "bad-request", "the last event is no whole number");
      after = *number;
    }
    std::function<bool()> mayRead;
    if (request.caller.byCookie)
      mayRead = [isStillIn, cookie = request.Cookie(SessionCookie), isSecure = request.isSecure] {
        return isStillIn(cookie, isSecure);
      };
    auto stream = feed.Open(request.caller.VisibleOwner(), after, std::move(mayRead));
    if (!stream) return AnswerTo(stream.Error());
    Response response;
    response.stream = *std::move(stream);
    response.Add("Content-Type", "text/event-stream");
    return response;
  };
  router.Add({Method::Get, "/api/v1/events", Role::See, Body::None, open});
}

}  // namespace rastrel::server::web
