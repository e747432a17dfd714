#include "rastrel/conversion/dialogs/bitmap_size.h"

#include <array>
#include <cmath>

#include "rastrel/job/printf_text.h"
#include "rastrel/platform/host/translation.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::conversion {

namespace {

constexpr double BytesInPixel = 3.0;
constexpr double WrapAt = 4294967296.0;  // 32 bits
constexpr std::uint32_t Mebibyte = 0x100000;
constexpr double KilobytesInByte = 0.0009765625;
constexpr double MegabytesInByte = 9.5367431640625e-7;

}  // namespace

std::uint32_t EstimatedBitmapBytes(double width, double height, std::int32_t resolution) {
  if (resolution < 1) return 0;
  const double bytes = (width / host::CentimetresPerInch * resolution) *
                       (height / host::CentimetresPerInch * resolution) * BytesInPixel;
  // The remainder is exact for any finite number; a plain conversion of a large one is undefined.
  if (!std::isfinite(bytes) || width < 0 || height < 0) return 0;
  return static_cast<std::uint32_t>(std::fmod(std::trunc(bytes), WrapAt));
}

std::wstring BitmapSizeText(std::uint32_t bytes) {
  const bool small = bytes < Mebibyte;
  // Of the translation's conversions only those with an argument print one.
  const std::array<job::FormatArgument, 1> number{bytes *
                                                  (small ? KilobytesInByte : MegabytesInByte)};
  return job::PrintfText(host::TranslatedText(small ? L"(*v*)%.1f KB" : L"(*v*)%.1f MB"), number);
}

}  // namespace rastrel::conversion
