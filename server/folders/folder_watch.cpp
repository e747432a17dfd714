#include "server/folders/folder_watch.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

#include "rastrel/platform/os/clock.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::server {
namespace {

constexpr std::uint64_t ListLimit = 262144;
constexpr std::int64_t QuietTime = 30'000'000'000;
constexpr unsigned Whole = IN_CLOSE_WRITE | IN_MOVED_TO;
constexpr unsigned Kinds = Whole | IN_MODIFY | IN_ONLYDIR;
// Of the directory with the list, where the queue writes all the time: names that come and go, and
// a list that an editor wrote in its place.
constexpr unsigned ListKinds = Whole | IN_MOVED_FROM | IN_DELETE | IN_ONLYDIR;
constexpr const char* ListName = "folders.toml";

// Reads all events that wait, and calls `take` with each and its name.
template <typename Take>
void ForEachEvent(int descriptor, const Take& take) {
  alignas(inotify_event) std::array<char, 65536> bytes;
  for (;;) {
    const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
    if (count <= 0) return;
    for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
      inotify_event event;
      std::memcpy(&event, bytes.data() + at, sizeof event);
      at += sizeof event;
      // Padded with zeros.
      const std::string padded(bytes.data() + at, event.len);
      take(event, std::string(padded.c_str()));
      at += event.len;
    }
  }
}

}  // namespace

FolderWatch::FolderWatch(std::string dataRoot, JobQueue& queue,
                         std::function<void(const std::string&)> onMessage)
    : m_Directory(std::move(dataRoot) + "/server"),
      m_List(m_Directory + "/" + ListName),
      m_Queue(queue),
      m_OnMessage(std::move(onMessage)) {}

FolderWatch::~FolderWatch() { Stop(); }

Expected<void> FolderWatch::Start() {
  m_Stop.Reset(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!m_Stop.IsOpen()) return Failure{"eventfd", "", errno};
  // Without reports of changes each folder is looked at again and again.
  m_Changes.Reset(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  m_ListChanges.Reset(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  m_Thread = os::Thread::Start([this] { Run(); });
  if (!m_Thread) return FailureOf("no thread can be had for the hot folders");
  return {};
}

void FolderWatch::Stop() {
  if (!m_Thread) return;
  const std::uint64_t one = 1;
  static_cast<void>(!::write(m_Stop.Get(), &one, sizeof one));
  m_Thread->Join();
  m_Thread.reset();
}

void FolderWatch::Run() {
  for (;;) {
    WatchList();
    ReadList();
    if (!WaitForChange(os::Deadline::After(std::chrono::nanoseconds(LookAtAll())))) return;
    TakeChanges();
  }
}

bool FolderWatch::WaitForChange(os::Deadline look) {
  for (;;) {
    std::array<pollfd, 3> entries{{{m_Stop.Get(), POLLIN, 0},
                                   {m_Changes.Get(), POLLIN, 0},
                                   {m_ListChanges.Get(), POLLIN, 0}}};
    static_cast<void>(::poll(entries.data(), entries.size(), look.PollTimeout()));
    if (entries[0].revents != 0) return false;
    if (entries[2].revents != 0 && TakeListChanges()) return true;
    if (entries[1].revents != 0 || look.HasPassed()) return true;
  }
}

// The same directory again changes nothing; one that came back in its place is watched anew.
void FolderWatch::WatchList() {
  if (!m_ListChanges.IsOpen()) return;
  static_cast<void>(::inotify_add_watch(m_ListChanges.Get(), m_Directory.c_str(), ListKinds));
}

void FolderWatch::ReadList() {
  const auto text = os::ReadWholeFile(os::FromNative(m_List), ListLimit);
  if (!text && text.Error().error == ENOENT) {
    m_Folders.clear();
    return;
  }
  const auto paths = text ? ReadFolderList(*text, m_List) : text.Error();
  const std::string trouble = paths ? "" : Describe(paths.Error());
  if (!trouble.empty() && trouble != m_LastTrouble) m_OnMessage(trouble);
  m_LastTrouble = trouble;
  if (!paths) return;
  std::erase_if(m_Folders, [&](const Watched& watched) {
    return std::ranges::find(*paths, watched.folder->Path()) == paths->end();
  });
  for (const std::string& path : *paths) {
    const bool isKnown = std::ranges::any_of(
        m_Folders, [&](const Watched& watched) { return watched.folder->Path() == path; });
    if (!isKnown) {
      m_Folders.push_back({std::make_unique<HotFolder>(path, m_Queue, m_OnMessage), -1});
    }
  }
}

std::int64_t FolderWatch::LookAtAll() {
  std::int64_t wait = QuietTime;
  for (Watched& watched : m_Folders) {
    // The same directory keeps its number; one that came back in its place gets another.
    watched.number = m_Changes.IsOpen() ? ::inotify_add_watch(m_Changes.Get(),
                                                              watched.folder->Path().c_str(), Kinds)
                                        : -1;
    wait = std::min(wait, watched.folder->Look(os::MonotonicNanoseconds()));
  }
  return wait;
}

// Other names in that directory are the queue's, which writes there all the time.
bool FolderWatch::TakeListChanges() {
  bool isChanged = false;
  ForEachEvent(m_ListChanges.Get(), [&](const inotify_event& event, const std::string& name) {
    isChanged = isChanged || (event.mask & IN_Q_OVERFLOW) != 0 || name == ListName;
  });
  return isChanged;
}

void FolderWatch::TakeChanges() {
  ForEachEvent(m_Changes.Get(), [&](const inotify_event& event, const std::string& name) {
    if (!name.empty()) Note(event.wd, event.mask, name);
  });
}

void FolderWatch::Note(int number, unsigned kind, const std::string& name) {
  for (Watched& watched : m_Folders) {
    if (watched.number != number) continue;
    if (kind & IN_MODIFY) watched.folder->NoteChange(name);
    if (kind & Whole) watched.folder->NoteWhole(name);
  }
}

}  // namespace rastrel::server
