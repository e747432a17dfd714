#include "rastrel/imports/origin_keywords.h"

#include <algorithm>
#include <array>

namespace rastrel::imports {
namespace {

constexpr std::wstring_view CenterAlone = L"center";
constexpr std::int32_t Center = 5;

/// In the order of their codes, which begin at 1.
constexpr std::array<std::wstring_view, 9> OriginTexts{
    L"top left",  L"top center",  L"top right",     L"mid left",    L"mid center",
    L"mid right", L"bottom left", L"bottom center", L"bottom right"};

}  // namespace

void ReadOrigin(std::wstring_view text, const OriginRules& rules, std::int32_t& origin) {
  const auto* const found = std::ranges::find(OriginTexts, text);
  if (found != OriginTexts.end()) {
    origin = static_cast<std::int32_t>(found - OriginTexts.begin()) + 1;
  } else if (rules.hasCenterAlone && text == CenterAlone) {
    origin = Center;
  } else {
    origin = rules.otherText.value_or(origin);
  }
}

}  // namespace rastrel::imports
