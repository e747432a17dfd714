// The records of a measured page out of any bytes of the queue program's standard error. ASCII
// gives the same ones in whatever pieces it comes; a longer character that two pieces share is
// lost, since each piece is decoded alone. The first byte is the size of the pieces.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "rastrel/conversion/qrast.h"
#include "rastrel/platform/os/handle.h"

namespace {

using PrintingThread::CQRastStderrParser;
using PrintingThread::QRastPageInfo;

void Check(bool holds) {
  if (!holds) std::abort();
}

QRastPageInfo PageOf(std::string_view stream, std::size_t piece) {
  QRastPageInfo page;
  HANDLE pipe = INVALID_HANDLE_VALUE;
  CQRastStderrParser parser(&pipe, &page);
  for (; !stream.empty(); stream.remove_prefix(std::min(piece, stream.size()))) {
    parser.OnData(stream.data(), static_cast<unsigned>(std::min(piece, stream.size())));
  }
  return page;
}

// By their bits: a number of a record may be none that equals itself.
bool SameBits(float one, float other) { return std::memcmp(&one, &other, sizeof one) == 0; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view stream(reinterpret_cast<const char*>(bytes) + 1, size - 1);
  const QRastPageInfo page = PageOf(stream, std::size_t{1} + bytes[0]);
  Check(page.name.find_first_of(L"\r\n") == page.name.npos);
  const auto isAscii = [](char one) { return one > 0; };
  if (!std::ranges::all_of(stream, isAscii)) return 0;
  const QRastPageInfo whole = PageOf(stream, std::max<std::size_t>(stream.size(), 1));
  Check(page.name == whole.name);
  Check(page.bits == whole.bits && page.npls == whole.npls && page.mavl == whole.mavl);
  Check(page.xdpi == whole.xdpi && page.ydpi == whole.ydpi && page.bmap == whole.bmap);
  Check(SameBits(page.bboxX, whole.bboxX) && SameBits(page.bboxY, whole.bboxY));
  Check(SameBits(page.bboxWidth, whole.bboxWidth) && SameBits(page.bboxHeight, whole.bboxHeight));
  return 0;
}
