#include "cutting/nest/nest.h"

#include <algorithm>
#include <cmath>

#include "cutting/nest/layout.h"
#include "cutting/nest/piece_shape.h"
#include "cutting/nest/search.h"

namespace rastrel::cutting {
namespace {

using nest::Layout;
using nest::PieceShape;
using nest::SheetSize;

Failure Refused(std::string why) {
  Failure failure = FailureOf(std::move(why));
  failure.code = FailureCode::BadInput;
  return failure;
}

std::vector<double> TurnsOf(NestTurns turns) {
  if (turns == NestTurns::None) return {0};
  if (turns == NestTurns::Quarters) return {0, 90, 180, 270};
  return {0, 45, 90, 135, 180, 225, 270, 315};
}

bool IsWithin(double value, double minimum, double maximum) {
  return value >= minimum && value <= maximum;
}

Expected<void> CheckOptions(const NestOptions& options) {
  if (!IsWithin(options.width, 0.001, MaximumNestLength) ||
      !IsWithin(options.height, 0.001, MaximumNestLength))
    return Refused("a sheet's sides are from 0.001 to 100000 mm");
  if (!IsWithin(options.gap, 0, 1000)) return Refused("a gap is from 0 to 1000 mm");
  if (options.effort < 0 || options.effort > MaximumNestEffort)
    return Refused("an effort is from 0 to 10000 layouts");
  return {};
}

// Control points bound their curves, so that no coordinate of the polygons is beyond the limit.
bool IsWithinLimits(const CutJob& job) {
  const auto isNear = [](Point point) {
    return IsWithin(point.x, -MaximumNestLength, MaximumNestLength) &&
           IsWithin(point.y, -MaximumNestLength, MaximumNestLength);
  };
  for (const CutPath& path : job.paths)
    for (const Contour& contour : path.contours) {
      if (!isNear(contour.start)) return false;
      for (const Segment& segment : contour.segments)
        if (!isNear(segment.end) ||
            (segment.isCurve && !(isNear(segment.first) && isNear(segment.second))))
          return false;
    }
  return true;
}

Expected<PieceShape> ShapeOfInput(const NestInput& input, const NestOptions& options,
                                  const SheetSize& sheet) {
  if (!IsWithinLimits(*input.job))
    return Refused(input.name + ": a path lies more than 100 m from the page");
  if (ToolBoxOf(*input.job).IsEmpty()) return Refused(input.name + ": it has no path for a tool");
  PieceShape shape = nest::ShapeOf(*input.job, options.gap, TurnsOf(options.turns));
  if (shape.corners > MaximumNestCorners)
    return Refused(input.name + ": its tool paths have more than 1000000 corners");
  const auto fits = [&](const nest::TurnedShape& turned) { return nest::Fits(turned, sheet); };
  if (std::ranges::none_of(shape.turns, fits))
    return Refused(input.name + ": it fits on no sheet, however it is turned");
  return shape;
}

// The best of rows of boxes. A roll has a maximum length.
Expected<Layout> BestRows(const std::vector<PieceShape>& shapes,
                          const std::vector<std::size_t>& shapeOfPiece, const SheetSize& sheet) {
  auto best = nest::RowsOfBoxes(shapes, shapeOfPiece, sheet, false);
  auto narrow = nest::RowsOfBoxes(shapes, shapeOfPiece, sheet, true);
  if (narrow && (!best || narrow->IsBetterThan(*best))) best = std::move(narrow);
  if (!best) return Refused("the pieces need more than 100 m of the roll");
  return *std::move(best);
}

Transform PlacingOf(const nest::TurnedShape& shape, const nest::Placed& placed) {
  Transform transform = nest::Turning(shape.turn);
  transform.e = static_cast<double>(placed.at.X) / nest::UnitsPerMillimetre;
  transform.f = static_cast<double>(placed.at.Y) / nest::UnitsPerMillimetre;
  return transform;
}

double WasteOf(const NestResult& result, const NestOptions& options, double area) {
  double sheets = 0;
  for (const double used : result.usedLengths)
    sheets += options.height * (options.roll ? used : options.width);
  return sheets > 0 ? std::max(0.0, 100 * (1 - area / sheets)) : 0;
}

SheetSize SizeOf(const NestOptions& options) {
  const auto units = [](double millimetres, double rounding) {
    return static_cast<ClipperLib::cInt>(
        std::floor(millimetres * nest::UnitsPerMillimetre + rounding));
  };
  return {.width = units(options.width, 1e-6),
          .height = units(options.height, 1e-6),
          // The boxes are rounded outward already; a part of a unit is a whole one.
          .gap = units(options.gap, 1 - 1e-6),
          .roll = options.roll};
}

NestResult ResultOf(const nest::Search& search, const std::vector<NestInput>& inputs,
                    const std::vector<PieceShape>& shapes, const NestOptions& options) {
  NestResult result{.layouts = search.layouts, .rows = search.rows, .wasEnded = search.wasEnded};
  for (const PieceShape& shape : shapes) {
    result.thinned += shape.thinnedBy > 0 ? 1 : 0;
    result.thinnedBy = std::max(result.thinnedBy, shape.thinnedBy);
  }
  std::size_t piece = 0;
  double area = 0;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    for (int copy = 0; copy < inputs[i].copies; ++copy) {
      const nest::Placed& placed = search.best.pieces[piece++];
      const nest::TurnedShape& shape = shapes[i].turns[placed.turn];
      result.placements.push_back({.input = i,
                                   .copy = copy,
                                   .sheet = placed.sheet,
                                   .turn = shape.turn,
                                   .transform = PlacingOf(shape, placed)});
      area += shapes[i].area;
    }
  }
  for (const ClipperLib::cInt used : search.best.used)
    result.usedLengths.push_back(static_cast<double>(used) / nest::UnitsPerMillimetre);
  result.wastePercent = WasteOf(result, options, area);
  return result;
}

}  // namespace

