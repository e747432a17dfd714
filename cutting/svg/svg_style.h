#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "cutting/drawing/drawing.h"
#include "rastrel/platform/os/expected.h"

/// How elements are painted: attributes, style sheets and "style" attributes together.
namespace rastrel::cutting {

/// The properties that are looked at, in the order of `SvgPropertyNames`.
enum class SvgProperty : std::size_t {
  Fill,
  Stroke,
  StrokeWidth,
  FillRule,
  Visibility,
  Display,
  Color,
  Opacity,
  FillOpacity,
  StrokeOpacity,
  ClipPath,
  Mask,
  Filter,
  Dashes,
  MarkerStart,
  MarkerMid,
  MarkerEnd,
  Count
};

inline constexpr std::size_t SvgPropertyCount = static_cast<std::size_t>(SvgProperty::Count);
inline constexpr std::array<std::string_view, SvgPropertyCount> SvgPropertyNames{
    "fill",   "stroke",           "stroke-width", "fill-rule",      "visibility", "display",
    "color",  "opacity",          "fill-opacity", "stroke-opacity", "clip-path",  "mask",
    "filter", "stroke-dasharray", "marker-start", "marker-mid",     "marker-end"};

/// The values that an element has of its own. Texts belong to the document or the style sheet.
class SvgDeclarations {
 public:
  /// A value that a later one of the same or a higher rank replaces.
  void Set(SvgProperty property, std::string_view value, std::uint64_t rank);
  /// The values of "name: value; ...".
  void SetAll(std::string_view declarations, std::uint64_t rank);
  /// Those of the other that have the higher rank.
  void Merge(const SvgDeclarations& other, std::uint64_t rank);
  /// Empty: none.
  [[nodiscard]] std::string_view Of(SvgProperty property) const {
    return m_Values[static_cast<std::size_t>(property)].text;
  }
  [[nodiscard]] bool IsEmpty() const;

 private:
  struct Value {
    std::string_view text;
    std::uint64_t rank = 0;
  };
  std::array<Value, SvgPropertyCount> m_Values{};
};

/// The style sheets of a document: rules for elements of a type, a class or an id, or a type with
/// one of them.
class SvgStyleSheet {
 public:
  static constexpr std::size_t MaximumSelectors = 20'000;

  /// Adds the rules of a sheet, whose line is `line`. Those that are not read are findings. Fails
  /// with the reason alone if there are too many.
  [[nodiscard]] Expected<void> Add(std::string_view sheet, int line, Findings& findings);

  /// Sets the values that the rules have for an element. `classes` are parted by whitespace.
  void Apply(std::string_view type, std::string_view classes, std::string_view id,
             SvgDeclarations& declarations) const;

 private:
  struct Selected {
    SvgDeclarations declarations;
    std::uint64_t specificity = 0;
  };
  [[nodiscard]] Expected<void> AddRule(std::string_view selectors, std::string_view declarations,
                                       int line, Findings& findings);
  void ApplyOne(const std::string& key, SvgDeclarations& declarations) const;

  std::list<std::string> m_Sheets;                    // which the values are views of
  std::unordered_map<std::string, Selected> m_Rules;  // by "type", ".class", "type#id"
  std::uint64_t m_Order = 0;
};

/// The paint that children inherit.
struct SvgPaint {
  enum class Kind { None, Color, Other } kind = Kind::None;
  PaintColor color{};
};

struct SvgStyle {
  SvgPaint fill{SvgPaint::Kind::Color, {ColorModel::Rgb, {0, 0, 0}, {}}};
  SvgPaint stroke{};
  double strokeWidth = 1;  ///< px of the element's own frame
  bool isEvenOdd = false;
  bool isVisible = true;
  PaintColor current{ColorModel::Rgb, {0, 0, 0}, {}};  ///< of "currentColor"
  bool hidesFill = false;                              ///< it is fully transparent
  bool hidesStroke = false;
};

/// The style of an element whose parent has `parent`. `diagonal` is 100 % of a line's width. Fails
/// with the reason alone for a width or a color that can't be read.
[[nodiscard]] Expected<SvgStyle> SvgStyleOf(const SvgStyle& parent,
                                            const SvgDeclarations& declarations, double diagonal);

}  // namespace rastrel::cutting
