// The formatter against any format and any arguments. The first byte says how many arguments follow
// and the next ones of what type; the rest is the format, as UTF-8.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/job/format_argument.h"
#include "rastrel/job/format_string.h"
#include "rastrel/platform/os/text.h"

namespace {

rastrel::job::FormatArgument ArgumentOf(std::uint8_t kind) {
  switch (kind % 6) {
    case 0: return std::int64_t{-1234567890123};
    case 1: return std::uint64_t{18446744073709551615U};
    case 2: return kind > 127 ? 1e308 : -0.5;
    case 3: return L'\u20ac';
    case 4: return std::wstring_view(L"wide \u00e4");
    default: return std::string_view("narrow \xff");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t count = std::min<std::size_t>(bytes[0] % 5U, size - 1);
  std::vector<rastrel::job::FormatArgument> arguments;
  for (std::size_t index = 0; index < count; ++index)
    arguments.push_back(ArgumentOf(bytes[1 + index]));
  const std::string_view rest(reinterpret_cast<const char*>(bytes) + 1 + count, size - 1 - count);
  const std::wstring format = rastrel::os::WideFromUtf8(rest);
  const std::wstring text = rastrel::job::FormatText(format, arguments);
  // Without a percent sign there is nothing to do.
  if (format.find(L'%') == std::wstring::npos && text != format) std::abort();
  // The same twice: nothing is kept from call to call.
  if (rastrel::job::FormatText(format, arguments) != text) std::abort();
  return 0;
}
