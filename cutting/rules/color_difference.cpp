#include "cutting/rules/color_difference.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace rastrel::cutting {
namespace {

// Without lcms2's cache, since one transform serves all threads.
class RgbToLab {
 public:
  RgbToLab() {
    cmsHPROFILE rgb = cmsCreate_sRGBProfile();
    cmsHPROFILE lab = cmsCreateLab4Profile(nullptr);
    m_Transform = cmsCreateTransform(rgb, TYPE_RGB_DBL, lab, TYPE_Lab_DBL,
                                     INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOCACHE);
    cmsCloseProfile(rgb);
    cmsCloseProfile(lab);
  }
  ~RgbToLab() {
    if (m_Transform != nullptr) cmsDeleteTransform(m_Transform);
  }
  RgbToLab(const RgbToLab&) = delete;
  RgbToLab& operator=(const RgbToLab&) = delete;

  [[nodiscard]] std::optional<LabColor> Convert(const std::array<double, 3>& rgb) const {
    if (m_Transform == nullptr) return std::nullopt;
    cmsCIELab lab{};
    cmsDoTransform(m_Transform, rgb.data(), &lab, 1);
    return LabColor{lab.L, lab.a, lab.b};
  }

 private:
  cmsHTRANSFORM m_Transform = nullptr;
};

// The overprints of solid inks; bit 0 is cyan, 1 magenta, 2 yellow, 3 black. Measured through
// Ghostscript's profile for CMYK, relative to its paper.
constexpr std::array<cmsCIELab, 16> Overprints{{{100.0, 0.0, 0.0},
                                                {63.6, -41.4, -48.3},
                                                {54.0, 76.1, -6.6},
                                                {30.9, 20.0, -48.4},
                                                {95.1, -6.3, 90.4},
                                                {58.9, -67.5, 27.1},
                                                {53.6, 69.8, 45.2},
                                                {29.0, 0.5, -1.4},
                                                {22.4, 1.1, 0.1},
                                                {16.8, -8.0, -10.0},
                                                {14.0, 15.9, -0.4},
                                                {10.6, 7.7, -9.1},
                                                {20.5, -2.3, 11.7},
                                                {16.8, -13.5, 4.4},
                                                {15.0, 11.6, 6.4},
                                                {11.8, 0.8, 0.3}}};

using CubeRoots = std::array<std::array<double, 3>, 16>;

// Light scatters in the paper between dots: sums of roots fit prints, and plain sums are too light.
CubeRoots RootsOfOverprints() {
  CubeRoots roots{};
  for (std::size_t i = 0; i < roots.size(); ++i) {
    cmsCIEXYZ xyz{};
    cmsLab2XYZ(nullptr, &xyz, &Overprints[i]);
    roots[i] = {std::cbrt(xyz.X), std::cbrt(xyz.Y), std::cbrt(xyz.Z)};
  }
  return roots;
}

LabColor LabOfCmyk(const std::array<double, 4>& inks) {
  static const CubeRoots Roots = RootsOfOverprints();
  std::array<double, 3> sum{};
  for (std::size_t i = 0; i < Roots.size(); ++i) {
    double area = 1;
    for (std::size_t ink = 0; ink < inks.size(); ++ink)
      area *= ((i >> ink) & 1U) != 0 ? inks[ink] : 1 - inks[ink];
    for (std::size_t part = 0; part < sum.size(); ++part) sum[part] += area * Roots[i][part];
  }
  const auto cube = [](double root) { return root * root * root; };
  const cmsCIEXYZ xyz{cube(sum[0]), cube(sum[1]), cube(sum[2])};
  cmsCIELab lab{};
  cmsXYZ2Lab(nullptr, &lab, &xyz);
  return {lab.L, lab.a, lab.b};
}

// NaN becomes 0.
double Clamped(double component) { return component > 0 ? std::min(component, 1.0) : 0.0; }

}  // namespace

std::optional<LabColor> LabOf(const PaintColor& color) {
  static const RgbToLab Rgb;
  const auto& parts = color.components;
  const auto part = [&](std::size_t i) { return Clamped(parts[i]); };
  switch (color.model) {
    case ColorModel::Gray:
      if (parts.size() == 1) return Rgb.Convert({part(0), part(0), part(0)});
      break;
    case ColorModel::Rgb:
      if (parts.size() == 3) return Rgb.Convert({part(0), part(1), part(2)});
      break;
    case ColorModel::Cmyk:
      if (parts.size() == 4) return LabOfCmyk({part(0), part(1), part(2), part(3)});
      break;
    case ColorModel::Spot: break;
  }
  return std::nullopt;
}

double ColorDifference(const LabColor& first, const LabColor& second) {
  const cmsCIELab one{first.lightness, first.a, first.b};
  const cmsCIELab other{second.lightness, second.a, second.b};
  return cmsCIE2000DeltaE(&one, &other, 1, 1, 1);
}

}  // namespace rastrel::cutting
