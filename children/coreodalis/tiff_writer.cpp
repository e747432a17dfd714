#include "children/coreodalis/tiff_writer.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "children/coreodalis/tiff_handle.h"

namespace rastrel::odalis {
namespace {

constexpr std::uint64_t StripBytes = 64u << 10;
/// LZW can make noise larger, by less than a half; this leaves room below 4 GiB for that.
constexpr std::uint64_t BigTiffFrom = 2'800'000'000u;

bool IsInk(ColorModel model) { return model == ColorModel::Cmyk || model == ColorModel::Inks; }

class TiffWriter final : public ImageWriter {
 public:
  TiffWriter(os::FileDescriptor descriptor, std::string name, const ImageShape& shape)
      : m_Name(std::move(name)),
        m_Shape(shape),
        m_Inverted(IsInk(shape.model)),
        m_Row(shape.RowBytes()),
        m_Tiff(std::move(descriptor), m_Name, Mode(shape)) {}

  Expected<void> WriteHeader() {
    if (!m_Tiff.Get()) return Refuse();
    SetForm();
    SetColors();
    if (m_Tiff.HasFailed()) return Refuse();
    return {};
  }

  Expected<void> WriteRow(std::span<const std::uint8_t> row) override {
    // The library changes the row in place for its differences.
    std::copy(row.begin(), row.end(), m_Row.begin());
    if (m_Inverted) {
      for (std::uint8_t& sample : m_Row) sample = static_cast<std::uint8_t>(255 - sample);
    }
    if (TIFFWriteScanline(m_Tiff.Get(), m_Row.data(), m_Line++, 0) != 1 || m_Tiff.HasFailed()) {
      return Refuse();
    }
    return {};
  }

  Expected<void> Finish() override {
    const bool flushed = TIFFFlush(m_Tiff.Get()) == 1;
    m_Tiff.Close();
    if (!flushed || m_Tiff.HasFailed()) return Refuse();
    return {};
  }

 private:
  static const char* Mode(const ImageShape& shape) {
    return std::uint64_t{shape.RowBytes()} * shape.height > BigTiffFrom ? "w8" : "w";
  }

  Failure Refuse() const { return FailureOf("writing '" + m_Name + "': " + m_Tiff.LastError()); }

  template <typename... Values>
  void Set(std::uint32_t tag, Values... values) {
    TIFFSetField(m_Tiff.Get(), tag, values...);
  }

  void SetForm() {
    const std::uint64_t rows = std::max<std::uint64_t>(1, StripBytes / m_Shape.RowBytes());
    Set(TIFFTAG_IMAGEWIDTH, m_Shape.width);
    Set(TIFFTAG_IMAGELENGTH, m_Shape.height);
    Set(TIFFTAG_BITSPERSAMPLE, 8);
    Set(TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(m_Shape.planes.size()));
    Set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    Set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    Set(TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    Set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    Set(TIFFTAG_ROWSPERSTRIP,
        static_cast<std::uint32_t>(std::min<std::uint64_t>(rows, m_Shape.height)));
    Set(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    Set(TIFFTAG_XRESOLUTION, m_Shape.xResolution);
    Set(TIFFTAG_YRESOLUTION, m_Shape.yResolution);
    Set(TIFFTAG_SOFTWARE, "Rastrel");
  }

  void SetColors() {
    switch (m_Shape.model) {
      case ColorModel::Gray: Set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK); break;
      case ColorModel::Rgb: Set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB); break;
      case ColorModel::Cmyk:
        Set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_SEPARATED);
        Set(TIFFTAG_INKSET, INKSET_CMYK);
        break;
      case ColorModel::Inks: SetInks(); break;
    }
  }

  /// The names follow one another, each with its zero byte; the library counts them.
  void SetInks() {
    std::string names;
    for (const std::string& plane : m_Shape.planes) {
      std::string name = plane;
      std::replace(name.begin(), name.end(), '\0', '_');
      names += (name.empty() ? "unnamed" : name) + '\0';
    }
    Set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_SEPARATED);
    Set(TIFFTAG_INKSET, INKSET_MULTIINK);
    Set(TIFFTAG_NUMBEROFINKS, static_cast<int>(m_Shape.planes.size()));
    Set(TIFFTAG_INKNAMES, static_cast<int>(names.size()), names.c_str());
  }

  std::string m_Name;
  ImageShape m_Shape;
  bool m_Inverted;
  std::vector<std::uint8_t> m_Row;
  TiffHandle m_Tiff;
  std::uint32_t m_Line = 0;
};

}  // namespace

Expected<std::unique_ptr<ImageWriter>> MakeTiffWriter(int descriptor, const std::string& name,
                                                      const ImageShape& shape) {
  os::FileDescriptor own(::fcntl(descriptor, F_DUPFD_CLOEXEC, 3));
  if (!own.IsOpen()) return Failure{"dup", name, errno};
  auto writer = std::make_unique<TiffWriter>(std::move(own), name, shape);
  if (auto written = writer->WriteHeader(); !written) return written.Error();
  return std::unique_ptr<ImageWriter>(std::move(writer));
}

}  // namespace rastrel::odalis
