#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <utility>

#include "cutting/rules/rule_text.h"
#include "cutting/rules/rules.h"
#include "cutting/toml/toml_library.h"
#include "cutting/toml/toml_text.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cutting {
namespace {

constexpr std::array Keys{
    RuleKey{"file", "description", "text", ""},
    RuleKey{"file", "defaults", "table", ""},
    RuleKey{"file", "rule", "tables", ""},
    RuleKey{"defaults", "tolerance", "length", "0.02 mm"},
    RuleKey{"defaults", "joining", "length", "0.1 mm"},
    RuleKey{"defaults", "residual", "length", "0.3 mm"},
    RuleKey{"defaults", "kerf", "length", "0 mm"},
    RuleKey{"defaults", "bridges", "bridges", "none"},
    RuleKey{"rule", "name", "text", ""},
    RuleKey{"rule", "spot", "patterns", ""},
    RuleKey{"rule", "rgb", "colours", ""},
    RuleKey{"rule", "cmyk", "colours", ""},
    RuleKey{"rule", "difference", "number", "2"},
    RuleKey{"rule", "paint", "kinds", ""},
    RuleKey{"rule", "line-width", "range", ""},
    RuleKey{"rule", "layer", "patterns", ""},
    RuleKey{"rule", "operation", "operation", ""},
    RuleKey{"rule", "tool", "text", ""},
    RuleKey{"rule", "speed", "speed", ""},
    RuleKey{"rule", "force", "number", ""},
    RuleKey{"rule", "passes", "whole number", "1"},
    RuleKey{"rule", "order", "whole number", "0"},
    RuleKey{"rule", "kerf", "length", "of the defaults"},
    RuleKey{"rule", "overcut", "length", "0 mm"},
    RuleKey{"rule", "lead-in", "length", "0 mm"},
    RuleKey{"rule", "bridges", "bridges", "of the defaults"},
};

constexpr std::array<std::string_view, 9> SettingKeys{
    "tool", "speed", "force", "passes", "order", "kerf", "overcut", "lead-in", "bridges"};
constexpr std::array<std::string_view, 3> Kinds{"stroke", "fill", "text"};

struct Range {
  double least;
  double greatest;
};
constexpr Range Tolerances{0.0001, 10};
constexpr Range Joinings{0, 10};
constexpr Range Residuals{0.001, 100};
constexpr Range Widths{0, 10000};
constexpr Range Kerfs{0, 50};
constexpr Range Ways{0, 1000};
constexpr Range BridgeWidths{0.001, 1000};
constexpr Range BridgeCounts{1, 999};
constexpr Range Differences{0, 100};
constexpr Range Speeds{0.001, 10000};
constexpr Range Forces{0, 100000};
constexpr Range Passes{1, 99};
constexpr Range Orders{-9999, 9999};

std::string Quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

std::string TextOf(Range range, std::string_view unit) {
  const std::string suffix = unit.empty() ? "" : " " + std::string(unit);
  return os::ShortDecimal(range.least, 4) + " to " + os::ShortDecimal(range.greatest, 4) + suffix;
}

// Reads on after a fault, and keeps that which comes first in the file.
class RuleReader {
 public:
  explicit RuleReader(const std::string& name) : m_Name(name) {}

  Expected<RuleSet> Read(const toml::table& file);

 private:
  void Fault(const toml::source_region& place, std::string why);
  void Fault(const toml::node& node, std::string why) { Fault(node.source(), std::move(why)); }
  void CheckKeys(const toml::table& table, std::string_view section);

  std::string Text(const toml::node& node, std::string_view key);
  std::optional<double> Measure(const toml::node& node, std::string_view key, Range range,
                                std::span<const Unit> units);
  std::optional<double> Number(const toml::node& node, std::string_view key, Range range);
  std::optional<int> Whole(const toml::node& node, std::string_view key, Range range);
  void Length(const toml::table& table, std::string_view key, Range range, double& value);
  void Bridges(const toml::table& table, int& count, double& width);
  std::vector<std::string> Texts(const toml::table& table, std::string_view key);

