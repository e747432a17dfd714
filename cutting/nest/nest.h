#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

/// Places the paths of many cut jobs on sheets, or on a roll, with little waste.
namespace rastrel::cutting {

/// The angles by which a piece may be turned, counterclockwise.
enum class NestTurns {
  None,
  Quarters,  ///< by multiples of 90 degrees
  Any        ///< by multiples of 45 degrees
};

/// How far a search is.
struct NestProgress {
  int layouts = 0;    ///< that were tried, besides the rows of boxes
  double length = 0;  ///< of the best so far on all its sheets, millimetres
};

struct NestOptions {
  double width = 0;   ///< of a sheet, along x, millimetres; of a roll its length on it at most
  double height = 0;  ///< of a sheet, or across the roll, along y
  bool roll = false;  ///< there is one sheet, and as little as possible of its width is used
  double gap = 0;     ///< between two pieces at least, millimetres; none to the sheet's edges
  NestTurns turns = NestTurns::None;
  int effort = 8;  ///< layouts that are tried besides rows of boxes, 0 to 10,000
  /// Called before each piece of each layout; false ends the search with the best complete layout.
  /// It may be empty.
  std::function<bool(const NestProgress&)> goOn{};
};

/// A job and how often it is wanted. The job is not owned.
struct NestInput {
  std::string name;  ///< in failures
  const CutJob* job = nullptr;
  int copies = 1;
};

struct NestPlacement {
  std::size_t input = 0;  ///< its place among the inputs
  int copy = 0;           ///< from 0
  std::size_t sheet = 0;  ///< from 0
  double turn = 0;        ///< degrees counterclockwise
  Transform transform{};  ///< from the input's page to the sheet
};

struct NestResult {
  std::vector<NestPlacement> placements{};  ///< in the order of the inputs and their copies
  std::vector<double> usedLengths{};        ///< of each sheet: from x = 0 to the last piece's end
  double wastePercent = 0;  ///< of the sheets' area, of a roll up to its used length, that is
                            ///< within no piece's outline
  int layouts = 0;          ///< that were tried, besides the rows of boxes
  bool rows = false;        ///< the rows of boxes were the best
  bool wasEnded = false;    ///< `goOn` ended the search
  std::size_t thinned = 0;  ///< inputs whose outlines have fewer corners here than in their jobs
  double thinnedBy = 0;     ///< how far such an outline may lie outside at most, millimetres
};

inline constexpr std::size_t MaximumNestPieces = 1000;
inline constexpr std::size_t MaximumNestCorners = 1'000'000;  ///< of one input, its curves flat
inline constexpr int MaximumNestEffort = 10'000;
inline constexpr double MaximumNestLength = 100'000;  ///< of a sheet's side and of a coordinate

/// A piece is all that tools follow in its job. It takes the room of the outlines of its closed
/// cuts, and of paths outside of these; without closed cuts that of its box. Holes take no piece.
/// The result is the same for the same inputs and options, unless `goOn` ends it, and never longer
/// than rows of boxes. An outline
/// with many corners is thinned outward, so that the time of a search depends on the pieces alone.
/// Fails as BadInput, with the input's name, for a piece that fits on no sheet, has no path for a
/// tool or lies beyond the limits; and for options out of their range.
[[nodiscard]] Expected<NestResult> Nest(const std::vector<NestInput>& inputs,
                                        const NestOptions& options);

/// The paths of the pieces on one sheet as one job, with each piece's own marks left out. Its width
/// is the options', of a roll the used length.
[[nodiscard]] CutJob SheetJob(const std::vector<NestInput>& inputs, const NestOptions& options,
                              const NestResult& result, std::size_t sheet);

/// The room that a placed piece takes on its sheet: its outlines, grown by half of the gap, as
/// closed contours that may lie in each other. The print of the piece may reach so far.
[[nodiscard]] std::vector<Contour> RoomOf(const NestInput& input, const NestOptions& options,
                                          const NestPlacement& placement);

}  // namespace rastrel::cutting
