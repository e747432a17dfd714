#pragma once

#include <array>
#include <cstdint>

#include "pages/page_info.h"

/// How inks look on a screen.
namespace rastrel::server::web {

/// Red, green and blue from 0 to 255.
using Light = std::array<std::uint8_t, 3>;

/// The rest of white light below a plane's full strength. Of a plane of light (red, green, blue)
/// that color; of a gray page black.
[[nodiscard]] Light FullStrength(const pages::PageInfo& page, const pages::PagePlane& plane);

/// Whether the planes of a page are inks, of which 255 is none.
[[nodiscard]] bool IsInk(pages::PageColor color);

/// The rest of the light for each sample of an ink, from 0 (full) to 255 (none).
class InkTable {
 public:
  explicit InkTable(const Light& full);
  [[nodiscard]] const Light& Of(std::uint8_t sample) const { return m_Rest[sample]; }

 private:
  std::array<Light, 256> m_Rest;
};

/// Of 255 the product of two shares of 255, rounded.
[[nodiscard]] constexpr std::uint8_t Share(std::uint8_t one, std::uint8_t other) {
  return static_cast<std::uint8_t>((unsigned{one} * other + 127) / 255);
}

}  // namespace rastrel::server::web
