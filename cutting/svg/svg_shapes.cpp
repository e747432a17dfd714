#include "cutting/svg/svg_shapes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <string_view>

#include "cutting/drawing/arc.h"
#include "cutting/drawing/maps.h"
#include "cutting/svg/svg_path.h"
#include "cutting/svg/svg_text.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/walk.h"

namespace rastrel::cutting {
namespace {

using Contours = std::vector<Contour>;

constexpr std::array<std::wstring_view, 7> Shapes{L"path", L"rect",     L"circle", L"ellipse",
                                                  L"line", L"polyline", L"polygon"};
constexpr std::size_t MaximumQuoted = 40;

// The lengths of an element; a fault is kept until it is asked for.
class Lengths {
 public:
  explicit Lengths(const XmlNode& element) : m_Element(element) {}
  double Of(std::wstring_view attribute, double whole, double otherwise = 0) {
    const auto length = SvgLengthOf(m_Element, attribute, whole, otherwise);
    if (length) return *length;
    m_Fault = length.Error();
    return 0;
  }
  [[nodiscard]] const Expected<void>& Fault() const { return m_Fault; }

 private:
  const XmlNode& m_Element;
  Expected<void> m_Fault{};
};

Contours EllipseAt(Point center, double rx, double ry, const Transform& map) {
  if (rx <= 0 || ry <= 0) return {};
  return {WholeEllipse({map.Apply(center), Turned(map, {rx, 0}), Turned(map, {0, ry})})};
}

// From the left end of the upper side on, with the y axis downward.
Contours RectangleAt(Point corner, Point size, double rx, double ry, const Transform& map) {
  if (size.x <= 0 || size.y <= 0) return {};
  const Point far{corner.x + size.x, corner.y + size.y};
  Contour contour{.start = map.Apply({corner.x + rx, corner.y}), .segments = {}, .closed = true};
  const auto line = [&](Point end) { contour.segments.push_back(LineTo(map.Apply(end))); };
  const auto round = [&](Point center, double from) {
    if (rx <= 0 || ry <= 0) return;
    AppendArc(contour, {map.Apply(center), Turned(map, {rx, 0}), Turned(map, {0, ry})}, from,
              from + std::numbers::pi / 2);
  };
  constexpr double Quarter = std::numbers::pi / 2;
  line({far.x - rx, corner.y});
  round({far.x - rx, corner.y + ry}, -Quarter);
  line({far.x, far.y - ry});
  round({far.x - rx, far.y - ry}, 0);
  line({corner.x + rx, far.y});
  round({corner.x + rx, far.y - ry}, Quarter);
  line({corner.x, corner.y + ry});
  round({corner.x + rx, corner.y + ry}, 2 * Quarter);
  return {contour};
}

Contours Rectangle(const XmlNode& element, Lengths& lengths, const SvgViewport& viewport,
                   const Transform& map) {
  const Point size{lengths.Of(L"width", viewport.width), lengths.Of(L"height", viewport.height)};
  const auto radius = [&](std::wstring_view name, double whole) {
    const std::string_view text = SvgTrimmed(xml::AttributeBytes(element, name));
    return text.empty() || text == "auto" ? -1 : lengths.Of(name, whole);
  };
  double rx = radius(L"rx", viewport.width);
  double ry = radius(L"ry", viewport.height);
  if (rx < 0) rx = std::max(ry, 0.0);
  if (ry < 0) ry = rx;
  return RectangleAt({lengths.Of(L"x", viewport.width), lengths.Of(L"y", viewport.height)}, size,
                     std::min(rx, size.x / 2), std::min(ry, size.y / 2), map);
}

Contours Line(Lengths& lengths, const SvgViewport& viewport, const Transform& map) {
  const auto at = [&](std::wstring_view x, std::wstring_view y) {
    return map.Apply({lengths.Of(x, viewport.width), lengths.Of(y, viewport.height)});
  };
  return {{.start = at(L"x1", L"y1"), .segments = {LineTo(at(L"x2", L"y2"))}}};
}

Expected<Contours> Polyline(const XmlNode& element, bool isClosed, const Transform& map) {
  const auto points = SvgPoints(xml::AttributeBytes(element, L"points"));
  if (!points) return FailureOf("the list of points can't be read");
  if (points->size() < 2) return Contours{};
  Contour contour{.start = map.Apply(points->front()), .segments = {}, .closed = isClosed};
  for (std::size_t i = 1; i < points->size(); ++i)
    contour.segments.push_back(LineTo(map.Apply((*points)[i])));
  return Contours{contour};
}

}  // namespace

double SvgViewport::Diagonal() const { return std::hypot(width, height) / std::numbers::sqrt2; }

bool IsSvgShape(const XmlNode& element) {
  return std::ranges::find(Shapes, xml::BaseName(element)) != Shapes.end();
}

Expected<double> SvgLengthOf(const XmlNode& element, std::wstring_view attribute, double whole,
                             double otherwise) {
  const std::string_view text = SvgTrimmed(xml::AttributeBytes(element, attribute));
  if (text.empty()) return otherwise;
  if (const auto length = SvgLength(text, whole)) return *length;
  return FailureOf("the length '" + std::string(text.substr(0, MaximumQuoted)) + "' of '" +
                   os::Utf8FromWide(attribute) + "' can't be read");
}

Expected<Contours> SvgShape(const XmlNode& element, const SvgViewport& viewport,
                            const Transform& map) {
  if (xml::IsNamed(element, L"path")) return SvgPath(xml::AttributeBytes(element, L"d"), map);
  if (xml::IsNamed(element, L"polygon")) return Polyline(element, true, map);
  if (xml::IsNamed(element, L"polyline")) return Polyline(element, false, map);
  Lengths lengths(element);
  Contours contours;
  const Point center{lengths.Of(L"cx", viewport.width), lengths.Of(L"cy", viewport.height)};
  if (xml::IsNamed(element, L"rect")) contours = Rectangle(element, lengths, viewport, map);
  if (xml::IsNamed(element, L"line")) contours = Line(lengths, viewport, map);
  if (xml::IsNamed(element, L"circle")) {
    const double radius = lengths.Of(L"r", viewport.Diagonal());
    contours = EllipseAt(center, radius, radius, map);
  }
  if (xml::IsNamed(element, L"ellipse"))
    contours = EllipseAt(center, lengths.Of(L"rx", viewport.width),
                         lengths.Of(L"ry", viewport.height), map);
  if (!lengths.Fault()) return lengths.Fault().Error();
  return contours;
}

}  // namespace rastrel::cutting
