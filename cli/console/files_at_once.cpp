#include "cli/console/files_at_once.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "cli/console/options.h"
#include "cli/console/standard_streams.h"
#include "cli/console/values.h"
#include "rastrel/platform/os/thread.h"

namespace rastrel::cli {
namespace {

constexpr int MaximumAtOnce = 256;
// Files that may be done and wait for one before them, for each that is worked on.
constexpr std::size_t FilesAhead = 16;

// A file that was worked on.
struct DoneFile {
  HeldText text;
  std::exception_ptr error;  // null: it went well
};

class Workers {
 public:
  Workers(std::size_t count, unsigned atOnce, const FilesWork& work)
      : m_Count(count), m_Ahead(atOnce * FilesAhead), m_Work(work) {
    for (unsigned number = 0; number < std::min<std::size_t>(atOnce, count); ++number)
      if (auto thread = os::Thread::Start([this] { Work(); }))
        m_Threads.push_back(std::move(thread));
  }
  ~Workers() {
    {
      const std::scoped_lock lock(m_Mutex);
      m_Ended = true;
    }
    m_Changed.notify_all();
    for (const auto& thread : m_Threads) thread->Join();
  }
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  // False if the system had no thread to give.
  [[nodiscard]] bool Any() const { return !m_Threads.empty(); }

  // Waits for the next file in order. MoveOn follows.
  [[nodiscard]] DoneFile Take() {
    std::unique_lock lock(m_Mutex);
    m_Changed.wait(lock, [this] { return m_Done.contains(m_Taken); });
    return std::move(m_Done.extract(m_Taken).mapped());
  }
  // All lines of that file are written. Not before: a file that waits for its turn writes its own
  // from now on.
  void MoveOn() {
    {
      const std::scoped_lock lock(m_Mutex);
      ++m_Taken;
    }
    m_Changed.notify_all();
  }

 private:
  void Work() {
    std::unique_lock lock(m_Mutex);
    for (;;) {
      m_Changed.wait(lock, [this] { return IsOver() || m_Next < m_Taken + m_Ahead; });
      if (IsOver()) return;
      const std::size_t index = m_Next++;
      lock.unlock();
      DoneFile file = WorkOn(index);
      lock.lock();
      m_Done.emplace(index, std::move(file));
      m_Changed.notify_all();
    }
  }

  [[nodiscard]] bool IsOver() const { return m_Ended || m_Next >= m_Count; }

  // Waits until the lines of the files before this one are written. False if no more are taken.
  bool WaitForTurn(std::size_t index) {
    std::unique_lock lock(m_Mutex);
    m_Changed.wait(lock, [&] { return m_Ended || m_Taken == index; });
    return !m_Ended;
  }

  [[nodiscard]] DoneFile WorkOn(std::size_t index) {
    DoneFile file;
    HeldOutput output([this, index] { return WaitForTurn(index); });
    try {
      m_Work.work(index);
    } catch (...) {
      file.error = std::current_exception();
    }
    file.text = output.Take();
    return file;
  }

  const std::size_t m_Count;
  const std::size_t m_Ahead;
  const FilesWork& m_Work;
  std::mutex m_Mutex;
  std::condition_variable m_Changed;
  bool m_Ended = false;     // no more files are taken
  std::size_t m_Next = 0;   // the first file that nobody works on
  std::size_t m_Taken = 0;  // files that were taken and whose lines are written
  std::map<std::size_t, DoneFile> m_Done;
  std::vector<std::unique_ptr<os::Thread>> m_Threads;  // last: they use the others
};

void WorkOneByOne(std::size_t count, const FilesWork& work) {
  for (std::size_t index = 0; index < count; ++index) {
    try {
      work.work(index);
    } catch (const CommandError& error) {
      work.failed(index, error);
    }
  }
}

}  // namespace

Expected<unsigned> FilesAtOnce(const Invocation& invocation) {
  if (!invocation.Has(OptionId::Jobs)) return std::max(1U, std::thread::hardware_concurrency());
  const auto number =
      WholeNumberOf("--jobs", invocation.ValueOr(OptionId::Jobs, ""), 1, MaximumAtOnce);
  if (!number) return number.Error();
  return static_cast<unsigned>(*number);
}

void WorkOnFiles(std::size_t count, unsigned atOnce, const FilesWork& work) {
  if (count < 2 || atOnce < 2) return WorkOneByOne(count, work);
  Workers workers(count, atOnce, work);
  if (!workers.Any()) return WorkOneByOne(count, work);
  for (std::size_t index = 0; index < count; ++index) {
    const DoneFile file = workers.Take();
    WriteHeld(file.text);
    try {
      if (file.error) std::rethrow_exception(file.error);
    } catch (const CommandError& error) {
      work.failed(index, error);
    }
    workers.MoveOn();
  }
}

}  // namespace rastrel::cli
