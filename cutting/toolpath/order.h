#pragma once

#include <vector>

#include "cutting/toolpath/tool_line.h"

namespace rastrel::cutting {

struct OrderResult {
  std::vector<ToolLine> lines;
  double travelBefore = 0;  ///< millimetres with the tool up, in the order given
  double travelAfter = 0;   ///< the same in the order found
};

/// An order with little travel. By rank come:
///
///   1. ToolSettings::order, the smaller first;
///   2. the operation: mark, drill, engrave, crease, perforate, cut-half, and last cut, since it
///      frees the piece;
///   3. inner contours before the closed one that holds them, within one order and operation;
///   4. tools by turns as few as 3. allows;
///   5. a short way: the nearest next one, bettered by turning parts of the way round (2-opt).
///
/// A closed contour may begin at another of its segments' ends, and an open one may be reversed;
/// nothing else about a contour changes. The given order is kept where it obeys 1. to 3., needs no
/// second tool within an order and operation, and is no longer. A line that is on no sheet
/// (IsOnAnySheet) comes last of its operation and counts as no travel. `start` is where the tool
/// waits. Takes n log n steps and memory in proportion to n. Any thread.
[[nodiscard]] OrderResult OrderLines(const CutJob& job, std::vector<ToolLine> lines, Point start);

/// The way with the tool up from `start` through the lines as they stand, millimetres.
[[nodiscard]] double TravelOf(const std::vector<ToolLine>& lines, Point start);

/// The same closed contour from the end of its segment `index` on; 0 is the start that it has. A
/// line back to the start that it had without a segment becomes one. An open one is returned as it
/// is.
[[nodiscard]] Contour StartedAt(const Contour& contour, std::size_t index);

}  // namespace rastrel::cutting
