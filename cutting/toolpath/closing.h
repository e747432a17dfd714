#pragma once

#include <cstddef>
#include <vector>

#include "cutting/toolpath/line_index.h"
#include "cutting/toolpath/tool_line.h"

namespace rastrel::cutting {

struct ClosingReport {
  std::size_t overcuts = 0;        ///< closed contours that go on past their start
  std::size_t leadIns = 0;         ///< ways in from the waste
  std::size_t bridged = 0;         ///< closed contours with bridges
  std::size_t bridges = 0;         ///< bridges in all
  std::size_t shorterLeadIns = 0;  ///< of the ways in: shortened, since the full one met a path
  std::size_t noLeadIn = 0;        ///< places with no room for an eighth of it: none there
  std::size_t cornerBridges = 0;   ///< bridges at a corner, since no place near it was straighter
  std::size_t fewerBridges = 0;    ///< contours with fewer bridges than asked, or none: too short
};

/// The work at the places where a closed contour begins and ends, by the settings of its path. An
/// open contour is returned as it is.
///
///   overcut   it goes on past its start by that length, once round at most, and becomes open
///   bridges   it is left out at `bridges` places of `bridgeWidth` each, spread evenly; one moves
///             by up to a quarter of their distance where there would be a corner of more than 20°;
///             together they take half of the length at most. With bridges there is no overcut,
///             since no piece ends where it began.
///   leadIn    a straight way from the waste to where the tool begins, which meets no line of
///             `others`: at 45° against the direction, in a corner that the waste is within, and
///             beside a bridge in the middle of the waste. Halved up to three times to find room.
///
/// The waste is outside of a contour of even depth and inside of one of odd depth.
[[nodiscard]] std::vector<Contour> CloseLine(const ToolLine& line, const ToolSettings& settings,
                                             const LineIndex& others, ClosingReport& report);

}  // namespace rastrel::cutting