Expected<NestResult> Nest(const std::vector<NestInput>& inputs, const NestOptions& options) {
  if (const auto checked = CheckOptions(options); !checked) return checked.Error();
  const SheetSize sheet = SizeOf(options);
  std::vector<std::size_t> shapeOfPiece;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    if (inputs[i].copies < 1) return Refused(inputs[i].name + ": there is one copy at least");
    if (static_cast<std::size_t>(inputs[i].copies) > MaximumNestPieces - shapeOfPiece.size())
      return Refused("there are more than 1000 pieces");
    shapeOfPiece.insert(shapeOfPiece.end(), static_cast<std::size_t>(inputs[i].copies), i);
  }
  if (inputs.empty()) return Refused("there is no piece to place");
  std::vector<PieceShape> shapes;
  for (const NestInput& input : inputs) {
    auto shape = ShapeOfInput(input, options, sheet);
    if (!shape) return shape.Error();
    shapes.push_back(*std::move(shape));
  }
  auto rows = BestRows(shapes, shapeOfPiece, sheet);
  if (!rows) return rows.Error();
  nest::Search search{.best = *std::move(rows)};
  nest::Improve(search, shapes, shapeOfPiece, sheet, options);
  return ResultOf(search, inputs, shapes, options);
}

CutJob SheetJob(const std::vector<NestInput>& inputs, const NestOptions& options,
                const NestResult& result, std::size_t sheet) {
  CutJob job{.width = options.roll ? result.usedLengths[sheet] : options.width,
             .height = options.height,
             .paths = {}};
  for (const NestPlacement& placement : result.placements) {
    if (placement.sheet != sheet) continue;
    for (CutPath path : inputs[placement.input].job->paths) {
      for (Contour& contour : path.contours) contour = Transformed(contour, placement.transform);
      job.paths.push_back(std::move(path));
    }
  }
  return job;
}

std::vector<Contour> RoomOf(const NestInput& input, const NestOptions& options,
                            const NestPlacement& placement) {
  const PieceShape shape = nest::ShapeOf(*input.job, options.gap, {placement.turn});
  const auto onSheet = [&](const ClipperLib::IntPoint& point) {
    return Point{static_cast<double>(point.X) / nest::UnitsPerMillimetre + placement.transform.e,
                 static_cast<double>(point.Y) / nest::UnitsPerMillimetre + placement.transform.f};
  };
  std::vector<Contour> room;
  for (const ClipperLib::Path& outline : shape.turns.front().outlines) {
    if (outline.empty()) continue;
    Contour contour{.start = onSheet(outline.front()), .segments = {}, .closed = true};
    for (std::size_t i = 1; i < outline.size(); ++i)
      contour.segments.push_back(LineTo(onSheet(outline[i])));
    room.push_back(std::move(contour));
  }
  return room;
}

}  // namespace rastrel::cutting
