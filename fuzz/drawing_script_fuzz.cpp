// The drawing library's script, which foreign files shape, of any bytes and in any pieces.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "host/drawing/script_reader.h"

namespace {

using namespace rastrel;

std::vector<graphics::VectorPath> PathsOf(std::string_view script, std::size_t piece,
                                          std::string& reason) {
  std::vector<graphics::VectorPath> paths;
  drawing::ScriptReader reader(1000, 1000, TM(), false, [&](const graphics::VectorPath& path) {
    paths.push_back(path);
    return true;
  });
  for (std::size_t i = 0; i < script.size(); i += piece) {
    if (!reader.Write(script.substr(i, piece))) break;
  }
  reader.Finish();
  reason = reader.Reason();
  return paths;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const std::string_view script(reinterpret_cast<const char*>(data), size);
  std::string whole;
  std::string pieces;
  const auto first = PathsOf(script, size + 1, whole);
  const auto second = PathsOf(script, 7, pieces);
  if (whole != pieces || first.size() != second.size()) std::abort();
  return 0;
}
