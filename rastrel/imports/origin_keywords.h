#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// The texts by which templates name the part of a rectangle that a position counts from. Their
/// codes are the host's (CVelumark5Doc::GetOrigin):
///
///     1 top left      2 top center      3 top right
///     4 mid left      5 mid center      6 mid right
///     7 bottom left   8 bottom center   9 bottom right
///
/// Texts are compared whole and by case.
namespace rastrel::imports {

/// The differences between the formats that have these texts.
struct OriginRules {
  /// Whether "center" is a text for 5 as "mid center" is.
  bool hasCenterAlone = true;
  /// The code of any other text; without it such a text keeps the value that was there.
  std::optional<std::int32_t> otherText;
};

inline constexpr OriginRules CroOrigins{.hasCenterAlone = false, .otherText = std::nullopt};
inline constexpr OriginRules LlxPlateOrigins{.hasCenterAlone = true, .otherText = 7};
inline constexpr OriginRules LlxGraphicOrigins{.hasCenterAlone = true, .otherText = 5};
inline constexpr OriginRules Cr2Origins{.hasCenterAlone = true, .otherText = 1};

/// Sets `origin` to the code of a text, or leaves it as it is.
void ReadOrigin(std::wstring_view text, const OriginRules& rules, std::int32_t& origin);

}  // namespace rastrel::imports
