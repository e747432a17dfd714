#pragma once

#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cutting/job/cut_job.h"
#include "cutting/rules/color_difference.h"
#include "rastrel/platform/os/expected.h"

/// Rule files: which paint means which operation (docs/formats/cut-rules.md). Lengths are
/// millimetres.
namespace rastrel::cutting {

inline constexpr std::size_t MaximumRuleBytes = 256 * 1024;
inline constexpr std::size_t MaximumRules = 256;
/// Patterns, colors or kinds of one condition.
inline constexpr std::size_t MaximumAlternatives = 64;
/// Bytes of a name, a pattern or another text.
inline constexpr std::size_t MaximumRuleText = 255;

/// A process color of a rule.
struct RuleColor {
  PaintColor color;
  LabColor lab;
};

/// Conditions and their operation. A paint has to meet all conditions; of one with several
/// alternatives it has to meet one. Spots and colors are alternatives of one condition, the color.
struct Rule {
  std::string name;
  int line = 0;                       ///< of the file, from 1
  std::vector<std::string> spots{};   ///< patterns of separations' names
  std::vector<RuleColor> colors{};    ///< RGB takes RGB and gray paints, CMYK takes CMYK paints
  double difference = 2;              ///< CIEDE2000 up to which a color is taken
  std::vector<std::string> layers{};  ///< patterns of layers' names
  bool takesStrokes = true;
  bool takesFills = true;
  bool takesText = true;
  double minimumWidth = 0;  ///< of a stroke
  double maximumWidth = std::numeric_limits<double>::infinity();
  Operation operation = Operation::Print;
  ToolSettings settings{};  ///< the file's defaults where the rule has none
};

/// The section "defaults". These values hold without a rule file, too.
struct RuleDefaults {
  double tolerance = 0.02;  ///< how far a line may lie beside the curve that it replaces
  double joining = 0.1;     ///< how far apart the ends may be that healing joins
  double residual = 0.3;    ///< up to which a mark fits its measured place
  double kerf = 0;          ///< of rules without one
  int bridges = 0;          ///< of rules without them
  double bridgeWidth = 0;
};

/// The rules of a file, in their order. Used by one thread at a time, since it keeps decisions.
class RuleSet {
 public:
  RuleSet() = default;
  RuleSet(std::string description, RuleDefaults defaults, std::vector<Rule> rules);

  [[nodiscard]] const std::string& Description() const { return m_Description; }
  [[nodiscard]] const RuleDefaults& Defaults() const { return m_Defaults; }
  [[nodiscard]] const std::vector<Rule>& Rules() const { return m_Rules; }

  /// The first rule that the paint meets, or null. Valid as long as the set. Colors that come again
  /// cost one look-up.
  [[nodiscard]] const Rule* RuleFor(const Paint& paint) const;

 private:
  [[nodiscard]] const std::vector<bool>& RulesOfColor(const PaintColor& color) const;

  std::string m_Description;
  RuleDefaults m_Defaults;
  std::vector<Rule> m_Rules;
  // For each color the rules whose condition of color it meets.
  mutable std::unordered_map<std::string, std::vector<bool>> m_ByColor;
};

/// Reads a rule file. `name` is its name in failures, which have the line and the column of the
/// first fault in the file, and the code BadInput. Strict: an unknown key, a wrong type and a value
/// outside its range are failures.
[[nodiscard]] Expected<RuleSet> ReadRules(std::string_view text, const std::string& name);

/// A key of the file.
struct RuleKey {
  std::string_view section;  ///< "file", "defaults" or "rule"
  std::string_view key;
  std::string_view value;         ///< kind of its value, in words
  std::string_view defaultValue;  ///< as in the file; empty: none
};

/// All keys, in the order of the format's page.
[[nodiscard]] std::span<const RuleKey> RuleKeys();

}  // namespace rastrel::cutting
