#include "host/render/canvas.h"

#include <array>

namespace rastrel::render {

std::span<const double> LengthsOf(Dashes dashes) {
  static constexpr std::array<double, 2> longOnes = {4, 1.5};
  static constexpr std::array<double, 4> longAndDot = {6, 1.5, 0.5, 1.5};
  switch (dashes) {
    case Dashes::None: break;
    case Dashes::Long: return longOnes;
    case Dashes::LongAndDot: return longAndDot;
  }
  return {};
}

}  // namespace rastrel::render
