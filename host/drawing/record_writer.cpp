#include "host/drawing/record_writer.h"

#include <cstdint>
#include <cstdlib>
#include <string>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/pipe.h"

namespace rastrel::drawing {

void WriteRecord(graphics::DrawingRecord kind, std::string_view body) {
  std::string head(1, static_cast<char>(kind));
  for (std::size_t i = 0; i < graphics::RecordHeadSize - 1; ++i) {
    head += static_cast<char>(std::uint64_t{body.size()} >> 8 * i & 0xFF);
  }
  const HANDLE output = os::StandardHandle(os::StandardStream::Output);
  if (!os::WriteAll(output, head) || !os::WriteAll(output, body)) std::_Exit(1);
}

}  // namespace rastrel::drawing
