#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "rastrel/export.h"

class CStream;

/// The color spaces that the library hands over, with the host's numbers.
enum COLORSPACE : int { COLORSPACE_RGB = 1, COLORSPACE_CMYK = 3 };

/// A color of the host: its space and its components as they were set, not clipped. CMYK is
/// normally 0 to 1 each, RGB 0 to 255. A new one is RGB black.
class RASTREL_API CVKColor {
 public:
  CVKColor() = default;
  /// A color reference: red, green and blue from 0 to 255 in the low three bytes, red lowest. The
  /// reference -1 is the color that nothing is painted in. `space` and the two others are kept as
  /// they are given.
  CVKColor(std::int32_t reference, int space, int correction, int reflectivity);

  /// Sets four components.
  void SetColor(const double& c, const double& m, const double& y, const double& k,
                COLORSPACE space);
  /// Sets three components.
  void SetColor(const double& r, const double& g, const double& b, COLORSPACE space);

  /// As it was set.
  [[nodiscard]] COLORSPACE GetColorSpace() const { return m_Space; }
  /// The components in the order in which they were set; those that the space lacks are 0.
  [[nodiscard]] const std::array<double, 4>& GetComponents() const { return m_Components; }
  /// Whether it is the color that nothing is painted in (reference -1).
  [[nodiscard]] bool IsInvisible() const { return m_Invisible; }

  /// Red, green and blue from 0 to 255. A CMYK color is turned into them without a profile:
  /// 255 (1 - ink) (1 - black). The last argument receives 0. Null pointers are passed over.
  void GetColorChannels(double* r, double* g, double* b, double* unused) const;
  /// Cyan, magenta, yellow and black from 0 to 1. An RGB color is turned into them without a
  /// profile: what is gray in it becomes black alone. Null pointers are passed over.
  void GetCMYKcolor(double* c, double* m, double* y, double* k) const;

  /// Writes the color; docs/formats/cut-settings.md has the bytes. The stream's exceptions pass.
  /// Returns 1.
  int Save(CStream* stream) const;
  /// Reads what Save wrote. `version` is that of the layout, 1. The stream's exceptions pass.
  /// Returns 1; 0, with the color as it was, if the layout or the color space is unknown.
  int Load(CStream* stream, int version);

  bool operator==(const CVKColor&) const = default;

 private:
  std::array<double, 4> m_Components{};
  COLORSPACE m_Space = COLORSPACE_RGB;
  bool m_Invisible = false;
  std::int32_t m_Correction = 0;
  std::int32_t m_Reflectivity = 0;
};

/// A color that may have a name, as a spot color or one of the palette has.
class RASTREL_API CVKFullColor : public CVKColor {
 public:
  CVKFullColor() = default;
  /// As the base's, without a name.
  CVKFullColor(std::int32_t reference, int space, int correction, int reflectivity)
      : CVKColor(reference, space, correction, reflectivity) {}
  /// That color, without a name.
  explicit CVKFullColor(const CVKColor& color) : CVKColor(color) {}

  /// An empty text takes the name away.
  void SetColorName(const std::wstring& name) { m_Name = name; }
  /// Copies the name; non-zero if there is one. Without one `name` becomes empty.
  int GetColorName(std::wstring& name) const;

  /// As the base's, with the name behind it.
  int Save(CStream* stream) const;
  /// As the base's.
  int Load(CStream* stream, int version);

  bool operator==(const CVKFullColor&) const = default;

 private:
  std::wstring m_Name;
};
