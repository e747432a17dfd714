#include "interpreter/later_pages.h"

#include <fcntl.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <utility>

#include "interpreter/rip_run.h"
#include "pages/page_info.h"
#include "rastrel/platform/os/thread.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::interpreter {
namespace {

Expected<os::FileDescriptor> CopyOf(const os::FileDescriptor& descriptor) {
  if (!descriptor.IsOpen()) return os::FileDescriptor();
  os::FileDescriptor copy(fcntl(descriptor.Get(), F_DUPFD_CLOEXEC, 3));
  if (!copy.IsOpen()) return Failure{"fcntl", "the job", errno};
  return copy;
}

// The same job for an interpreter that has a share of the memory and paints with one thread.
Expected<RunRequest> ShareOf(const RunRequest& request, std::size_t interpreters) {
  RunRequest share;
  auto job = CopyOf(request.job.file);
  if (!job) return job.Error();
  auto prefix = CopyOf(request.prefix);
  if (!prefix) return prefix.Error();
  share.ripDirectory = request.ripDirectory;
  share.title = request.title;
  share.access = request.access;
  share.keepsTiff = request.keepsTiff;
  share.takesTiff = request.takesTiff;
  share.job = {std::move(*job), request.job.layout, request.job.declared};
  share.prefix = std::move(*prefix);
  share.setsCutColor = request.setsCutColor;
  share.settings = request.settings;
  share.settings.memoryMebibytes /= interpreters;
  share.settings.threads = 1;
  return share;
}

}  // namespace

// One range: the run that makes it, on a thread of its own, and its reports.
class LaterPages::Range final : public RunListener {
 public:
  Range(RunPart part, RunDirectory directory, RunRequest request, os::FileDescriptor listening,
        os::FileDescriptor heard, int signal)
      : m_Part(std::move(part)),
        m_Directory(std::move(directory)),
        m_Request(std::move(request)),
        m_Listening(std::move(listening)),
        m_Heard(std::move(heard)),
        m_Signal(signal) {}

  // False if there is no thread to have.
  bool Start(Guardian& guardian) {
    m_Thread = os::Thread::Start([this, &guardian] { Work(guardian); });
    return m_Thread != nullptr;
  }
  // The run ends as soon as nobody listens to it.
  void End() {
    m_Listening.Reset();
    if (m_Thread != nullptr) std::exchange(m_Thread, nullptr)->Join();
    if (const auto number = m_Number.load(); number >= 0)
      m_Part.use->Drop(static_cast<std::size_t>(number));
  }

  [[nodiscard]] const PageRange& Pages() const { return m_Part.pages; }
  // Before the job; complete once it has begun.
  [[nodiscard]] const std::vector<RunText>& Beginning() const { return m_Beginning; }
  [[nodiscard]] bool HasBegun() const { return m_HasBegun; }
  [[nodiscard]] const RunDirectory& Directory() const { return m_Directory; }
  [[nodiscard]] unsigned Made() const { return m_Made; }
  [[nodiscard]] bool IsAmiss() const { return m_IsAmiss; }
  [[nodiscard]] bool IsDone() const { return m_IsDone && !m_IsAmiss; }

  void StateReached(RunState) override { m_HasBegun = true; }
  void Progressed(unsigned) override {}
  void PageMade(unsigned) override { ++m_Made; }
  // Prolog and prefix say the same to each run.
  void Warned(const std::string& text) override { Take({&RunListener::Warned, text}); }
  void Noted(const std::string& text) override { Take({&RunListener::Noted, text}); }
  void Printed(const std::string& text) override { Take({&RunListener::Printed, text}); }
  [[nodiscard]] int Pipe() const override { return m_Heard.Get(); }

 private:
  void Work(Guardian& guardian) {
    try {
      const PrintMode mode;
      RipRun run(std::move(m_Request), mode, m_Directory, *this, guardian, m_Part);
      m_Number = static_cast<std::ptrdiff_t>(run.Number());
      const auto ran = run.Run();
      Complain(!ran || run.Pages() != m_Part.pages.Count());
    } catch (const std::exception&) {
      Complain(true);
    }
    m_IsDone = true;
    Signal();
  }
  void Take(RunText text) {
    if (!m_HasBegun) m_Beginning.push_back(std::move(text));
    Complain(m_HasBegun);
  }
  void Complain(bool isAmiss) {
    if (!isAmiss) return;
    m_IsAmiss = true;
    Signal();
  }
  void Signal() const { static_cast<void>(eventfd_write(m_Signal, 1)); }

  const RunPart m_Part;
  const RunDirectory m_Directory;
  RunRequest m_Request;
  os::FileDescriptor m_Listening;
  const os::FileDescriptor m_Heard;
  const int m_Signal;
  std::unique_ptr<os::Thread> m_Thread;
  std::atomic<std::ptrdiff_t> m_Number{-1};
  std::atomic<unsigned> m_Made{0};
  std::atomic<bool> m_IsAmiss{false};
  std::atomic<bool> m_IsDone{false};
  std::atomic<bool> m_HasBegun{false};
  std::vector<RunText> m_Beginning;  // of the run's thread until it has begun
};

