// JPEG files of any bytes: the page that is made of one has all of its bytes.

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/server_picture.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const fuzz::PictureFile file;
  const std::string content(reinterpret_cast<const char*>(bytes), size);
  const std::string page = file.Convert(content, rastrel::server::PdfFromJpeg);
  if (!page.empty() && page.find(content) == page.npos) std::abort();
  return 0;
}