  RuleDefaults ReadDefaults(const toml::table& table);
  Rule ReadRule(const toml::table& table, const RuleDefaults& defaults);
  void ReadName(const toml::table& table, Rule& rule);
  void ReadColors(const toml::table& table, Rule& rule);
  void ReadColor(const toml::node& node, std::string_view key, ColorModel model, Rule& rule);
  std::vector<double> Components(const toml::array& parts, std::string_view key, ColorModel model);
  void ReadKinds(const toml::table& table, Rule& rule);
  void ReadWidths(const toml::table& table, Rule& rule);
  void ReadOperation(const toml::table& table, Rule& rule);
  void ReadSettings(const toml::table& table, const RuleDefaults& defaults, Rule& rule);

  const std::string& m_Name;
  std::set<std::string> m_Names;  // of the rules so far
  Expected<void> m_Result;
};

void RuleReader::Fault(const toml::source_region& place, std::string why) {
  const int line = static_cast<int>(place.begin.line);
  const int column = static_cast<int>(place.begin.column);
  if (!m_Result) {
    const Failure& first = m_Result.Error();
    if (std::pair(first.line, first.column) <= std::pair(line, column)) return;
  }
  Failure failure = FailureOf(std::move(why), FailureCode::BadInput);
  failure.where = m_Name;
  failure.line = line;
  failure.column = column;
  m_Result = std::move(failure);
}

void RuleReader::CheckKeys(const toml::table& table, std::string_view section) {
  std::vector<std::string_view> known;
  for (const RuleKey& key : Keys)
    if (key.section == section) known.push_back(key.key);
  for (const auto& [key, value] : table)
    if (std::ranges::find(known, key.str()) == known.end())
      Fault(key.source(), "unknown key " + Quoted(key.str()) + Suggestion(key.str(), known));
}

std::string RuleReader::Text(const toml::node& node, std::string_view key) {
  const auto* text = node.as_string();
  if (text == nullptr) {
    Fault(node, Quoted(key) + " must be a text in quotes");
  } else if (text->get().empty() || text->get().size() > MaximumRuleText) {
    Fault(node, Quoted(key) + " must have 1 to " + std::to_string(MaximumRuleText) + " bytes");
  } else {
    return text->get();
  }
  return "";
}

std::optional<double> RuleReader::Measure(const toml::node& node, std::string_view key, Range range,
                                          std::span<const Unit> units) {
  std::optional<double> value;
  if (node.is_number()) value = node.value<double>();
  if (const auto* text = node.as_string()) value = Measured(text->get(), units);
  if (!value) {
    std::string names;
    for (const Unit& unit : units) names += (names.empty() ? "" : ", ") + std::string(unit.name);
    Fault(node, Quoted(key) + " must be a number, or a text of a number and one of " + names);
  } else if (!(*value >= range.least && *value <= range.greatest)) {
    Fault(node, Quoted(key) + " must be " + TextOf(range, units.front().name));
  } else {
    return value;
  }
  return std::nullopt;
}

std::optional<double> RuleReader::Number(const toml::node& node, std::string_view key,
                                         Range range) {
  const auto value = node.is_number() ? node.value<double>() : std::nullopt;
  if (value && *value >= range.least && *value <= range.greatest) return value;
  Fault(node, Quoted(key) + " must be a number, " + TextOf(range, ""));
  return std::nullopt;
}

std::optional<int> RuleReader::Whole(const toml::node& node, std::string_view key, Range range) {
  if (const auto* value = node.as_integer()) {
    const auto number = static_cast<double>(value->get());
    if (number >= range.least && number <= range.greatest) return static_cast<int>(number);
  }
  Fault(node, Quoted(key) + " must be a whole number, " + TextOf(range, ""));
  return std::nullopt;
}

void RuleReader::Length(const toml::table& table, std::string_view key, Range range,
                        double& value) {
  if (const toml::node* node = table.get(key))
    value = Measure(*node, key, range, LengthUnits()).value_or(value);
}

void RuleReader::Bridges(const toml::table& table, int& count, double& width) {
  const toml::node* node = table.get("bridges");
  if (node == nullptr) return;
  if (const auto* text = node->as_string(); text != nullptr && text->get() == "none") {
    count = 0;
    width = 0;
    return;
  }
  const toml::table* parts = node->as_table();
  if (parts == nullptr || parts->size() != 2 || !parts->contains("count") ||
      !parts->contains("width")) {
    Fault(*node, "'bridges' must be { count = 4, width = \"0.5 mm\" } or \"none\"");
    return;
  }
  count = Whole(*parts->get("count"), "count", BridgeCounts).value_or(0);
  width = Measure(*parts->get("width"), "width", BridgeWidths, LengthUnits()).value_or(0);
}

std::vector<std::string> RuleReader::Texts(const toml::table& table, std::string_view key) {
  std::vector<std::string> texts;
  const toml::node* node = table.get(key);
  if (node == nullptr) return texts;
  const toml::array* several = node->as_array();
  if (several == nullptr) {
    texts.push_back(Text(*node, key));
  } else if (several->empty() || several->size() > MaximumAlternatives) {
    Fault(*node, Quoted(key) + " must have 1 to " + std::to_string(MaximumAlternatives) + " texts");
  } else {
    for (const toml::node& each : *several) texts.push_back(Text(each, key));
  }
  return texts;
}

RuleDefaults RuleReader::ReadDefaults(const toml::table& table) {
  RuleDefaults defaults;
  CheckKeys(table, "defaults");
  Length(table, "tolerance", Tolerances, defaults.tolerance);
  Length(table, "joining", Joinings, defaults.joining);
  Length(table, "residual", Residuals, defaults.residual);
  Length(table, "kerf", Kerfs, defaults.kerf);
  Bridges(table, defaults.bridges, defaults.bridgeWidth);
  return defaults;
}

void RuleReader::ReadName(const toml::table& table, Rule& rule) {
  const toml::node* node = table.get("name");
  if (node == nullptr) {
    Fault(table, "this rule has no name");
    return;
  }
  rule.name = Text(*node, "name");
  if (!m_Names.insert(rule.name).second && !rule.name.empty())
    Fault(*node, "two rules have the name " + Quoted(rule.name));
}

std::vector<double> RuleReader::Components(const toml::array& parts, std::string_view key,
                                           ColorModel model) {
  const std::size_t count = model == ColorModel::Rgb ? 3 : 4;
  const double whole = model == ColorModel::Rgb ? 255 : 100;
  std::vector<double> components;
  if (parts.size() != count) {
    Fault(parts, Quoted(key) + " must have " + std::to_string(count) + " numbers");
    return components;
  }
  for (const toml::node& part : parts)
    components.push_back(Number(part, key, {0, whole}).value_or(0) / whole);
  return components;
}

void RuleReader::ReadColor(const toml::node& node, std::string_view key, ColorModel model,
                           Rule& rule) {
  PaintColor color{.model = model};
  if (const auto* text = node.as_string(); text != nullptr && model == ColorModel::Rgb) {
    color.components = HexColor(text->get()).value_or(std::vector<double>{});
    if (color.components.empty()) Fault(node, "'rgb' must be \"#rrggbb\" or three numbers");
  } else if (const toml::array* parts = node.as_array()) {
    color.components = Components(*parts, key, model);
  } else {
    Fault(node, model == ColorModel::Rgb ? "'rgb' must be \"#rrggbb\" or three numbers"
                                         : "'cmyk' must be four numbers");
  }
  if (const auto lab = LabOf(color)) rule.colors.push_back({std::move(color), *lab});
}

void RuleReader::ReadColors(const toml::table& table, Rule& rule) {
  constexpr std::array Models{std::pair{"rgb", ColorModel::Rgb},
                              std::pair{"cmyk", ColorModel::Cmyk}};
  for (const auto& [key, model] : Models) {
    const toml::node* node = table.get(key);
    if (node == nullptr) continue;
    const toml::array* several = node->as_array();
    // An array of numbers is one color, any other array several.
    if (several == nullptr || (!several->empty() && several->front().is_number())) {
      ReadColor(*node, key, model, rule);
    } else if (several->empty() || several->size() > MaximumAlternatives) {
      Fault(*node,
            Quoted(key) + " must have 1 to " + std::to_string(MaximumAlternatives) + " colours");
    } else {
      for (const toml::node& each : *several) ReadColor(each, key, model, rule);
    }
  }
  const toml::node* difference = table.get("difference");
  if (difference == nullptr) return;
  if (!table.contains("rgb") && !table.contains("cmyk"))
    Fault(*difference, "'difference' needs 'rgb' or 'cmyk'");
  rule.difference = Number(*difference, "difference", Differences).value_or(rule.difference);
}

void RuleReader::ReadKinds(const toml::table& table, Rule& rule) {
  if (!table.contains("paint")) return;
  rule.takesStrokes = rule.takesFills = rule.takesText = false;
  for (const std::string& kind : Texts(table, "paint")) {
    if (kind == Kinds[0]) {
      rule.takesStrokes = true;
    } else if (kind == Kinds[1]) {
      rule.takesFills = true;
    } else if (kind == Kinds[2]) {
      rule.takesText = true;
    } else if (!kind.empty()) {
      Fault(*table.get("paint"), "a paint is 'stroke', 'fill' or 'text', and not " + Quoted(kind) +
                                     Suggestion(kind, {Kinds.begin(), Kinds.end()}));
    }
  }
}

void RuleReader::ReadWidths(const toml::table& table, Rule& rule) {
  const toml::node* node = table.get("line-width");
  if (node == nullptr) return;
  const toml::table* range = node->as_table();
  const std::size_t limits =
      range == nullptr ? 0
                       : (range->contains("min") ? 1U : 0U) + (range->contains("max") ? 1U : 0U);
  if (limits == 0 || limits != range->size()) {
    Fault(*node, "'line-width' must be { min = ..., max = ... } or one of the two");
    return;
  }
  Length(*range, "min", Widths, rule.minimumWidth);
  Length(*range, "max", Widths, rule.maximumWidth);
  if (rule.minimumWidth > rule.maximumWidth)
    Fault(*node, "'min' of 'line-width' is above its 'max'");
  if (table.contains("paint") && (rule.takesFills || rule.takesText))
    Fault(*node, "'line-width' goes with the paint 'stroke' alone");
  // Fills and text have no width of a line.
  rule.takesFills = rule.takesText = false;
}

void RuleReader::ReadOperation(const toml::table& table, Rule& rule) {
  const toml::node* node = table.get("operation");
  if (node == nullptr) {
    Fault(table, "this rule has no operation");
    return;
  }
  const std::string name = Text(*node, "operation");
  if (name.empty()) return;
  if (const auto operation = OperationOf(name)) {
    rule.operation = *operation;
    return;
  }
  std::vector<std::string_view> names;
  for (int i = 0; i <= static_cast<int>(Operation::Ignore); ++i)
    names.push_back(NameOf(static_cast<Operation>(i)));
  Fault(*node, "unknown operation " + Quoted(name) + Suggestion(name, names));
}

void RuleReader::ReadSettings(const toml::table& table, const RuleDefaults& defaults, Rule& rule) {
  if (table.contains("operation") && !HasTool(rule.operation)) {
    for (const std::string_view key : SettingKeys)
      if (const toml::node* node = table.get(key))
        Fault(*node,
              Quoted(key) + " has no effect with the operation " + Quoted(NameOf(rule.operation)));
    return;
  }
  ToolSettings& settings = rule.settings;
  settings.kerf = defaults.kerf;
  settings.bridges = defaults.bridges;
  settings.bridgeWidth = defaults.bridgeWidth;
  if (const toml::node* node = table.get("tool")) settings.tool = Text(*node, "tool");
  if (const toml::node* node = table.get("speed"))
    settings.speed = Measure(*node, "speed", Speeds, SpeedUnits());
  if (const toml::node* node = table.get("force")) settings.force = Number(*node, "force", Forces);
  if (const toml::node* node = table.get("passes"))
    settings.passes = Whole(*node, "passes", Passes).value_or(1);
  if (const toml::node* node = table.get("order"))
    settings.order = Whole(*node, "order", Orders).value_or(0);
  Length(table, "kerf", Kerfs, settings.kerf);
  Length(table, "overcut", Ways, settings.overcut);
  Length(table, "lead-in", Ways, settings.leadIn);
  Bridges(table, settings.bridges, settings.bridgeWidth);
}

Rule RuleReader::ReadRule(const toml::table& table, const RuleDefaults& defaults) {
  Rule rule;
  rule.line = static_cast<int>(table.source().begin.line);
  CheckKeys(table, "rule");
  ReadName(table, rule);
  rule.spots = Texts(table, "spot");
  ReadColors(table, rule);
  ReadKinds(table, rule);
  ReadWidths(table, rule);
  rule.layers = Texts(table, "layer");
  ReadOperation(table, rule);
  ReadSettings(table, defaults, rule);
  return rule;
}

Expected<RuleSet> RuleReader::Read(const toml::table& file) {
  std::string description;
  RuleDefaults defaults;
  std::vector<Rule> rules;
  CheckKeys(file, "file");
  if (const toml::node* node = file.get("description")) description = Text(*node, "description");
  if (const toml::node* node = file.get("defaults")) {
    const toml::table* table = node->as_table();
    if (table != nullptr)
      defaults = ReadDefaults(*table);
    else
      Fault(*node, "'defaults' must be a section, [defaults]");
  }
  if (const toml::node* node = file.get("rule")) {
    const toml::array* tables = node->as_array();
    if (tables == nullptr || !tables->is_array_of_tables()) {
      Fault(*node, "each rule must be a section, [[rule]]");
    } else if (tables->size() > MaximumRules) {
      Fault((*tables)[MaximumRules],
            "a file has " + std::to_string(MaximumRules) + " rules at most");
    } else {
      for (const toml::node& each : *tables) rules.push_back(ReadRule(*each.as_table(), defaults));
    }
  }
  if (!m_Result) return m_Result.Error();
  if (rules.empty()) {
    Failure failure = FailureOf("the file has no rule", FailureCode::BadInput);
    failure.where = m_Name;
    failure.line = failure.column = 1;
    return failure;
  }
  return RuleSet(std::move(description), defaults, std::move(rules));
}

}  // namespace

Expected<RuleSet> ReadRules(std::string_view text, const std::string& name) {
  if (text.size() > MaximumRuleBytes) {
    Failure failure =
        FailureOf("a rule file has " + std::to_string(MaximumRuleBytes) + " bytes at most",
                  FailureCode::BadInput);
    failure.where = name;
    return failure;
  }
  if (auto shallow = CheckTomlDepth(text, name); !shallow) return shallow.Error();
  const toml::parse_result parsed = toml::parse(text);
  if (parsed) return RuleReader(name).Read(parsed.table());
  Failure failure = FailureOf(std::string(parsed.error().description()), FailureCode::BadInput);
  failure.where = name;
  failure.line = static_cast<int>(parsed.error().source().begin.line);
  failure.column = static_cast<int>(parsed.error().source().begin.column);
  return failure;
}

std::span<const RuleKey> RuleKeys() { return Keys; }

}  // namespace rastrel::cutting
