#include "cli/console/other_programs.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/wait.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t OutputLimit = 4096;

os::SpawnRequest RequestOf(const std::string& program, const std::vector<std::string>& arguments,
                           HANDLE nothing) {
  os::SpawnRequest request;
  request.executable = program;
  request.arguments = {program};
  request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
  request.environment = os::EnvironmentEntries();
  request.standardInput = nothing;
  request.standardOutput = nothing;
  request.standardError = nothing;
  return request;
}

os::FileDescriptor OpenNothing() {
  auto file = os::OpenForWriting(L"/dev/null");
  return file ? std::move(*file) : os::FileDescriptor();
}

// Releases a semaphore when its time is over, unless it is taken back before.
class Alarm {
 public:
  Alarm(HANDLE semaphore, std::chrono::milliseconds limit)
      : m_Thread([this, semaphore, limit] {
          std::unique_lock<std::mutex> lock(m_Mutex);
          if (!m_Changed.wait_for(lock, limit, [this] { return m_Off; }))
            static_cast<void>(os::ReleaseSemaphoreHandle(semaphore));
        }) {}
  ~Alarm() {
    {
      const std::lock_guard<std::mutex> guard(m_Mutex);
      m_Off = true;
    }
    m_Changed.notify_all();
    m_Thread.join();
  }
  Alarm(const Alarm&) = delete;
  Alarm& operator=(const Alarm&) = delete;

 private:
  std::mutex m_Mutex;
  std::condition_variable m_Changed;
  bool m_Off = false;
  std::thread m_Thread;
};

// True if the program ended well by itself in time.
bool EndsWell(HANDLE process, std::chrono::milliseconds limit) {
  const os::FileDescriptor timeOver(os::CreateSemaphoreHandle(0).ValueOr(INVALID_HANDLE_VALUE));
  const Alarm alarm(timeOver.Get(), limit);
  const std::array<HANDLE, 2> handles = {process, timeOver.Get()};
  const bool inTime = os::WaitForAny(handles) == os::WaitSignaledBase;
  const auto state = inTime ? os::TakeExitState(process) : os::Terminate(process);
  return inTime && state && !state->running && state->byItself && state->status == 0;
}

}  // namespace

std::optional<std::string> FirstLineOf(const std::string& program,
                                       const std::vector<std::string>& arguments,
                                       std::chrono::milliseconds limit) {
  const os::FileDescriptor nothing = OpenNothing();
  HANDLE readEnd = INVALID_HANDLE_VALUE;
  HANDLE writeEnd = INVALID_HANDLE_VALUE;
  if (!nothing.IsOpen() || !os::CreatePipe(readEnd, writeEnd, OutputLimit)) return std::nullopt;
  const os::FileDescriptor reader(readEnd);
  const os::FileDescriptor writer(writeEnd);
  // One byte of our own, so that the read never waits for a process that the program has left.
  if (!os::WriteInput(writer.Get(), "\n")) return std::nullopt;
  os::SpawnRequest request = RequestOf(program, arguments, nothing.Get());
  request.standardOutput = writer.Get();
  const auto child = os::Spawn(request);
  if (!child) return std::nullopt;
  const os::FileDescriptor process(child->process);
  if (!EndsWell(process.Get(), limit)) return std::nullopt;
  std::string text(OutputLimit, '\0');
  const auto count = os::ReadSome(reader.Get(), text.data(), text.size());
  if (!count || *count == 0) return std::nullopt;
  text.resize(*count);
  return text.substr(1, std::min(text.find('\n', 1), text.size()) - 1);
}

bool StartAndForget(const std::string& program, const std::vector<std::string>& arguments) {
  const os::FileDescriptor nothing = OpenNothing();
  if (!nothing.IsOpen()) return false;
  const auto child = os::Spawn(RequestOf(program, arguments, nothing.Get()));
  if (!child) return false;
  const os::FileDescriptor process(child->process);
  return true;
}

}  // namespace rastrel::cli
