#include "server/web/preview/ink_light.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>

namespace rastrel::server::web {
namespace {

constexpr Light Black{0, 0, 0};
constexpr Light UnknownInk{128, 128, 128};

std::uint8_t Left(double ink, double black) {
  const double left = (1 - std::clamp(ink, 0.0, 1.0)) * (1 - std::clamp(black, 0.0, 1.0));
  return static_cast<std::uint8_t>(std::lround(left * 255));
}

std::optional<Light> ProcessInk(std::string_view name) {
  constexpr std::array<std::pair<std::string_view, Light>, 4> inks{{{"Cyan", {0, 255, 255}},
                                                                    {"Magenta", {255, 0, 255}},
                                                                    {"Yellow", {255, 255, 0}},
                                                                    {"Black", {0, 0, 0}}}};
  for (const auto& [known, light] : inks)
    if (name == known) return light;
  return std::nullopt;
}

}  // namespace

bool IsInk(pages::PageColor color) {
  return color == pages::PageColor::Cmyk || color == pages::PageColor::Separations;
}

Light FullStrength(const pages::PageInfo& page, const pages::PagePlane& plane) {
  if (page.color == pages::PageColor::Gray) return Black;
  if (page.color == pages::PageColor::Rgb) {
    Light light = Black;
    light[std::min(plane.channel, 2U)] = 255;
    return light;
  }
  if (plane.ink) {
    const pages::InkColor& ink = *plane.ink;
    return {Left(ink[0], ink[3]), Left(ink[1], ink[3]), Left(ink[2], ink[3])};
  }
  return ProcessInk(plane.name).value_or(UnknownInk);
}

InkTable::InkTable(const Light& full) : m_Rest() {
  for (unsigned sample = 0; sample < m_Rest.size(); ++sample)
    for (std::size_t color = 0; color < full.size(); ++color) {
      const unsigned taken = (255 - sample) * (255U - full[color]);
      m_Rest[sample][color] = static_cast<std::uint8_t>(255 - (taken + 127) / 255);
    }
}

}  // namespace rastrel::server::web
