#pragma once

#include <string_view>
#include <vector>

#include "cutting/clean/check.h"

/// Mends the faults that check.h finds, where there is one way to mend them. Points that are sound
/// are never moved, not by the last bit, and curves stay curves where nothing was changed.
namespace rastrel::cutting {

struct HealLimits {
  CheckLimits faults{};
  /// Whether areas that overlap become one, and filled contours that a later one hides are
  /// dropped. It loses lines that the page does not show.
  bool unite = false;
};

enum class RepairKind {
  DroppedUnusable,   ///< no tool could follow it
  RemovedSpike,      ///< `place` is its tip, `length` how far it went out
  DroppedDuplicate,  ///< of `other`, with the same operation and settings
  Joined,            ///< with `other`, or with its own start; a straight line closes a gap of
                     ///< `length`
  DroppedTiny,
  DroppedCovered,
  United  ///< with `other`, or with itself where it crossed itself; `length` is that of the lines
          ///< that took their place
};

/// "dropped-unusable", "removed-spike", "dropped-duplicate", "joined", "dropped-tiny",
/// "dropped-covered", "united".
[[nodiscard]] std::string_view NameOf(RepairKind kind);

struct Repair {
  RepairKind kind = RepairKind::Joined;
  ContourPlace contour;  ///< in the job that was given, as `other` is
  ContourPlace other{};  ///< else `contour` itself
  Point place{};
  double length = 0;  ///< of the gap, the needle or the contour, millimetres
  bool operator==(const Repair&) const = default;
};

struct HealResult {
  CutJob job;                   ///< a path of which nothing is left is dropped
  std::vector<Repair> repairs;  ///< in the order in which they were made
  bool complete = true;         ///< see CheckReport
};

/// Faults that it leaves: open outlines, crossings and overlaps that were not united, and parts
/// outside the sheet.
[[nodiscard]] HealResult Heal(CutJob job, const HealLimits& limits = {});

}  // namespace rastrel::cutting
