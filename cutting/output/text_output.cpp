#include "cutting/output/text_output.h"

#include <cmath>

namespace rastrel::cutting {

TextOutput& TextOutput::AddDecimal(double value, int places) {
  constexpr std::array<long long, 7> scales{1, 10, 100, 1000, 10'000, 100'000, 1'000'000};
  const long long scale = scales[static_cast<std::size_t>(places)];
  const long long scaled = std::llround(value * static_cast<double>(scale));
  if (scaled < 0) Add('-');
  const long long size = scaled < 0 ? -scaled : scaled;
  AddInteger(size / scale);
  long long rest = size % scale;
  if (rest == 0) return *this;
  Add('.');
  for (long long digit = scale / 10; rest > 0; digit /= 10) {
    Add(static_cast<char>('0' + rest / digit));
    rest %= digit;
  }
  return *this;
}

}  // namespace rastrel::cutting
