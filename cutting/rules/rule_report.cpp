#include "cutting/rules/rule_report.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <utility>

#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/hex.h"

namespace rastrel::cutting {
namespace {

double LengthOf(const CutPath& path) {
  double length = 0;
  for (const Contour& contour : path.contours) length += LengthOf(contour);
  return length;
}

double Clamped(double component) { return component > 0 ? std::min(component, 1.0) : 0.0; }

std::string Percent(double component) { return os::ShortDecimal(Clamped(component) * 100, 1); }

// The sums of one rule, by the colors' texts: colors that a person can't tell apart are one.
class Summing {
 public:
  void Add(const CutPath& path) {
    const double length = LengthOf(path);
    m_Sum.Add(path, length);
    const PaintColor& color = path.paint.color;
    const char model = static_cast<char>('0' + static_cast<int>(color.model));
    auto& entry = m_Colors[model + TextOf(color)];
    if (entry.sum.paths == 0) entry.color = path.paint.color;
    entry.sum.Add(path, length);
  }

  [[nodiscard]] RuleSum Result() const {
    std::vector<std::pair<std::string, ColorSum>> sorted(m_Colors.begin(), m_Colors.end());
    std::ranges::sort(sorted, [](const auto& one, const auto& other) {
      if (one.second.sum.length != other.second.sum.length)
        return one.second.sum.length > other.second.sum.length;
      return one.first < other.first;
    });
    RuleSum result;
    result.sum = m_Sum;
    for (auto& [text, color] : sorted) result.colors.push_back(std::move(color));
    return result;
  }

 private:
  PathSum m_Sum;
  std::unordered_map<std::string, ColorSum> m_Colors;
};

}  // namespace

void PathSum::Add(const CutPath& path, double pathLength) {
  ++paths;
  contours += path.contours.size();
  length += pathLength;
}

CutJob Applied(const RuleSet& rules, CutJob job, RuleReport& report) {
  std::vector<Summing> sums(rules.Rules().size());
  Summing untaken;
  for (CutPath& path : job.paths) {
    const Rule* rule = rules.RuleFor(path.paint);
    path.operation = rule == nullptr ? Operation::Print : rule->operation;
    path.settings = rule == nullptr ? ToolSettings{} : rule->settings;
    path.rule = rule == nullptr ? "" : rule->name;
    Summing& sum =
        rule == nullptr ? untaken : sums[static_cast<std::size_t>(rule - rules.Rules().data())];
    sum.Add(path);
  }
  report = {};
  for (std::size_t i = 0; i < sums.size(); ++i) {
    report.rules.push_back(sums[i].Result());
    report.rules.back().name = rules.Rules()[i].name;
    report.rules.back().operation = rules.Rules()[i].operation;
  }
  report.untaken = untaken.Result();
  return job;
}

std::string TextOf(const PaintColor& color) {
  std::string text;
  switch (color.model) {
    case ColorModel::Spot: return color.name;
    case ColorModel::Gray:
      return "grey " + (color.components.empty() ? "0" : Percent(color.components[0])) + " %";
    case ColorModel::Rgb:
      text = "#";
      for (const double part : color.components)
        os::AppendHex(text, static_cast<unsigned char>(std::lround(Clamped(part) * 255)));
      return text;
    case ColorModel::Cmyk:
      text = "cmyk";
      for (const double part : color.components) text += " " + Percent(part);
      return text;
  }
  return text;
}

}  // namespace rastrel::cutting
