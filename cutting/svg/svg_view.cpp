#include "cutting/svg/svg_view.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "cutting/svg/svg_text.h"
#include "rastrel/xml/walk.h"

namespace rastrel::cutting {
namespace {

struct ViewBox {
  Point corner;
  double width = 0;
  double height = 0;
};

Expected<std::optional<ViewBox>> ViewBoxOf(const XmlNode& element) {
  const std::string_view text = SvgTrimmed(xml::AttributeBytes(element, L"viewBox"));
  if (text.empty()) return std::optional<ViewBox>{};
  SvgScanner scanner(text);
  std::array<double, 4> values{};
  for (double& value : values) {
    const auto number = scanner.Number();
    if (!number) return FailureOf("the viewBox has to be four numbers");
    value = *number;
    scanner.SkipComma();
  }
  if (!scanner.AtEnd()) return FailureOf("the viewBox has to be four numbers");
  if (values[2] <= 0 || values[3] <= 0)
    return FailureOf("the width and the height of the viewBox have to be above 0");
  return std::optional<ViewBox>(ViewBox{{values[0], values[1]}, values[2], values[3]});
}

// 0, half or all of the room that is left, by "Min", "Mid" or "Max".
double Part(std::string_view word) { return word == "Min" ? 0 : word == "Max" ? 1 : 0.5; }

}  // namespace

Expected<SvgView> SvgViewOf(const XmlNode& element, const SvgViewport& size) {
  const auto box = ViewBoxOf(element);
  if (!box) return box.Error();
  if (!*box) return SvgView{.map = {}, .viewport = size};
  const ViewBox& view = **box;
  double x = size.width / view.width;
  double y = size.height / view.height;
  std::string_view aspect = SvgTrimmed(xml::AttributeBytes(element, L"preserveAspectRatio"));
  Point place;
  if (!aspect.starts_with("none")) {
    const bool slices = aspect.ends_with("slice");
    x = y = slices ? std::max(x, y) : std::min(x, y);
    if (aspect.size() < 8) aspect = "xMidYMid";
    place = {(size.width - view.width * x) * Part(aspect.substr(1, 3)),
             (size.height - view.height * y) * Part(aspect.substr(5, 3))};
  }
  return SvgView{.map = {x, 0, 0, y, place.x - view.corner.x * x, place.y - view.corner.y * y},
                 .viewport = {view.width, view.height}};
}

Expected<SvgViewport> SvgPageSize(const XmlNode& root, bool& isGuess) {
  const auto box = ViewBoxOf(root);
  if (!box) return box.Error();
  const SvgViewport inner = *box ? SvgViewport{(*box)->width, (*box)->height} : SvgViewport{};
  const auto isGiven = [&](std::wstring_view name) {
    const std::string_view text = SvgTrimmed(xml::AttributeBytes(root, name));
    return !text.empty() && !text.ends_with('%') && text != "auto";
  };
  const bool hasWidth = isGiven(L"width");
  const bool hasHeight = isGiven(L"height");
  const auto width = hasWidth ? SvgLengthOf(root, L"width", 0) : Expected<double>(inner.width);
  if (!width) return width.Error();
  const auto height = hasHeight ? SvgLengthOf(root, L"height", 0) : Expected<double>(inner.height);
  if (!height) return height.Error();
  if (*width < 0 || *height < 0) return FailureOf("the drawing's size is below 0");
  isGuess = !hasWidth && !hasHeight;
  // One side alone scales the other.
  if (hasWidth != hasHeight && *box && hasWidth)
    return SvgViewport{*width, *width * inner.height / inner.width};
  if (hasWidth != hasHeight && *box)
    return SvgViewport{*height * inner.width / inner.height, *height};
  return SvgViewport{*width, *height};
}

}  // namespace rastrel::cutting
