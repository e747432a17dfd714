#pragma once

/// Colors of the host, with and without a name.

#include <array>
#include <cstdint>
#include <string>

#include "rastrel/export.h"

class CStream;

/// The color spaces that the library hands over, with the host's numbers.
enum COLORSPACE : int { COLORSPACE_RGB = 1, COLORSPACE_CMYK = 3 };

/// A color of the host: its space and its components as they were set, not clipped. RGB is 0 to 255
/// each. CMYK is 0 to 1 each, or 0 to 100: some templates give percents, and where a component is
/// above 1 all four are read as percents. A new one is RGB black. A value; one thread at a time.
class RASTREL_API CVKColor {
 public:
  CVKColor() = default;
  /// A color of a reference: red, green and blue from 0 to 255 in its low three bytes, red lowest.
  /// The reference -1 is the invisible color, in which nothing is painted. `space`, `correction`
  /// and `reflectivity` are kept as they are.
  CVKColor(std::int32_t reference, int space, int correction, int reflectivity);

  /// Sets the space and its four components. The color is then not invisible.
  void SetColor(const double& c, const double& m, const double& y, const double& k,
                COLORSPACE space);
  /// Sets three components in the same way.
  void SetColor(const double& r, const double& g, const double& b, COLORSPACE space);

  /// The space that was set, also one that is no COLORSPACE.
  [[nodiscard]] COLORSPACE GetColorSpace() const { return m_Space; }
  /// The components in the order in which they were set; the fourth of three is 0.
  [[nodiscard]] const std::array<double, 4>& GetComponents() const { return m_Components; }
  /// True for the invisible color (reference -1).
  [[nodiscard]] bool IsInvisible() const { return m_Invisible; }

  /// Red, green and blue from 0 to 255. A CMYK color is turned into them without a profile:
  /// 255 (1 - ink) (1 - black), with inks of 0 to 1 as GetCMYKcolor returns them. The last argument
  /// receives 0. A null pointer receives nothing.
  void GetColorChannels(double* r, double* g, double* b, double* unused) const;
  /// Cyan, magenta, yellow and black from 0 to 1; percents are divided by 100. An RGB color is
  /// turned into them without a profile: its gray part becomes black alone. A null pointer receives
  /// nothing.
  void GetCMYKcolor(double* c, double* m, double* y, double* k) const;

  /// Writes the color; docs/formats/cut-settings.md describes the bytes. Returns 1. Throws
  /// CStreamException if the stream fails.
  int Save(CStream* stream) const;
  /// Reads the bytes that Save wrote. `version` is that of the layout, 1. Returns 1; 0, with the
  /// color as it was, if the layout or the color space is unknown. Throws CStreamException if the
  /// stream fails.
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
  /// The base's, without a name.
  CVKFullColor(std::int32_t reference, int space, int correction, int reflectivity)
      : CVKColor(reference, space, correction, reflectivity) {}
  /// That color, without a name.
  explicit CVKFullColor(const CVKColor& color) : CVKColor(color) {}

  /// Sets the name; an empty one removes it.
  void SetColorName(const std::wstring& name) { m_Name = name; }
  /// Copies the name; non-zero if there is one. Without one `name` becomes empty.
  int GetColorName(std::wstring& name) const;

  /// As the base's, with the name after the color.
  int Save(CStream* stream) const;
  /// As the base's.
  int Load(CStream* stream, int version);

  bool operator==(const CVKFullColor&) const = default;

 private:
  std::wstring m_Name;
};
