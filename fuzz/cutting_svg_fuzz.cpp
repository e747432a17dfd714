// Drawings in SVG of any bytes. One that is read has finite coordinates.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "cutting/svg/svg_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace rastrel::cutting;
  const auto drawing = ReadSvg({reinterpret_cast<const char*>(bytes), size}, "fuzz");
  if (!drawing && drawing.Error().why.empty()) std::abort();
  if (drawing && !IsWithinLengths(drawing->job)) std::abort();
  return 0;
}
