#include "server/run/scheduler.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>
#include <utility>
#include <vector>

#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/thread.h"
#include "rastrel/platform/os/wait.h"

namespace rastrel::server {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto LookInterval = 1s;  // for changes that rang no bell, and claims of strangers
constexpr auto RetentionInterval = 60s;
constexpr auto StopLimit = 60s;  // for workers to give their jobs back
// A worker that ends at once is not started again at once.
constexpr auto ShortestPause = 100ms;
constexpr auto LongestPause = 30s;

struct Worker {
  os::ChildProcess child;
  std::string device;  ///< empty: it interprets
};

Time Now() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

int DefaultWorkers() {
  return static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, 16U));
}

void Log(const std::string& text) { os::WriteToStandardError("rastrel: " + text + "\n"); }

}  // namespace

struct Scheduler::Parts {
  JobQueue& queue;
  ServerSettings settings;
  WorkerProgram program;
  std::vector<Worker> workers{};
  HANDLE stop = INVALID_HANDLE_VALUE;
  std::unique_ptr<os::Thread> thread{};
  Clock::time_point nextRetention = Clock::now();
  Clock::time_point nextStart = Clock::now();
  Clock::duration pause = ShortestPause;
  std::string trouble{};  // of the last check, as it was logged

  void Run();
  void Wait();
  void TakeEnds();
  void TakeEnd(const Worker& worker, const os::ExitState& end);
  [[nodiscard]] bool MayStart();
  void StartMissing();
  void StartWorker(const std::string& device);
  void KeepHouse();
  [[nodiscard]] int Interpreters() const;
};

int Scheduler::Parts::Interpreters() const {
  return static_cast<int>(std::ranges::count(workers, std::string(), &Worker::device));
}

void Scheduler::Parts::Run() {
  while (!os::TryAcquireSemaphoreHandle(stop)) {
    TakeEnds();
    StartMissing();
    KeepHouse();
    Wait();
  }
}

void Scheduler::Parts::Wait() {
  std::vector<HANDLE> handles{stop, queue.Bell()};
  for (const Worker& worker : workers)
    if (handles.size() < os::WaitLimit) handles.push_back(worker.child.process);
  static_cast<void>(os::WaitReadable(handles, os::Deadline::After(LookInterval)));
  queue.RestBell();
}

void Scheduler::Parts::TakeEnds() {
  for (std::size_t index = 0; index < workers.size();) {
    const auto end = os::TakeExitState(workers[index].child.process);
    if (end && end->running) {
      ++index;
      continue;
    }
    TakeEnd(workers[index], end.ValueOr({}));
    os::CloseHandle(workers[index].child.process);
    workers.erase(workers.begin() + static_cast<std::ptrdiff_t>(index));
  }
}

void Scheduler::Parts::TakeEnd(const Worker& worker, const os::ExitState& end) {
  if (end.byItself && end.status == 0) {
    pause = ShortestPause;
    return;
  }
  Log("a worker" + (worker.device.empty() ? std::string() : " of '" + worker.device + "'") +
      (end.byItself ? " failed with status " : " was ended by signal ") +
      std::to_string(end.status));
  nextStart = Clock::now() + pause;
  pause = std::min<Clock::duration>(pause * 2, LongestPause);
  if (const auto done = queue.RecoverClaims(); !done) Log(Describe(done.Error()));
}

// A trouble is logged once, however long it lasts, and so is its end.
bool Scheduler::Parts::MayStart() {
  if (!program.check) return true;
  const auto fine = program.check();
  std::string found = fine ? std::string() : Describe(fine.Error());
  if (found != trouble)
    Log(found.empty() ? "jobs go on" : "no job is begun until this is mended: " + found);
  trouble = std::move(found);
  return trouble.empty();
}

void Scheduler::Parts::StartMissing() {
  if (Clock::now() < nextStart) return;
  JobFilter waiting;
  waiting.states = {JobState::Queued};
  const std::int64_t queued = queue.Count(waiting).ValueOr(0);
  const int limit = settings.workers > 0 ? settings.workers : DefaultWorkers();
  const auto devices = queue.DevicesToServe();
  if (!devices) return Log(Describe(devices.Error()));
  if ((queued > 0 || !devices->empty()) && !MayStart()) return;
  while (Interpreters() < std::min<std::int64_t>(limit, queued) && Clock::now() >= nextStart)
    StartWorker("");
  for (const std::string& device : *devices)
    if (std::ranges::find(workers, device, &Worker::device) == workers.end() &&
        Clock::now() >= nextStart)
      StartWorker(device);
}

void Scheduler::Parts::StartWorker(const std::string& device) {
  os::SpawnRequest request;
  request.executable = program.executable;
  request.arguments = {"rastrel-server", device.empty() ? program.interpret : program.deliver};
  if (!device.empty()) request.arguments.push_back(device);
  request.environment = os::EnvironmentEntries();
  const auto child = os::Spawn(request);
  if (child) {
    workers.push_back({*child, device});
    return;
  }
  Log("no worker can be started: " + Describe(child.Error()));
  nextStart = Clock::now() + pause;
  pause = std::min<Clock::duration>(pause * 2, LongestPause);
}

void Scheduler::Parts::KeepHouse() {
  if (Clock::now() < nextRetention) return;
  nextRetention = Clock::now() + RetentionInterval;
  // Claims of workers that an earlier server started, and that ended since.
  if (const auto done = queue.RecoverClaims(); !done) Log(Describe(done.Error()));
  const auto removed = ApplyRetention(queue, settings.retention, Now(), program.removePages);
  if (!removed) Log(Describe(removed.Error()));
}

Scheduler::Scheduler(JobQueue& queue, ServerSettings settings, WorkerProgram program)
    : m_Parts(new Parts{queue, std::move(settings), std::move(program)}) {}

Scheduler::~Scheduler() { Stop(); }

Expected<void> Scheduler::Start() {
  if (const auto recovered = m_Parts->queue.RecoverClaims(true); !recovered)
    return recovered.Error();
  const auto stop = os::CreateSemaphoreHandle(0);
  if (!stop) return stop.Error();
  m_Parts->stop = *stop;
  m_Parts->thread = os::Thread::Start([parts = m_Parts.get()] { parts->Run(); });
  if (!m_Parts->thread) return FailureOf("the scheduler has no thread");
  return {};
}

void Scheduler::Stop() {
  if (!m_Parts->thread) return;
  static_cast<void>(os::ReleaseSemaphoreHandle(m_Parts->stop));
  m_Parts->thread->Join();
  m_Parts->thread.reset();
  for (const Worker& worker : m_Parts->workers)
    static_cast<void>(os::SendSignal(worker.child.process, SIGTERM));
  const auto limit = os::Deadline::After(StopLimit);
  for (Worker& worker : m_Parts->workers) {
    static_cast<void>(os::WaitReadable(std::vector<HANDLE>{worker.child.process}, limit));
    static_cast<void>(os::Terminate(worker.child.process));
    os::CloseHandle(worker.child.process);
  }
  m_Parts->workers.clear();
  // All ended by this: it is no fault of their jobs.
  static_cast<void>(m_Parts->queue.RecoverClaims(true));
  os::CloseHandle(m_Parts->stop);
}

}  // namespace rastrel::server
