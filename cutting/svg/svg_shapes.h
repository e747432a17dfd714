#pragma once

#include <vector>

#include "cutting/job/contour.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/xml/node.h"

namespace rastrel::cutting {

/// The size that per cent are of, in px.
struct SvgViewport {
  double width = 0;
  double height = 0;
  /// 100 % of a length that is neither wide nor high.
  [[nodiscard]] double Diagonal() const;
};

/// Whether elements of that name are shapes.
[[nodiscard]] bool IsSvgShape(const XmlNode& element);

/// The mapped contours of a shape; none where it is not drawn, as a circle with the radius 0. Fails
/// with the reason alone for values that can't be read.
[[nodiscard]] Expected<std::vector<Contour>> SvgShape(const XmlNode& element,
                                                      const SvgViewport& viewport,
                                                      const Transform& map);

/// The value of an attribute as a length in px, and `otherwise` without one. Fails with the reason
/// alone.
[[nodiscard]] Expected<double> SvgLengthOf(const XmlNode& element, std::wstring_view attribute,
                                           double whole, double otherwise = 0);

}  // namespace rastrel::cutting
