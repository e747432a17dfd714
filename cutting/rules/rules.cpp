#include "cutting/rules/rules.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "cutting/rules/name_pattern.h"

namespace rastrel::cutting {
namespace {

// Widths come through a page's matrix in single precision, so that 0.25 pt is not quite that.
constexpr double WidthSlack = 0.0005;
// More colors than that have pictures, not drawings: the cache begins anew.
constexpr std::size_t MaximumKeptColors = 4096;
// CIEDE2000 is never less than the difference in lightness divided by this.
constexpr double LightnessDivisor = 1.75;

bool MeetsKind(const Rule& rule, Paint::Kind kind) {
  switch (kind) {
    case Paint::Kind::Stroke: return rule.takesStrokes;
    case Paint::Kind::Fill:
    case Paint::Kind::EvenOddFill: return rule.takesFills;
    case Paint::Kind::Text: return rule.takesText;
  }
  return false;
}

bool MeetsWidth(const Rule& rule, const Paint& paint) {
  if (paint.kind != Paint::Kind::Stroke) return true;
  return paint.lineWidth >= rule.minimumWidth - WidthSlack &&
         paint.lineWidth <= rule.maximumWidth + WidthSlack;
}

bool FitsOne(std::string_view name, const std::vector<std::string>& patterns) {
  return std::ranges::any_of(patterns,
                             [&](const std::string& each) { return FitsPattern(name, each); });
}

bool AreComparable(ColorModel one, ColorModel other) {
  return (one == ColorModel::Cmyk) == (other == ColorModel::Cmyk);
}

bool MeetsColor(const Rule& rule, const PaintColor& color, const std::optional<LabColor>& lab) {
  if (rule.spots.empty() && rule.colors.empty()) return true;
  if (color.model == ColorModel::Spot) return FitsOne(color.name, rule.spots);
  if (!lab) return false;
  return std::ranges::any_of(rule.colors, [&](const RuleColor& each) {
    if (!AreComparable(each.color.model, color.model)) return false;
    const double lightness = std::abs(each.lab.lightness - lab->lightness);
    if (lightness > rule.difference * LightnessDivisor) return false;
    return ColorDifference(each.lab, *lab) <= rule.difference;
  });
}

std::string KeyOf(const PaintColor& color) {
  std::string key(1, static_cast<char>('0' + static_cast<int>(color.model)));
  if (color.model == ColorModel::Spot) return key += color.name;
  const std::size_t bytes = color.components.size() * sizeof(double);
  key.resize(1 + bytes);
  if (bytes > 0) std::memcpy(key.data() + 1, color.components.data(), bytes);
  return key;
}

}  // namespace

RuleSet::RuleSet(std::string description, RuleDefaults defaults, std::vector<Rule> rules)
    : m_Description(std::move(description)), m_Defaults(defaults), m_Rules(std::move(rules)) {}

const std::vector<bool>& RuleSet::RulesOfColor(const PaintColor& color) const {
  std::string key = KeyOf(color);
  if (const auto found = m_ByColor.find(key); found != m_ByColor.end()) return found->second;
  const auto lab = LabOf(color);
  std::vector<bool> meets;
  meets.reserve(m_Rules.size());
  for (const Rule& rule : m_Rules) meets.push_back(MeetsColor(rule, color, lab));
  if (m_ByColor.size() >= MaximumKeptColors) m_ByColor.clear();
  return m_ByColor.emplace(std::move(key), std::move(meets)).first->second;
}

const Rule* RuleSet::RuleFor(const Paint& paint) const {
  const std::vector<bool>& meetsColor = RulesOfColor(paint.color);
  for (std::size_t i = 0; i < m_Rules.size(); ++i) {
    const Rule& rule = m_Rules[i];
    if (meetsColor[i] && MeetsKind(rule, paint.kind) && MeetsWidth(rule, paint) &&
        (rule.layers.empty() || FitsOne(paint.layer, rule.layers)))
      return &rule;
  }
  return nullptr;
}

}  // namespace rastrel::cutting
