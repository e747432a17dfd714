// Requests to a warm interpreter out of any bytes. One that can be read is written again as the
// same bytes, and names no file that did not come.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "interpreter/warm_message.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rastrel::interpreter;
  constexpr std::size_t files = 5;
  const std::string_view message(reinterpret_cast<const char*>(data), size);
  const auto job = ParseWarmJob(message, files);
  if (!job) return 0;
  for (const int file : job->descriptors) {
    if (file >= static_cast<int>(files)) std::abort();
  }
  for (const WallPath& path : job->paths) {
    if (path.descriptor >= static_cast<int>(job->descriptors.size())) std::abort();
  }
  if (FormatWarmJob(*job) != message) std::abort();
  return 0;
}
