#include "cutting/svg/svg_style.h"

#include <algorithm>
#include <utility>

#include "cutting/svg/svg_color.h"
#include "cutting/svg/svg_text.h"

namespace rastrel::cutting {
namespace {

constexpr std::uint64_t OfType = 1;
constexpr std::uint64_t OfClass = 10;
constexpr std::uint64_t OfId = 100;
constexpr std::size_t MaximumQuoted = 40;

std::optional<SvgProperty> PropertyOf(std::string_view name) {
  for (std::size_t index = 0; index < SvgPropertyCount; ++index)
    if (SvgPropertyNames.at(index) == name) return static_cast<SvgProperty>(index);
  return {};
}

// "red !important" without its end.
std::string_view Plain(std::string_view value) {
  return SvgTrimmed(value.substr(0, value.find('!')));
}

bool IsName(std::string_view text) {
  SvgScanner scanner(text);
  return !scanner.Word().empty() && scanner.AtEnd();
}

// "*", "path", ".cut", "path.cut", "#id", "path#id"; 0 for any other.
std::uint64_t SpecificityOf(std::string_view selector) {
  if (selector == "*") return 1;
  const std::size_t mark = selector.find_first_of(".#");
  const std::string_view type = selector.substr(0, mark);
  if (mark == selector.npos) return IsName(type) ? 1 + OfType : 0;
  if ((!type.empty() && !IsName(type)) || !IsName(selector.substr(mark + 1))) return 0;
  return 1 + (type.empty() ? 0 : OfType) + (selector[mark] == '.' ? OfClass : OfId);
}

std::string WithoutComments(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    const std::size_t begin = text.find("/*");
    plain += text.substr(0, begin);
    if (begin == text.npos) break;
    const std::size_t end = text.find("*/", begin + 2);
    text.remove_prefix(end == text.npos ? text.size() : end + 2);
    plain += ' ';
  }
  return plain;
}

// The length of an at-rule: to its semicolon, or to the end of its braces.
std::size_t AtRuleLength(std::string_view text) {
  int depth = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == ';' && depth == 0) return at + 1;
    if (text[at] == '{') ++depth;
    if (text[at] == '}' && --depth <= 0) return at + 1;
  }
  return text.size();
}

Expected<SvgPaint> PaintOf(std::string_view value, const SvgPaint& inherited,
                           const PaintColor& current, bool& hides) {
  if (value.empty() || SvgSame(value, "inherit")) return inherited;
  hides = false;
  if (SvgSame(value, "none")) return SvgPaint{SvgPaint::Kind::None, {}};
  if (SvgSame(value, "currentColor")) return SvgPaint{SvgPaint::Kind::Color, current};
  if (value.starts_with("url(") || SvgSame(value, "context-fill") ||
      SvgSame(value, "context-stroke"))
    return SvgPaint{SvgPaint::Kind::Other, {}};
  // A color for other devices may follow in "icc-color()".
  const std::size_t second = value.find(" icc-color");
  const auto color = SvgColorOf(value.substr(0, second));
  if (!color)
    return FailureOf("the colour '" + std::string(value.substr(0, MaximumQuoted)) +
                     "' can't be read");
  hides = color->alpha <= 0;
  return SvgPaint{SvgPaint::Kind::Color, color->color};
}

// Whether an opacity is 0, or as it was for a text that is none.
bool IsClear(std::string_view value, bool otherwise) {
  const auto opacity = SvgLength(value, 1);
  return opacity ? *opacity <= 0 : otherwise;
}

}  // namespace

void SvgDeclarations::Set(SvgProperty property, std::string_view value, std::uint64_t rank) {
  Value& present = m_Values.at(static_cast<std::size_t>(property));
  if (rank < present.rank || value.empty()) return;
  present = {value, rank};
}

void SvgDeclarations::SetAll(std::string_view declarations, std::uint64_t rank) {
  while (!declarations.empty()) {
    const std::size_t end = std::min(declarations.find(';'), declarations.size());
    const std::string_view one = declarations.substr(0, end);
    declarations.remove_prefix(std::min(end + 1, declarations.size()));
    const std::size_t colon = one.find(':');
    if (colon == one.npos) continue;
    const std::string_view name = SvgTrimmed(one.substr(0, colon));
    const std::string_view value = Plain(one.substr(colon + 1));
    if (const auto property = PropertyOf(name)) Set(*property, value, rank);
    if (name != "marker") continue;
    for (const SvgProperty marker :
         {SvgProperty::MarkerStart, SvgProperty::MarkerMid, SvgProperty::MarkerEnd})
      Set(marker, value, rank);
  }
}

void SvgDeclarations::Merge(const SvgDeclarations& other, std::uint64_t rank) {
  for (std::size_t index = 0; index < SvgPropertyCount; ++index)
    if (!other.m_Values[index].text.empty())
      Set(static_cast<SvgProperty>(index), other.m_Values[index].text,
          rank + other.m_Values[index].rank);
}

