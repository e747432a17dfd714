#pragma once

#include <string_view>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

/// Registration marks around a page: where they are, and how the page grows for them.
namespace rastrel::cutting {

/// Lengths in millimetres.
struct MarkOptions {
  RegistrationMark::Shape shape = RegistrationMark::Shape::Circle;
  double size = 5;     ///< of a mark, 1 to 100
  double gap = 10;     ///< between print or paths and the marks, 0 to 1,000
  int count = 4;       ///< 3 to 8
  double spacing = 0;  ///< the largest distance between two marks of an edge; 0: any
  double edge = 2;     ///< between the marks and the edge of the page, 0 to 1,000
  /// The page's pixels: it grows by whole ones. 0: by any length. Of pages that are no pixels.
  double pixelWidth = 0;
  double pixelHeight = 0;
  bool inAllInks = false;  ///< printed in each separation, and not in black alone
};

/// Reads "SHAPE[:SIZE][,gap=LENGTH][,count=N][,spacing=LENGTH][,edge=LENGTH]
/// [,ink=black|all]", with "corner", "cross" or "circle". Lengths have mm, cm, in or pt after them;
/// without a unit they are millimetres. Fails with the part that is wrong, and why.
[[nodiscard]] Expected<MarkOptions> ParseMarks(std::string_view text);

/// How much longer the page is at each side, millimetres.
struct PageGrowth {
  double left = 0;
  double bottom = 0;
  double right = 0;
  double top = 0;
};

struct MarkedJob {
  CutJob job;         ///< with its marks; its paths are moved by `left` and `bottom`
  PageGrowth growth;  ///< whole pixels, if the options have a size of them
};

/// The job with marks outside of the page and of all its paths. They are numbered along the rim,
/// counterclockwise from the lower left:
///
///     6 --- 5 ----------
///     |  +------------+  4      the mark of the upper right is not in the corner
///     |  |   print    |  |      but below it, at the right edge
///     |  +------------+  |
///     1 ------- 2 ------ 3      with a count of 6: one more at each long edge
///
/// Three marks are those of the other three corners. As one corner has no mark, a sheet that is
/// turned by a half or a quarter never looks like one that lies right: the missing mark is twice
/// the size of a mark from its corner. Marks 5 to 8 of the count go to the edges whose marks are
/// furthest apart, and so do more than these, as long as two neighbors of an edge are more than
/// `spacing` apart. A corner mark that is not in a corner opens outward.
///
/// Fails if a number is out of its range, if the job has marks already, if the page has no extent,
/// if the marks would touch each other, or if more than MaximumFittedMarks (mark_fit.h) would be
/// needed.
[[nodiscard]] Expected<MarkedJob> WithMarks(CutJob job, const MarkOptions& options);

/// The job with its first mark at the origin: the frame of files for cutters, which begin at that
/// mark. As all others are right of it or above, so is every path. A job without marks stays as it
/// is. The width and height are the extent right of and above the mark.
[[nodiscard]] CutJob Rebased(CutJob job);

}  // namespace rastrel::cutting
