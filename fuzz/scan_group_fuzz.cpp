// Groups of numbers against the C library's own scan of the same text.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "rastrel/conversion/scan_group.h"

namespace {

// The C library takes the mark of a hexadecimal number without a digit for a 0, which no standard
// says, and leaves the value of a number that does not fit open.
bool HasBareMark(const std::string& text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool mark = text[at] == 'x' || text[at] == 'X';
    const bool digit =
        at + 1 < text.size() &&
        std::string("0123456789abcdefABCDEF").find(text[at + 1]) != std::string::npos;
    if (mark && !digit) return true;
  }
  return false;
}

void CheckIntegers(const std::string& text, const std::wstring& wide) {
  std::array<long long, 4> expected{};
  const bool all = std::sscanf(text.c_str(), "%lli %lli %lli %lli", &expected[0], &expected[1],
                               &expected[2], &expected[3]) == 4;
  const bool fit = std::all_of(expected.begin(), expected.end(),
                               [](long long one) { return one == static_cast<std::int32_t>(one); });
  std::array<std::int32_t, 4> own{};
  const bool scanned = rastrel::conversion::ScanIntegers(wide, own);
  if (scanned != (all && fit)) std::abort();
  if (scanned && !std::equal(own.begin(), own.end(), expected.begin())) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  std::string text(reinterpret_cast<const char*>(bytes), size);
  text.resize(std::min(text.find('\0'), text.size()));
  const std::wstring wide(text.begin(), text.end());
  std::array<float, 4> floats{};
  static_cast<void>(rastrel::conversion::ScanFloats(wide, floats));
  if (!HasBareMark(text)) CheckIntegers(text, wide);
  return 0;
}
