#include "interpreter/parallel_pages.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <string>

#include "interpreter/dsc_pages.h"
#include "interpreter/job_use.h"
#include "interpreter/later_pages.h"
#include "interpreter/page_plan.h"
#include "rastrel/platform/os/clock.h"

namespace rastrel::interpreter {
namespace {

constexpr std::int64_t Nanoseconds = 1'000'000'000;
constexpr int WaitMilliseconds = 50;
constexpr unsigned MaximumPercent = 99;  // the rest is the closing of the pages
constexpr const char* AgainNote =
    "The job does not run in parts as it does as a whole; it is run again, and its pages are made "
    "one after the other.";

// The runs of one job's parts, until all are done.
class Parts {
 public:
  Parts(const RunRequest& request, unsigned pages, RunListener& listener, LaterPages& runs,
        JobUse& use, HeardBeginning& heard)
      : m_Request(request),
        m_Pages(pages),
        m_Listener(listener),
        m_Runs(runs),
        m_Use(use),
        m_Heard(heard) {}

  // Nothing: they are to be given up.
  std::optional<Expected<unsigned>> Wait() {
    const std::int64_t begin = os::MonotonicNanoseconds();
    while (!m_Runs.IsAmiss() && Fits()) {
      Show();
      if (m_Runs.AreMade()) return TakeOver();
      const auto elapsed = (os::MonotonicNanoseconds() - begin) / Nanoseconds;
      if (static_cast<std::uint64_t>(elapsed) >= m_Request.settings.timeSeconds) {
        return FailureOf("The job took longer than " +
                         std::to_string(m_Request.settings.timeSeconds) +
                         " seconds and was ended (RASTREL_RIP_TIMEOUT)");
      }
      std::array<pollfd, 2> entries{{{m_Runs.Descriptor(), POLLIN, 0}, {m_Listener.Pipe(), 0, 0}}};
      if (poll(entries.data(), entries.size(), WaitMilliseconds) < 0 && errno != EINTR)
        return Failure{"poll", {}, errno};
      if ((entries[1].revents & POLLERR) != 0)
        return FailureOf("Nobody reads the reports any more");
      m_Runs.Acknowledge();
    }
    return {};
  }

 private:
  bool Fits() { return m_Use.PagesOfAll() <= m_Request.settings.totalMebibytes << 20; }

  void Show() {
    if (!m_Heard.isInterpreting && m_Runs.HaveBegun()) {
      for (const RunText& text : m_Runs.Beginning()) (m_Listener.*text.hear)(text.text);
      m_Listener.StateReached(RunState::Interpreting);
      m_Heard.isInterpreting = true;
    }
    const unsigned made = m_Runs.Made();
    if (!m_Heard.isInterpreting || made == 0) return;
    if (!m_Heard.isConverting) m_Listener.StateReached(RunState::Converting);
    m_Heard.isConverting = true;
    m_Listener.Progressed(std::min(made * 100 / m_Pages, MaximumPercent));
  }

  std::optional<Expected<unsigned>> TakeOver() {
    const auto last = m_Runs.TakeOver(0);
    if (!last) return last.Error();
    for (unsigned page = 1; page <= *last; ++page) m_Listener.PageMade(page);
    m_Listener.StateReached(RunState::Spooling);
    return *last;
  }

  const RunRequest& m_Request;
  const unsigned m_Pages;
  RunListener& m_Listener;
  LaterPages& m_Runs;
  JobUse& m_Use;
  HeardBeginning& m_Heard;
};

// Why the parts of a job would not be the job.
std::string Refusal(const std::string& reason) {
  return "The pages are made one after the other, since the job can't be divided: " + reason + ".";
}

}  // namespace

std::optional<Expected<unsigned>> PrintInParts(const RunRequest& request,
                                               const RunDirectory& directory, RunListener& listener,
                                               Guardian& guardian, HeardBeginning& heard) {
  const JobLayout& layout = request.job.layout;
  if (!request.settings.parallelPages || layout.kind != JobKind::PostScript) return {};
  if (EqualRanges(2, request.settings).empty()) return {};
  if (request.setsCutColor) {
    listener.Warned(Refusal("a cut colour is taken out of all its pages"));
    return {};
  }
  const auto pages = FindDscPages(request.job.file.Get(), layout);
  if (!pages) {
    listener.Warned(Refusal(Describe(pages.Error())));
    return {};
  }
  const auto count = static_cast<unsigned>(pages->pages.size());
  const auto use = std::make_shared<JobUse>(request.settings.memoryMebibytes << 20);
  LaterPages runs(directory, guardian);
  std::optional<Expected<unsigned>> made;
  if (runs.StartAll(request, use, *pages, EqualRanges(count, request.settings)))
    made = Parts(request, count, listener, runs, *use, heard).Wait();
  if (!made) listener.Warned(AgainNote);
  return made;
}

}  // namespace rastrel::interpreter
