#include "children/coreodalis/plain_tiff_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/platform/os/file.h"

namespace rastrel::odalis {
namespace {

/// Rows that are handed on at once: few enough to stay in the processor's cache.
constexpr std::size_t BufferBytes = std::size_t{256} << 10;

/// Fills the span from the file's offset on; false if there are not as many bytes.
bool ReadAt(int descriptor, std::uint64_t offset, std::span<std::byte> bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t count = ::pread(descriptor, bytes.data() + done, bytes.size() - done,
                                  static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    done += static_cast<std::size_t>(count);
  }
  return true;
}

class PlainTiffFile final : public PixelFile {
 public:
  PlainTiffFile(os::FileDescriptor descriptor, std::string path, const pages::FoundPlainTiff& found)
      : m_Descriptor(std::move(descriptor)),
        m_Path(std::move(path)),
        m_Picture(found.picture),
        m_At(found.pixelsAt) {
    m_Width = m_Picture.width;
    m_Height = m_Picture.height;
    m_Samples = m_Picture.samples;
  }

  Expected<void> ReadRows(std::span<std::uint8_t> rows) override {
    if (!ReadAt(m_Descriptor.Get(), m_At, std::as_writable_bytes(rows)))
      return FailureOf("'" + m_Path + "' ends before its last row");
    m_At += rows.size();
    return {};
  }

  [[nodiscard]] std::optional<pages::PlainTiff> AsPlainTiff() const override { return m_Picture; }
  [[nodiscard]] int Descriptor() const override { return m_Descriptor.Get(); }

 private:
  os::FileDescriptor m_Descriptor;
  std::string m_Path;
  pages::PlainTiff m_Picture;
  std::uint64_t m_At;
};

class PlainTiffWriter final : public ImageWriter {
 public:
  PlainTiffWriter(os::FileDescriptor descriptor, std::string name, const ImageShape& shape)
      : m_Descriptor(std::move(descriptor)),
        m_Name(std::move(name)),
        m_RowBytes(shape.RowBytes()),
        m_RowsLeft(shape.height),
        m_Rows(std::max(BufferBytes / m_RowBytes, std::size_t{1}) * m_RowBytes) {}

  Expected<void> Write(std::string_view bytes) {
    auto written = os::WriteAll(m_Descriptor.Get(), bytes);
    if (!written) return FailureOf("writing '" + m_Name + "': " + Describe(written.Error()));
    return written;
  }

  Expected<std::span<std::uint8_t>> Room() override {
    const std::size_t left = m_RowsLeft * m_RowBytes;
    return std::span(m_Rows).first(std::min(m_Rows.size(), left + m_Filled)).subspan(m_Filled);
  }
  Expected<void> Take(std::size_t bytes) override {
    m_Filled += bytes;
    m_RowsLeft -= bytes / m_RowBytes;
    return m_Filled == m_Rows.size() || m_RowsLeft == 0 ? Flush() : Expected<void>();
  }
  Expected<void> Finish() override { return {}; }

 private:
  Expected<void> Flush() {
    const std::size_t filled = std::exchange(m_Filled, 0);
    return Write({reinterpret_cast<const char*>(m_Rows.data()), filled});
  }

  os::FileDescriptor m_Descriptor;
  std::string m_Name;
  std::size_t m_RowBytes;
  std::size_t m_RowsLeft;
  std::vector<std::uint8_t> m_Rows;
  std::size_t m_Filled = 0;
};

}  // namespace

std::optional<pages::PlainTiff> PlainTiffOf(const ImageShape& shape) {
  if (shape.model != ColorModel::Gray && shape.model != ColorModel::Rgb) return std::nullopt;
  const pages::PlainTiff picture{.width = shape.width,
                                 .height = shape.height,
                                 .samples = static_cast<unsigned>(shape.planes.size()),
                                 .x = pages::TiffResolutionOf(shape.xResolution),
                                 .y = pages::TiffResolutionOf(shape.yResolution)};
  if (picture.RowBytes() > pages::PlainTiffLimit / picture.height) return std::nullopt;
  return picture;
}

std::unique_ptr<PixelFile> OpenPlainTiff(os::FileDescriptor& descriptor, const std::string& path,
                                         std::uint64_t bytes) {
  const auto found = pages::FindWholePlainTiff(
      [&descriptor](std::uint64_t offset, std::span<std::byte> into) {
        return ReadAt(descriptor.Get(), offset, into);
      },
      bytes);
  if (!found) return nullptr;
  const pages::PlainTiff& picture = found->picture;
  if (picture.width > MaximumSide || picture.height > MaximumSide) return nullptr;
  if (picture.RowBytes() > LargestRow) return nullptr;
  return std::make_unique<PlainTiffFile>(std::move(descriptor), path, *found);
}

Expected<std::unique_ptr<ImageWriter>> MakePlainTiffWriter(const ImageOrder& order,
                                                           const ImageShape& shape) {
  const auto picture = PlainTiffOf(shape);
  const auto head = picture ? pages::PlainTiffHead(*picture) : std::nullopt;
  if (!head) return FailureOf("writing '" + order.name + "': the picture has another form");
  os::FileDescriptor own(::fcntl(order.descriptor, F_DUPFD_CLOEXEC, 3));
  if (!own.IsOpen()) return Failure{"dup", order.name, errno};
  auto writer = std::make_unique<PlainTiffWriter>(std::move(own), order.name, shape);
  if (auto written = writer->Write(*head); !written) return written.Error();
  return std::unique_ptr<ImageWriter>(std::move(writer));
}

}  // namespace rastrel::odalis
