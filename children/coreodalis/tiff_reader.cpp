#include "children/coreodalis/tiff_reader.h"

#include <algorithm>
#include <utility>

#include "children/coreodalis/tiff_handle.h"

namespace rastrel::odalis {
namespace {

/// More than any compression of the format reaches. A small file that claims a vast picture would
/// otherwise keep the engine busy for hours.
constexpr std::uint64_t HighestCompression = 2500;

/// A page may have dozens of such files open at once.
constexpr std::uint64_t LargestStrip = 4u << 20;

class TiffReader final : public PixelFile {
 public:
  TiffReader(os::FileDescriptor descriptor, std::string path)
      // No mapping into memory: a file that is cut short while it is read must not end the engine.
      : m_Path(std::move(path)), m_Tiff(std::move(descriptor), m_Path, "rm") {}

  Expected<void> ReadHeader(std::uint64_t bytes) {
    if (!m_Tiff.Get()) return Refuse(m_Tiff.LastError());
    if (auto checked = CheckKind(); !checked) return checked;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    TIFFGetField(m_Tiff.Get(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(m_Tiff.Get(), TIFFTAG_IMAGELENGTH, &height);
    if (width == 0 || height == 0 || width > MaximumSide || height > MaximumSide) {
      return Refuse("has a side of no or too many pixels");
    }
    m_Width = width;
    m_Height = height;
    const std::uint64_t strip = TIFFStripSize64(m_Tiff.Get());
    if (RowBytes() > LargestRow) return Refuse("has rows of more than 64 MiB");
    if (strip > std::max<std::uint64_t>(RowBytes(), LargestStrip)) {
      return Refuse("has strips of more than 4 MiB");
    }
    if (static_cast<std::uint64_t>(TIFFScanlineSize64(m_Tiff.Get())) != RowBytes()) {
      return Refuse("has rows of an unexpected size");
    }
    if (std::uint64_t{RowBytes()} * m_Height / HighestCompression > bytes) {
      return Refuse("claims more pixels than its size can hold");
    }
    return {};
  }

  Expected<void> ReadRows(std::span<std::uint8_t> rows) override {
    for (std::size_t at = 0; at < rows.size(); at += RowBytes()) {
      if (TIFFReadScanline(m_Tiff.Get(), rows.data() + at, m_Row++, 0) != 1) {
        return Refuse(m_Tiff.LastError());
      }
    }
    return {};
  }

 private:
  Failure Refuse(const std::string& why) const { return FailureOf("'" + m_Path + "': " + why); }

  Expected<void> CheckKind() {
    std::uint16_t bits = 0;
    std::uint16_t samples = 0;
    std::uint16_t planar = 0;
    std::uint16_t photometric = 0;
    TIFFGetFieldDefaulted(m_Tiff.Get(), TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(m_Tiff.Get(), TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetFieldDefaulted(m_Tiff.Get(), TIFFTAG_PLANARCONFIG, &planar);
    if (bits != 8) return Refuse("has not 8 bits a sample");
    if (TIFFIsTiled(m_Tiff.Get())) return Refuse("lies in tiles");
    if (samples == 0 || (samples > 1 && planar != PLANARCONFIG_CONTIG)) {
      return Refuse("has its samples apart");
    }
    if (TIFFGetField(m_Tiff.Get(), TIFFTAG_PHOTOMETRIC, &photometric) != 1 ||
        (photometric != PHOTOMETRIC_MINISBLACK && photometric != PHOTOMETRIC_RGB)) {
      return Refuse("is neither gray with black as 0 nor RGB");
    }
    m_Samples = samples;
    return {};
  }

  std::string m_Path;
  TiffHandle m_Tiff;
  std::uint32_t m_Row = 0;
};

}  // namespace

Expected<std::unique_ptr<PixelFile>> OpenTiff(os::FileDescriptor descriptor, std::string path,
                                              std::uint64_t bytes) {
  auto file = std::make_unique<TiffReader>(std::move(descriptor), std::move(path));
  if (auto read = file->ReadHeader(bytes); !read) return read.Error();
  return std::unique_ptr<PixelFile>(std::move(file));
}

}  // namespace rastrel::odalis
