#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>

#include "interpreter/cut_paths.h"
#include "interpreter/interpreter.h"
#include "interpreter/job_use.h"
#include "interpreter/page_directory.h"
#include "interpreter/page_stream.h"
#include "interpreter/spot_ink.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::interpreter {

/// The treatment of a run's pages.
struct PageTask {
  bool keeps = true;  ///< they become directories; else they are counted only
  unsigned maximum = std::numeric_limits<unsigned>::max();  ///< pages that are wanted
};

/// Makes the pages of one run: page directories of the pixels that come as a stream, and of the
/// separations that the interpreter lays down as files. Holds the limits on their size.
class PageMaker : public PageReceiver {
 public:
  /// Borrows all of these but the task. The pages' size counts for the member `number` of `use`.
  /// `result` gets the run's first failure.
  PageMaker(const PageTask& task, const RunDirectory& directory, const Settings& settings,
            JobUse& use, std::size_t number, RunListener& listener, Expected<void>& result);

  /// The common part of the pages' descriptions; reports fill it in.
  [[nodiscard]] RunDescription& Description() { return m_Description; }
  [[nodiscard]] CutPaths& Cuts() { return m_Cuts; }

  /// The interpreter begins a page of that size, in pixels. All that it has put out are whole.
  void Announce(double width, double height);
  /// The job says how many pages it has, before it paints the first.
  void Count(unsigned pages) { m_Counted = pages; }
  /// The interpreter begins to put the present page out.
  void EndReported();
  /// A spot color of the page that is being put out looks so. Of more than 64 colors the rest is
  /// left out; a page has no more planes.
  void AddInk(const SpotInk& ink);
  /// Takes over the separations that still wait. The interpreter has ended.
  void TakeLastSeparations();
  /// Removes the page whose pixels have not all come. None may come after that.
  [[nodiscard]] Expected<void> DropPresent();

  /// Number of pages that were made.
  [[nodiscard]] unsigned Pages() const { return m_Pages; }
  /// Number of pages that the job says it has; 0 if it has not said.
  [[nodiscard]] unsigned Counted() const { return m_Counted; }
  /// Pixels of the page that was announced last.
  [[nodiscard]] double AnnouncedPixels() const { return m_PagePixels; }
  /// Number of pages whose output the interpreter has begun.
  [[nodiscard]] unsigned Ended() const { return m_Ended; }

  bool BeginPage(const PageSize& size) override;
  bool AddPixels(std::span<const std::byte> bytes) override;
  bool EndPage() override;

 private:
  bool TakeSeparations(unsigned complete);
  void CheckPageSize(double width, double height);
  bool CheckTotal(std::uint64_t bytes);
  void ShowConverting();
  bool Fail(Failure failure);

  const PageTask m_Task;
  const RunDirectory& m_Directory;
  const Settings& m_Settings;
  JobUse& m_Use;
  const std::size_t m_Number;  // in m_Use
  RunListener& m_Listener;
  Expected<void>& m_Result;
  RunDescription m_Description;
  CutPaths m_Cuts;
  std::unique_ptr<PageDirectory> m_Page;  // the one whose pixels come at present
  unsigned m_Pages = 0;
  unsigned m_Separated = 0;  // of these, from separations
  unsigned m_Ended = 0;
  unsigned m_Counted = 0;
  double m_PagePixels = 0;    // of the page that was announced last
  double m_PageBytes = 0;     // the same in bytes, if it is separated
  bool m_Converting = false;  // pixels have flowed
};

}  // namespace rastrel::interpreter
