// Pages of raster: headers of any bytes and rows, as the library of the printer hands them over. No
// row is read past the bytes that its header announces.

#include <pappl/pappl.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "rastrel/platform/os/private_directory.h"
#include "server/printer/ipp/raster_job.h"

namespace {

constexpr std::size_t RowLimit = 1 << 16;
constexpr std::size_t HeaderPart = 80;  // bytes of the input for each header

// The numbers of a header that decide on anything, each from four bytes of the input, most of them
// small.
cups_page_header2_t HeaderOf(const std::uint8_t* bytes) {
  cups_page_header2_t header{};
  unsigned* const fields[] = {&header.cupsWidth,        &header.cupsHeight,
                              &header.cupsBitsPerColor, &header.cupsBitsPerPixel,
                              &header.cupsBytesPerLine, &header.HWResolution[0],
                              &header.HWResolution[1],  &header.cupsInteger[0]};
  for (std::size_t index = 0; index < std::size(fields); ++index)
    std::memcpy(fields[index], bytes + index * 4, 4);
  std::uint32_t space = 0;
  std::memcpy(&space, bytes + 32, 4);
  header.cupsColorSpace = static_cast<cups_cspace_t>(space % 64);
  return header;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const rastrel::os::PrivateDirectory place =
      *rastrel::os::PrivateDirectory::Make("rastrel-fuzz-");
  rastrel::server::RasterJob job(place.Path() + "/raster.pdf");
  if (!job.Begin()) return 0;
  std::size_t pages = 0;
  bool isWhole = true;
  std::size_t expected = 0;
  while (size >= HeaderPart) {
    const cups_page_header2_t header = HeaderOf(bytes);
    const std::uint8_t filling = bytes[HeaderPart - 1];
    const unsigned rows = bytes[HeaderPart - 2];
    bytes += HeaderPart;
    size -= HeaderPart;
    isWhole = static_cast<bool>(job.BeginPage(header)) && isWhole;
    if (header.cupsInteger[0] != 0) expected = header.cupsInteger[0];
    // As long as the library's: a byte more that is read is found.
    const std::vector<unsigned char> row(std::min<std::size_t>(header.cupsBytesPerLine, RowLimit),
                                         filling);
    if (header.cupsBytesPerLine <= RowLimit)
      for (unsigned count = 0; count < rows; ++count) static_cast<void>(job.AddRow(row.data()));
    isWhole = static_cast<bool>(job.EndPage()) && isWhole;
    ++pages;
  }
  const bool finished = static_cast<bool>(job.Finish());
  if (finished && (!isWhole || pages == 0 || pages < expected)) std::abort();
  return 0;
}
