#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "cutting/job/cut_job.h"

/// Faults of a job's paths that waste material or knives: gaps, lines that are cut twice, crumbs,
/// needles, crossings. Nothing here changes a path (see heal.h).
namespace rastrel::cutting {

/// Where a path becomes a fault. All are millimetres; a value that is no number or below one
/// nanometre counts as one nanometre.
struct CheckLimits {
  double joining = 0.1;        ///< ends at most so far apart belong together
  double tolerance = 0.02;     ///< lines at most so far apart lie on each other
  double tinySize = 0.3;       ///< a piece whose box is narrower and lower than this is tiny
  double spikeWidth = 0.05;    ///< a needle that is at most so wide, and at least four times as
                               ///< long, is a spike
  double overlapLength = 0.5;  ///< a shorter run on another line is a touch
  bool operator==(const CheckLimits&) const = default;
};

/// Paths with a tool are checked. The comparisons are between paths of one operation.
enum class FaultKind {
  Unusable,  ///< a coordinate is no number, or farther than a kilometre from the page's corner;
             ///< nothing else is checked on such a contour
  Open,      ///< an outline (Cut, CutHalf) that does not close, and an end of which meets no other
  UnjoinedEnds,  ///< two ends of outlines that meet or nearly meet, and are not joined; `length` is
                 ///< the gap
  Duplicate,     ///< the same line as another contour, in any direction, from any start and however
                 ///< split; the later one is reported, and nothing else about it
  Overlap,       ///< a part, of `length`, lies on another contour or on another part of its own
  Tiny,          ///< a piece, not drilled, that is smaller than CheckLimits::tinySize
  Spike,         ///< out and back on straight lines, `length` far
  SelfCrossing,  ///< an outline crosses itself
  Crossing,      ///< an outline crosses another
  OutsideSheet,  ///< a part, of `length`, is not on the page
  Covered        ///< a filled contour lies within the area of one filled later, which hides it
};

/// "unusable", "open", "unjoined-ends", "duplicate", "overlap", "tiny", "spike", "self-crossing",
/// "crossing", "outside-sheet", "covered".
[[nodiscard]] std::string_view NameOf(FaultKind kind);

/// A contour by its numbers in the job, from 0.
struct ContourPlace {
  std::size_t path = 0;
  std::size_t contour = 0;
  auto operator<=>(const ContourPlace&) const = default;
};

struct Fault {
  FaultKind kind = FaultKind::Open;
  ContourPlace contour;
  ContourPlace other{};  ///< the one that it meets, crosses or lies on; else `contour` itself
  Point place{};         ///< millimetres; of an unusable one 0, 0
  double length = 0;     ///< millimetres: of the gap, run, needle or part; else of the contour
  bool operator==(const Fault&) const = default;
};

struct CheckReport {
  std::vector<Fault> faults;  ///< by path, contour and kind
  std::size_t paths = 0;      ///< with a tool
  std::size_t contours = 0;   ///< of them
  double length = 0;          ///< of them, millimetres
  /// False if so many lines lie close together that not all were compared.
  bool complete = true;
};

/// Faults beyond these are not reported, and the report is incomplete.
inline constexpr std::size_t MaximumFaults = 200'000;

/// In time of n log n in the segments, plus the places where lines come close.
[[nodiscard]] CheckReport Check(const CutJob& job, const CheckLimits& limits = {});

}  // namespace rastrel::cutting
