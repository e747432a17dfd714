#include "children/jobspool/bitmap_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::jobspool {
namespace {

constexpr std::size_t HeadSize = 54;
constexpr std::size_t BlockSize = 262144;
constexpr double MetresPerInch = 0.0254;

struct Picture {
  os::FileDescriptor file;
  std::uint64_t pixels = 0;  // where they begin
  unsigned width = 0;
  unsigned height = 0;

  [[nodiscard]] std::uint64_t RowBytes() const { return std::uint64_t{width} * 3; }
};

std::optional<Picture> OpenPicture(const std::string& path) {
  Picture picture{os::FileDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC))};
  char head[64] = {};
  struct stat state {};
  if (!picture.file.IsOpen() || fstat(picture.file.Get(), &state) != 0) return {};
  if (pread(picture.file.Get(), head, sizeof head - 1, 0) <= 0) return {};
  int length = 0;
  if (std::sscanf(head, "P6 %9u %9u 255%n", &picture.width, &picture.height, &length) != 2 ||
      length == 0 || picture.width == 0 || picture.height == 0) {
    return {};
  }
  picture.pixels = static_cast<std::uint64_t>(length) + 1;
  const std::uint64_t size = picture.pixels + picture.RowBytes() * picture.height;
  if (static_cast<std::uint64_t>(state.st_size) != size) return {};
  return picture;
}

class Head {
 public:
  Head& Add(std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) m_Bytes += static_cast<char>(value >> (8 * i) & 255U);
    return *this;
  }
  [[nodiscard]] const std::string& Bytes() const { return m_Bytes; }

 private:
  std::string m_Bytes = "BM";
};

// The head, little-endian; the pixels follow. The number before a field is its place.
//
//    0  "BM"            2  size of the file      6  0              10  place of the pixels: 54
//   14  size of the     18  width, pixels       22  height: above   26  planes: 1 (2 bytes)
//       rest: 40                                    0, so rows      28  bits a pixel: 24 (2 bytes)
//   30  compression: 0  34  bytes of pixels         come from the   38  pixels per metre across
//                                                   bottom          42  ... and up
//   46  colors: 0       50  important ones: 0
std::string BitmapHead(const Picture& picture, std::uint64_t pixelBytes, int resolution) {
  const auto dotsPerMetre = static_cast<std::uint32_t>(std::lround(resolution / MetresPerInch));
  const auto bytes = static_cast<std::uint32_t>(pixelBytes);
  Head head;
  head.Add(HeadSize + bytes, 4).Add(0, 4).Add(HeadSize, 4);
  head.Add(40, 4).Add(picture.width, 4).Add(picture.height, 4).Add(1, 2).Add(24, 2);
  head.Add(0, 4).Add(bytes, 4).Add(dotsPerMetre, 4).Add(dotsPerMetre, 4).Add(0, 4).Add(0, 4);
  return head.Bytes();
}

bool ReadExactly(int file, std::uint64_t offset, std::vector<char>& bytes) {
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const ssize_t count = pread(file, bytes.data() + filled, bytes.size() - filled,
                                static_cast<off_t>(offset + filled));
    if (count < 0 && errno == EINTR) continue;
    if (count == 0) errno = EINVAL;
    if (count <= 0) return false;
    filled += static_cast<std::size_t>(count);
  }
  return true;
}

// One block of rows, given from its last to its first, with red and blue exchanged.
void TurnRows(const std::vector<char>& rows, std::size_t rowBytes, std::size_t stride,
              std::vector<char>& turned) {
  const std::size_t count = rows.size() / rowBytes;
  turned.assign(count * stride, 0);
  for (std::size_t row = 0; row < count; ++row) {
    const char* source = rows.data() + (count - 1 - row) * rowBytes;
    char* target = turned.data() + row * stride;
    for (std::size_t i = 0; i < rowBytes; i += 3) {
      target[i] = source[i + 2];
      target[i + 1] = source[i + 1];
      target[i + 2] = source[i];
    }
  }
}

}  // namespace

Expected<void> WriteBitmapFile(const std::string& picturePath, const std::string& bitmap,
                               int resolution) {
  const auto picture = OpenPicture(picturePath);
  if (!picture) return Failure{"read", picturePath, EINVAL};
  const std::uint64_t rowBytes = picture->RowBytes();
  const std::uint64_t stride = (rowBytes + 3) / 4 * 4;
  const std::uint64_t pixelBytes = stride * picture->height;
  if (pixelBytes + HeadSize > UINT32_MAX) return Failure{"write", bitmap, EFBIG};
  const os::FileDescriptor file(
      open(bitmap.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!file.IsOpen()) return Failure{"create", bitmap, errno};
  const auto begun = os::WriteAll(file.Get(), BitmapHead(*picture, pixelBytes, resolution));
  if (!begun) return FailureAt(bitmap, begun.Error());
  const auto rowsOfBlock = std::max<std::uint64_t>(1, BlockSize / rowBytes);
  std::vector<char> rows;
  std::vector<char> turned;
  for (std::uint64_t left = picture->height; left > 0;) {
    const std::uint64_t count = std::min(rowsOfBlock, left);
    left -= count;
    rows.resize(static_cast<std::size_t>(count * rowBytes));
    if (!ReadExactly(picture->file.Get(), picture->pixels + left * rowBytes, rows)) {
      return Failure{"read", picturePath, errno};
    }
    TurnRows(rows, static_cast<std::size_t>(rowBytes), static_cast<std::size_t>(stride), turned);
    const auto written = os::WriteAll(file.Get(), {turned.data(), turned.size()});
    if (!written) return FailureAt(bitmap, written.Error());
  }
  return {};
}

}  // namespace rastrel::jobspool
