// PNG files of any bytes, as they are and with check sums that are right. A page that was made has
// all of the picture, and none has more memory than some rows.

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/server_picture.h"

namespace {

// Without right sums nothing after the first chunk would ever be read.
std::string WithRightSums(std::string bytes) {
  for (std::size_t at = 8; at + 12 <= bytes.size();) {
    std::uint32_t length = 0;
    for (std::size_t index = 0; index < 4; ++index)
      length = length << 8 | static_cast<unsigned char>(bytes[at + index]);
    if (length > bytes.size() - at - 12) break;
    const auto sum = static_cast<std::uint32_t>(
        ::crc32(0, reinterpret_cast<const Bytef*>(bytes.data() + at + 4), length + 4));
    for (unsigned index = 0; index < 4; ++index)
      bytes[at + 8 + length + index] = static_cast<char>(sum >> (24 - 8 * index));
    at += std::size_t{12} + length;
  }
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const fuzz::PictureFile file;
  const std::string content(reinterpret_cast<const char*>(bytes), size);
  file.Convert(content, rastrel::server::PdfFromPng);
  file.Convert(WithRightSums(content), rastrel::server::PdfFromPng);
  return 0;
}
