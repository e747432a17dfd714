#include <optional>
#include <string>
#include <utility>

#include "interpreter/interpreter.h"
#include "interpreter/later_pages.h"
#include "interpreter/parallel_pages.h"
#include "interpreter/rip_run.h"
#include "interpreter/run_reports.h"

namespace rastrel::interpreter {
namespace {

// Runs the job in one of the modes and returns the run, or the failure.
template <typename Mode, typename Result>
auto RunIn(RunRequest request, const RunDirectory& directory, RunListener& listener,
           Guardian& guardian, Result result)
    -> Expected<decltype(result(std::declval<RipRun&>()))> {
  const Mode mode{};
  RipRun run(std::move(request), mode, directory, listener, guardian);
  const auto ran = run.Run();
  if (!ran) return ran.Error();
  return result(run);
}

unsigned PagesOf(const RipRun& run) { return run.Pages(); }

// Hears of a job that is run again: all that it says has been passed on.
class Repetition : public RunListener {
 public:
  explicit Repetition(RunListener& listener) : m_Listener(listener) {}
  void StateReached(RunState) override {}
  void Progressed(unsigned) override {}
  void PageMade(unsigned) override {}
  void Warned(const std::string&) override {}
  void Noted(const std::string&) override {}
  void Printed(const std::string&) override {}
  [[nodiscard]] int Pipe() const override { return m_Listener.Pipe(); }

 protected:
  RunListener& m_Listener;
};

// Hears of a job that has been run in parts, and is run again as a whole: its beginning has been
// passed on.
class SecondListener final : public Repetition {
 public:
  SecondListener(RunListener& listener, const HeardBeginning& heard)
      : Repetition(listener), m_Heard(heard) {}
  void StateReached(RunState state) override {
    const bool heard = (state == RunState::Interpreting && m_Heard.isInterpreting) ||
                       (state == RunState::Converting && m_Heard.isConverting);
    m_Heard.isInterpreting = false;
    if (!heard) m_Listener.StateReached(state);
  }
  void Progressed(unsigned percent) override { m_Listener.Progressed(percent); }
  void PageMade(unsigned number) override { m_Listener.PageMade(number); }
  void Warned(const std::string& text) override {
    if (!m_Heard.isInterpreting) m_Listener.Warned(text);
  }
  void Noted(const std::string& text) override {
    if (!m_Heard.isInterpreting) m_Listener.Noted(text);
  }
  void Printed(const std::string& text) override {
    if (!m_Heard.isInterpreting) m_Listener.Printed(text);
  }

 private:
  HeardBeginning m_Heard;
};

// Passes all on. A message of the job is one of all its pages: its interpreter is to make them all.
class FirstListener final : public RunListener {
 public:
  FirstListener(RunListener& listener, LaterPages& later) : m_Listener(listener), m_Later(later) {}
  void StateReached(RunState state) override {
    m_HasBegun = true;
    m_Listener.StateReached(state);
  }
  void Progressed(unsigned percent) override { m_Listener.Progressed(percent); }
  void PageMade(unsigned number) override { m_Listener.PageMade(number); }
  void Warned(const std::string& sentence) override {
    Complain();
    m_Listener.Warned(sentence);
  }
  void Noted(const std::string& text) override {
    Complain();
    m_Listener.Noted(text);
  }
  void Printed(const std::string& line) override {
    Complain();
    m_Listener.Printed(line);
  }
  [[nodiscard]] int Pipe() const override { return m_Listener.Pipe(); }

 private:
  void Complain() {
    if (m_HasBegun) m_Later.Complain();
  }

