#pragma once

#include <array>

#include "rastrel/export.h"

/// The colour spaces that the library hands over, with the host's numbers.
enum COLORSPACE : int { COLORSPACE_RGB = 1, COLORSPACE_CMYK = 3 };

/// A colour of the host: its space and its components as they were set, not clipped. CMYK is
/// normally 0 to 1 each, RGB 0 to 255. A new one is RGB black.
class RASTREL_API CVKColor {
 public:
  CVKColor() = default;

  /// Sets four components.
  void SetColor(const double& c, const double& m, const double& y, const double& k,
                COLORSPACE space);
  /// Sets three components.
  void SetColor(const double& r, const double& g, const double& b, COLORSPACE space);

  /// As it was set.
  [[nodiscard]] COLORSPACE GetColorSpace() const { return m_Space; }
  /// The components in the order in which they were set; those that the space lacks are 0.
  [[nodiscard]] const std::array<double, 4>& GetComponents() const { return m_Components; }

  bool operator==(const CVKColor&) const = default;

 private:
  std::array<double, 4> m_Components{};
  COLORSPACE m_Space = COLORSPACE_RGB;
};
