#include "rastrel/platform/standalone/kept_text.h"

#include <optional>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::standalone {
namespace {

// The coarsest clock of a file system in use has ticks of two seconds.
constexpr std::int64_t ClockTick = 2'000'000'000;

std::int64_t Nanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

std::optional<KeptText::State> StateOf(const std::string& path) {
  struct stat state {};
  if (::stat(path.c_str(), &state) != 0) return std::nullopt;
  return KeptText::State{.path = path,
                         .device = state.st_dev,
                         .inode = state.st_ino,
                         .size = state.st_size,
                         .modified = Nanoseconds(state.st_mtim),
                         .changed = Nanoseconds(state.st_ctim)};
}

// A change that comes later has another time than this one. A time to come says nothing.
bool IsSettled(const KeptText::State& state) {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  const std::int64_t past = Nanoseconds(now) - ClockTick;
  return state.modified < past && state.changed < past;
}

}  // namespace

std::shared_ptr<const std::string> KeptText::Read(const std::string& path, std::uint64_t limit) {
  // The state is taken first: a file that changes while it is read is read again the next time.
  const std::optional<State> state = StateOf(path);
  if (!state) return nullptr;
  {
    const std::scoped_lock lock(m_Mutex);
    if (m_Text && m_State == *state) return m_Text;
  }
  const bool isSettled = IsSettled(*state);
  Expected<std::string> read = os::ReadWholeFile(os::FromNative(path), limit);
  if (!read) return nullptr;
  auto text = std::make_shared<const std::string>(std::move(*read));
  const std::scoped_lock lock(m_Mutex);
  m_Text = isSettled ? text : nullptr;
  m_State = *state;
  return text;
}

}  // namespace rastrel::standalone
