// Cut settings records out of any bytes, one after the other. A record that was read must be
// written so that it reads the same again.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "rastrel/conversion/cut_data.h"
#include "rastrel/platform/values/stream.h"

namespace {

std::vector<std::uint8_t> Saved(const CPS2CutData& cut) {
  CMemFile file;
  CStream stream(&file);
  cut.Save(&stream);
  stream.Flush();
  return file.Bytes();
}

void CheckRoundTrip(const CPS2CutData& cut) {
  const std::vector<std::uint8_t> bytes = Saved(cut);
  CMemFile file(bytes);
  CStream stream(&file);
  CPS2CutData back;
  if (back.Load(&stream) != 1 || Saved(back) != bytes) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  CMemFile file(std::vector<std::uint8_t>(bytes, bytes + size));
  CStream stream(&file);
  try {
    for (;;) {
      CPS2CutData cut;
      static_cast<void>(cut.Load(&stream));
      CheckRoundTrip(cut);
    }
  } catch (const CStreamException&) {
    return 0;
  }
}