  RunListener& m_Listener;
  LaterPages& m_Later;
  bool m_HasBegun = false;
};

// The same, of the run that makes the page.
class PrintRepetition final : public Repetition {
 public:
  using Repetition::Repetition;
  void StateReached(RunState state) override {
    if (state != RunState::Interpreting) m_Listener.StateReached(state);
  }
  void Progressed(unsigned percent) override { m_Listener.Progressed(percent); }
  void PageMade(unsigned number) override { m_Listener.PageMade(number); }
};

Expected<PageMeasure> MeasureOf(const RipRun& run, const std::optional<PageArea>& declared) {
  const auto page = MeasuredPage(run.Measure(), declared);
  if (!page) return FailureOf("The interpreter's measure can't be read");
  return *page;
}

// The failure of a job without the chosen page, whose last page it left open: a measure knows
// whether that one has marks and so counts.
Failure WithoutChosenPage(RunRequest request, const Failure& failure, const RunDirectory& directory,
                          RunListener& listener, Guardian& guardian) {
  Repetition unheard(listener);
  const MeasureMode measuring;
  RipRun measured(std::move(request), measuring, directory, unheard, guardian);
  const auto ran = measured.Run();
  return ran ? failure : ran.Error();
}

// A job that has ended no page: `noPage` if it has no marks either.
Expected<unsigned> PrintOpenPage(RunRequest request, const Failure& noPage,
                                 const RunDirectory& directory, RunListener& listener,
                                 Guardian& guardian) {
  if (const auto dropped = DropEndOfJob(request.job); !dropped)
    return FailureOf("The job can't be read: " + Describe(dropped.Error()), FailureCode::BadInput);
  request.settings.page = 1;  // there is but one
  Repetition unheard(listener);
  const MeasureMode measuring;
  RipRun measured(std::move(request), measuring, directory, unheard, guardian);
  if (!measured.Run()) return noPage;
  request = measured.TakeRequest();
  const auto page = MeasureOf(measured, request.job.declared);
  if (!page) return page.Error();
  if (!page->marked) return noPage;
  listener.Warned(OpenPageNote);
  request.area = page->box;
  PrintRepetition heard(listener);
  const OpenPageMode printing;
  RipRun printed(std::move(request), printing, directory, heard, guardian);
  if (const auto ran = printed.Run(); !ran) return ran.Error();
  return printed.Pages();
}

}  // namespace

Expected<unsigned> PrintPages(RunRequest request, const RunDirectory& directory,
                              RunListener& listener, Guardian& guardian) {
  HeardBeginning heard;
  if (auto made = PrintInParts(request, directory, listener, guardian, heard)) return *made;
  const PrintMode mode;
  LaterPages later(directory, guardian);
  SecondListener second(listener, heard);
  FirstListener first(second, later);
  RipRun run(std::move(request), mode, directory, first, guardian, {.later = &later});
  const auto ran = run.Run();
  if (ran) return run.Pages();
  if (!run.HasEndedNoPage()) return ran.Error();
  return PrintOpenPage(run.TakeRequest(), ran.Error(), directory, listener, guardian);
}

Expected<void> RunInstallJob(RunRequest request, const RunDirectory& directory,
                             RunListener& listener, Guardian& guardian) {
  const auto ran = RunIn<InstallMode>(std::move(request), directory, listener, guardian, PagesOf);
  if (!ran) return ran.Error();
  return {};
}

Expected<FirstPages> PrintFirstPage(RunRequest request, const RunDirectory& directory,
                                    RunListener& listener, Guardian& guardian) {
  const PictureMode mode;
  RipRun run(std::move(request), mode, directory, listener, guardian);
  const auto ran = run.Run();
  if (ran) return FirstPages{run.Pages(), run.HasOpenPage()};
  if (run.HasPassedOpenPage())
    return WithoutChosenPage(run.TakeRequest(), ran.Error(), directory, listener, guardian);
  return ran.Error();
}

Expected<PageMeasure> MeasureFirstPage(RunRequest request, const RunDirectory& directory,
                                       RunListener& listener, Guardian& guardian) {
  const auto declared = request.job.declared;
  const MeasureMode mode;
  RipRun run(std::move(request), mode, directory, listener, guardian);
  if (const auto ran = run.Run(); !ran) return ran.Error();
  return MeasureOf(run, declared);
}

}  // namespace rastrel::interpreter
