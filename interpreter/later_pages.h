#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "interpreter/dsc_pages.h"
#include "interpreter/interpreter.h"
#include "interpreter/job_use.h"
#include "interpreter/page_plan.h"

namespace rastrel::interpreter {

struct RunPart;

/// A text of a run, for its listener.
struct RunText {
  void (RunListener::*hear)(const std::string&);
  std::string text;
};

/// Takes the later pages of a PDF off the run that makes the first ones: further interpreters make
/// ranges of them at the same time, each within its own walls and limits, under the same guardian,
/// and in a directory of its own below the run's.
///
/// The first run could make all pages alone, and goes on to do so whenever anything is amiss: a
/// message from any interpreter, a failure, a page too few. So the job's result and its messages
/// are always those of one interpreter. Until the pages are taken over, the first run only waits
/// before the first page that is not its own.
///
/// Used by the thread of the first run.
class LaterPages {
 public:
  /// Borrows both; they outlive this.
  LaterPages(const RunDirectory& directory, Guardian& guardian);
  /// Gives up.
  ~LaterPages();
  LaterPages(const LaterPages&) = delete;
  LaterPages& operator=(const LaterPages&) = delete;

  /// The job has that many pages, and the first is that large. Starts the others if that pays;
  /// does nothing the second time, or after a complaint. Memory and processor time of all count
  /// for `use`.
  void Start(const RunRequest& request, const std::shared_ptr<JobUse>& use, unsigned pages,
             double pixels);
  /// Starts a run for each range of a PostScript job; together they make all pages. False if the
  /// machine has no more to give: nothing runs then.
  [[nodiscard]] bool StartAll(const RunRequest& request, const std::shared_ptr<JobUse>& use,
                              const DscPages& pages, const std::vector<PageRange>& plan);
  /// Whether the first of those has begun with the job; and the notes and warnings of prolog and
  /// prefix before that, once that is so.
  [[nodiscard]] bool HaveBegun() const;
  [[nodiscard]] const std::vector<RunText>& Beginning() const;

  /// An interpreter has printed something: the first is to make all pages.
  void Complain() { m_IsAmiss = true; }
  /// Ends the others, and removes their pages.
  void GiveUp();

  /// Whether the others make all pages after the first `made`.
  [[nodiscard]] bool Covers(unsigned made) const;
  /// Whether the others have to be given up.
  [[nodiscard]] bool IsAmiss() const;
  /// Whether all their pages lie there.
  [[nodiscard]] bool AreMade() const;
  /// Pages that they have made.
  [[nodiscard]] unsigned Made() const;
  /// Becomes readable when one of them ends or complains; -1 before Start.
  [[nodiscard]] int Descriptor() const { return m_Signal.Get(); }
  /// Takes the readable state away.
  void Acknowledge() const;

  /// Puts their pages after the first `made` into the run's directory, and returns the number of
  /// the job's last page. REQUIRES: AreMade, Covers(made).
  [[nodiscard]] Expected<unsigned> TakeOver(unsigned made);

 private:
  class Range;

  [[nodiscard]] Expected<void> Begin(const RunRequest& request, std::size_t interpreters,
                                     RunPart part);

  const RunDirectory& m_Directory;
  Guardian& m_Guardian;
  os::FileDescriptor m_Signal;  // of events
  std::vector<std::unique_ptr<Range>> m_Ranges;
  bool m_HasStarted = false;
  bool m_IsAmiss = false;
};

}  // namespace rastrel::interpreter
