#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cutting/job/cut_job.h"
#include "cutting/rules/rules.h"

namespace rastrel::cutting {

/// How many paths, and how long they are in millimetres.
struct PathSum {
  std::size_t paths = 0;
  std::size_t contours = 0;
  double length = 0;

  void Add(const CutPath& path, double pathLength);
};

struct ColorSum {
  PaintColor color;
  PathSum sum;
};

/// The paths that one rule took.
struct RuleSum {
  std::string name;  ///< of the rule; empty for the paths that no rule took
  Operation operation = Operation::Print;
  PathSum sum;
  std::vector<ColorSum> colors;  ///< all of them, the longest first, then by their texts
};

struct RuleReport {
  std::vector<RuleSum> rules;  ///< all rules in the file's order, also those that took nothing
  RuleSum untaken;             ///< the paths that no rule took
};

/// The job with the operation, the settings and the rule's name of each path as the rules say. A
/// path that no rule takes is printed: its operation is Print, and its rule is empty. Paths, their
/// contours and their order stay.
[[nodiscard]] CutJob Applied(const RuleSet& rules, CutJob job, RuleReport& report);

/// A color for people: "CutContour", "#ff00ff", "cmyk 0 100 0 0" in percent, "grey 50 %". A spot's
/// name is as the file has it.
[[nodiscard]] std::string TextOf(const PaintColor& color);

}  // namespace rastrel::cutting
