#pragma once

#include <utility>
#include <vector>

#include "host/cutfile/cut_drawing.h"

/// Small drawings whose files can be written down by hand.
namespace rastrel::test {

inline CVKColor Rgb(double red, double green, double blue) {
  CVKColor color;
  color.SetColor(red, green, blue, COLORSPACE_RGB);
  return color;
}

inline cutfile::CutObject CutObjectOf(cutfile::CutKind kind, const CVKColor& color,
                                      std::vector<CWorldPoint> points, bool closed) {
  return {kind, color, {{std::move(points), closed}}};
}

/// A page of 10 by 5 cm: a red rectangle that is cut, a blue triangle that is cut through, and an
/// open green line.
inline cutfile::CutDrawing ThreeKinds() {
  using cutfile::CutKind;
  return {10,
          5,
          {CutObjectOf(CutKind::Cut, Rgb(255, 0, 0), {{1, 1}, {4, 1}, {4, 3}, {1, 3}}, true),
           CutObjectOf(CutKind::CutThrough, Rgb(0, 0, 255), {{5, 1}, {9, 1}, {7, 4.5}}, true),
           CutObjectOf(CutKind::Line, Rgb(0, 255, 0), {{0, 0}, {0.125, 2.5}}, false)}};
}

}  // namespace rastrel::test
