// The readers of pixel files against any bytes: no crash, and no more work than the bytes are
// worth.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "children/coreodalis/netpbm_file.h"
#include "children/coreodalis/tiff_reader.h"

namespace {

using namespace rastrel;

constexpr unsigned MaximumRows = 64;  // the rest of a tall picture teaches nothing new

void ReadRows(Expected<std::unique_ptr<odalis::PixelFile>> file) {
  if (!file) return;
  std::vector<std::uint8_t> row((*file)->RowBytes());
  for (unsigned y = 0; y < (*file)->Height() && y < MaximumRows; ++y) {
    if (!(*file)->ReadRows(row)) return;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  for (const bool tiff : {false, true}) {
    os::FileDescriptor file(memfd_create("pixels", MFD_CLOEXEC));
    if (!file.IsOpen() || pwrite(file.Get(), bytes, size, 0) != static_cast<ssize_t>(size))
      return 0;
    ReadRows(tiff ? odalis::OpenTiff(std::move(file), "fuzz", size)
                  : odalis::OpenNetpbm(std::move(file), "fuzz", size));
  }
  return 0;
}
