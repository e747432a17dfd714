// Rule files of any bytes. One that is read decides about a paint of each kind.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "cutting/rules/rules.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace rastrel::cutting;
  const auto rules = ReadRules({reinterpret_cast<const char*>(bytes), size}, "fuzz");
  if (!rules) {
    if (rules.Error().why.empty()) std::abort();
    return 0;
  }
  for (const PaintColor& color :
       {PaintColor{ColorModel::Spot, {}, "CutContour"}, PaintColor{ColorModel::Rgb, {1, 0, 1}},
        PaintColor{ColorModel::Cmyk, {0, 1, 0, 0}}, PaintColor{ColorModel::Gray, {0.5}}}) {
    const Rule* rule = rules->RuleFor({Paint::Kind::Stroke, 0.1, color, "Layer"});
    if (rule != nullptr && rule->name.empty()) std::abort();
  }
  return 0;
}