LaterPages::LaterPages(const RunDirectory& directory, Guardian& guardian)
    : m_Directory(directory), m_Guardian(guardian) {}

LaterPages::~LaterPages() { GiveUp(); }

void LaterPages::Start(const RunRequest& request, const std::shared_ptr<JobUse>& use,
                       unsigned pages, double pixels) {
  if (std::exchange(m_HasStarted, true) || m_IsAmiss) return;
  const auto plan = PlanRanges({pages, pixels, request.job.layout.length}, request.settings);
  if (plan.empty()) return;
  m_Signal = os::FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  // Where the machine has no more to give, one interpreter makes all.
  bool isWell = m_Signal.IsOpen();
  for (const PageRange& range : plan) {
    isWell = isWell && Begin(request, plan.size() + 1, {.pages = range, .use = use});
  }
  if (!isWell) GiveUp();
}

bool LaterPages::StartAll(const RunRequest& request, const std::shared_ptr<JobUse>& use,
                          const DscPages& pages, const std::vector<PageRange>& plan) {
  m_HasStarted = true;
  m_Signal = os::FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  bool isWell = m_Signal.IsOpen();
  for (const PageRange& range : plan) {
    const FilePart& first = pages.pages[range.first - 1];
    const FilePart& last = pages.pages[range.last - 1];
    const FilePart own{first.offset, last.offset + last.length - first.offset};
    isWell = isWell && Begin(request, plan.size(),
                             {.pages = range, .parts = {pages.head, own, pages.tail}, .use = use});
  }
  if (!isWell) GiveUp();
  return isWell;
}

bool LaterPages::HaveBegun() const { return !m_Ranges.empty() && m_Ranges.front()->HasBegun(); }

const std::vector<RunText>& LaterPages::Beginning() const { return m_Ranges.front()->Beginning(); }

Expected<void> LaterPages::Begin(const RunRequest& request, std::size_t interpreters,
                                 RunPart part) {
  auto share = ShareOf(request, interpreters);
  if (!share) return share.Error();
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return Failure{"pipe", {}, errno};
  os::FileDescriptor listening(ends[0]);
  os::FileDescriptor heard(ends[1]);
  auto directory = RunDirectory::MakeIn(m_Directory.Path(), m_Guardian);
  if (!directory) return directory.Error();
  m_Ranges.push_back(std::make_unique<Range>(std::move(part), std::move(*directory),
                                             std::move(*share), std::move(listening),
                                             std::move(heard), m_Signal.Get()));
  if (!m_Ranges.back()->Start(m_Guardian)) return FailureOf("no thread");
  return {};
}

void LaterPages::GiveUp() {
  for (const auto& range : m_Ranges) range->End();
  for (const auto& range : m_Ranges) {
    // Whatever stays is the guardian's to remove, with the run's directory.
    static_cast<void>(os::RemoveNativeTree(range->Directory().Path()));
  }
  m_Ranges.clear();
}

bool LaterPages::Covers(unsigned made) const {
  return !m_Ranges.empty() && made + 1 >= m_Ranges.front()->Pages().first;
}

bool LaterPages::IsAmiss() const {
  if (m_Ranges.empty()) return false;
  return m_IsAmiss ||
         std::ranges::any_of(m_Ranges, [](const auto& range) { return range->IsAmiss(); });
}

bool LaterPages::AreMade() const {
  if (m_Ranges.empty() || m_IsAmiss) return false;
  return std::ranges::all_of(m_Ranges, [](const auto& range) { return range->IsDone(); });
}

unsigned LaterPages::Made() const {
  unsigned made = 0;
  for (const auto& range : m_Ranges) made += range->Made();
  return made;
}

void LaterPages::Acknowledge() const {
  eventfd_t count = 0;
  static_cast<void>(eventfd_read(m_Signal.Get(), &count));
}

Expected<unsigned> LaterPages::TakeOver(unsigned made) {
  unsigned last = made;
  for (const auto& range : m_Ranges) {
    const PageRange pages = range->Pages();
    last = pages.last;
    for (unsigned page = std::max(pages.first, made + 1); page <= pages.last; ++page) {
      const std::string from =
          range->Directory().Path() + "/" + pages::PageName(page - pages.first + 1);
      const std::string to = m_Directory.Path() + "/" + pages::PageName(page);
      if (std::rename(from.c_str(), to.c_str()) != 0) return Failure{"rename", from, errno};
    }
  }
  for (const auto& range : m_Ranges) {
    range->End();
    if (auto removed = os::RemoveNativeTree(range->Directory().Path()); !removed)
      return removed.Error();
  }
  m_Ranges.clear();
  return last;
}

}  // namespace rastrel::interpreter