bool SvgDeclarations::IsEmpty() const {
  return std::ranges::all_of(m_Values, [](const Value& value) { return value.text.empty(); });
}

Expected<void> SvgStyleSheet::AddRule(std::string_view selectors, std::string_view declarations,
                                      int line, Findings& findings) {
  SvgDeclarations values;
  values.SetAll(declarations, ++m_Order);
  if (values.IsEmpty()) return {};
  while (!selectors.empty()) {
    const std::size_t end = std::min(selectors.find(','), selectors.size());
    const std::string_view selector = SvgTrimmed(selectors.substr(0, end));
    selectors.remove_prefix(std::min(end + 1, selectors.size()));
    const std::uint64_t specificity = SpecificityOf(selector);
    if (specificity == 0) {
      findings.Add(line, "the selector '" + std::string(selector.substr(0, MaximumQuoted)) +
                             "' of a style sheet is not read");
      continue;
    }
    Selected& selected = m_Rules[std::string(selector)];
    selected.specificity = specificity;
    selected.declarations.Merge(values, 0);
    if (m_Rules.size() > MaximumSelectors)
      return FailureOf("the style sheets have more than " + std::to_string(MaximumSelectors) +
                       " selectors");
  }
  return {};
}

Expected<void> SvgStyleSheet::Add(std::string_view sheet, int line, Findings& findings) {
  std::string_view text = m_Sheets.emplace_back(WithoutComments(sheet));
  for (text = SvgTrimmed(text); !text.empty(); text = SvgTrimmed(text)) {
    if (text.starts_with('@')) {
      findings.Add(line, "rules of a style sheet that begin with '@' are not read");
      text.remove_prefix(AtRuleLength(text));
      continue;
    }
    const std::size_t open = std::min(text.find('{'), text.size());
    const std::size_t close = std::min(text.find('}', open), text.size());
    const std::string_view body =
        text.substr(std::min(open + 1, close), close - std::min(open + 1, close));
    if (auto added = AddRule(text.substr(0, open), body, line, findings); !added) return added;
    text.remove_prefix(std::min(close + 1, text.size()));
  }
  return {};
}

void SvgStyleSheet::ApplyOne(const std::string& key, SvgDeclarations& declarations) const {
  constexpr std::uint64_t PerStep = std::uint64_t{1} << 32;  // more than there are rules
  const auto found = m_Rules.find(key);
  if (found == m_Rules.end()) return;
  declarations.Merge(found->second.declarations, found->second.specificity * PerStep);
}

void SvgStyleSheet::Apply(std::string_view type, std::string_view classes, std::string_view id,
                          SvgDeclarations& declarations) const {
  if (m_Rules.empty()) return;
  ApplyOne("*", declarations);
  ApplyOne(std::string(type), declarations);
  for (classes = SvgTrimmed(classes); !classes.empty(); classes = SvgTrimmed(classes)) {
    const std::size_t end = std::min(classes.find_first_of(" \t\r\n\f"), classes.size());
    const std::string name = "." + std::string(classes.substr(0, end));
    ApplyOne(name, declarations);
    ApplyOne(std::string(type) + name, declarations);
    classes.remove_prefix(end);
  }
  if (id.empty()) return;
  ApplyOne("#" + std::string(id), declarations);
  ApplyOne(std::string(type) + "#" + std::string(id), declarations);
}

Expected<SvgStyle> SvgStyleOf(const SvgStyle& parent, const SvgDeclarations& declarations,
                              double diagonal) {
  SvgStyle style = parent;
  const auto of = [&](SvgProperty property) { return declarations.Of(property); };
  if (const auto color = SvgColorOf(of(SvgProperty::Color))) style.current = color->color;
  auto fill = PaintOf(of(SvgProperty::Fill), parent.fill, style.current, style.hidesFill);
  if (!fill) return fill.Error();
  style.fill = *std::move(fill);
  auto stroke = PaintOf(of(SvgProperty::Stroke), parent.stroke, style.current, style.hidesStroke);
  if (!stroke) return stroke.Error();
  style.stroke = *std::move(stroke);
  style.hidesFill = IsClear(of(SvgProperty::FillOpacity), style.hidesFill);
  style.hidesStroke = IsClear(of(SvgProperty::StrokeOpacity), style.hidesStroke);
  const std::string_view width = of(SvgProperty::StrokeWidth);
  if (!width.empty() && !SvgSame(width, "inherit")) {
    const auto length = SvgLength(width, diagonal);
    if (!length || *length < 0)
      return FailureOf("the line width '" + std::string(width.substr(0, MaximumQuoted)) +
                       "' can't be read");
    style.strokeWidth = *length;
  }
  const std::string_view rule = of(SvgProperty::FillRule);
  if (rule == "evenodd" || rule == "nonzero") style.isEvenOdd = rule == "evenodd";
  const std::string_view visibility = of(SvgProperty::Visibility);
  if (!visibility.empty() && visibility != "inherit") style.isVisible = visibility == "visible";
  return style;
}

}  // namespace rastrel::cutting
