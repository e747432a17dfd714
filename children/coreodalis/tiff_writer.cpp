#include "children/coreodalis/tiff_writer.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "children/coreodalis/band_queue.h"
#include "children/coreodalis/plain_tiff_file.h"
#include "children/coreodalis/tiff_form.h"
#include "children/coreodalis/tiff_handle.h"
#include "children/coreodalis/tiff_strip_encoder.h"

namespace rastrel::odalis {
namespace {

/// Bands of several strips, so that handing them on costs little beside encoding them.
constexpr std::size_t BandBytes = std::size_t{256} << 10;
/// The compressions can make noise larger, LZW by less than a half; this leaves room below 4 GiB
/// for that.
constexpr std::uint64_t BigTiffFrom = 2'800'000'000u;

class TiffWriter final : public ImageWriter {
 public:
  TiffWriter(os::FileDescriptor descriptor, const ImageOrder& order, const ImageShape& shape,
             WorkerPool& pool)
      : m_Name(order.name),
        m_Shape(shape),
        m_Compression(order.compression),
        m_Tiff(std::move(descriptor), m_Name, Mode(shape)),
        m_Bands(
            pool, FormOf(order, shape),
            [this] { return MakeTiffStripEncoder(m_Shape, m_Compression); },
            [this](const Band& band) { return WriteStrips(band); }) {}

  Expected<void> WriteHeader() {
    if (!m_Tiff.Get()) return Refuse(m_Tiff.LastError());
    SetForm();
    SetColors();
    if (m_Tiff.HasFailed()) return Refuse(m_Tiff.LastError());
    return {};
  }

  Expected<std::span<std::uint8_t>> Room() override { return Named(m_Bands.Room()); }
  Expected<void> Take(std::size_t bytes) override { return Named(m_Bands.Take(bytes)); }

  Expected<void> Finish() override {
    if (auto written = Named(m_Bands.Finish()); !written) return written;
    const bool flushed = TIFFFlush(m_Tiff.Get()) == 1;
    m_Tiff.Close();
    if (!flushed || m_Tiff.HasFailed()) return Refuse(m_Tiff.LastError());
    return {};
  }

 private:
  static const char* Mode(const ImageShape& shape) {
    return std::uint64_t{shape.RowBytes()} * shape.height > BigTiffFrom ? "w8" : "w";
  }

  static BandQueue::Form FormOf(const ImageOrder& order, const ImageShape& shape) {
    BandQueue::Form form;
    form.rowBytes = shape.RowBytes();
    const std::size_t strip = RowsPerStrip(shape) * shape.RowBytes();
    form.rowsPerBand = std::max<std::size_t>(1, BandBytes / strip) * RowsPerStrip(shape);
    form.rows = shape.height;
    form.share = order.share;
    form.isEncodedAtOnce = order.compression == devices::Compression::None;
    return form;
  }

  [[nodiscard]] Failure Refuse(const std::string& why) const {
    return FailureOf("writing '" + m_Name + "': " + why);
  }

  /// The same result, whose failure has the file's name.
  template <typename Result>
  Result Named(Result result) const {
    if (result) return result;
    return Refuse(Describe(result.Error()));
  }

  Expected<void> WriteStrips(const Band& band) {
    std::uint8_t* from = const_cast<std::uint8_t*>(band.encoded.data());  // only read
    for (const std::size_t size : band.pieces) {
      const auto count = static_cast<tmsize_t>(size);
      if (TIFFWriteRawStrip(m_Tiff.Get(), m_Strip++, from, count) != count || m_Tiff.HasFailed())
        return FailureOf(m_Tiff.LastError());
      from += size;
    }
    return {};
  }

  template <typename... Values>
  void Set(std::uint32_t tag, Values... values) {
    TIFFSetField(m_Tiff.Get(), tag, values...);
  }

  void SetForm() {
    SetStripForm(m_Tiff.Get(), m_Shape, m_Compression, m_Shape.height);
    Set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
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
  devices::Compression m_Compression;
  TiffHandle m_Tiff;
  std::uint32_t m_Strip = 0;
  BandQueue m_Bands;  ///< last: it uses the others
};

}  // namespace

Expected<std::unique_ptr<ImageWriter>> MakeTiffWriter(const ImageOrder& order,
                                                      const ImageShape& shape, WorkerPool& pool) {
  // The same bytes whether they are written here or the page's own file is handed on.
  if (order.compression == devices::Compression::None && PlainTiffOf(shape))
    return MakePlainTiffWriter(order, shape);
  os::FileDescriptor own(::fcntl(order.descriptor, F_DUPFD_CLOEXEC, 3));
  if (!own.IsOpen()) return Failure{"dup", order.name, errno};
  auto writer = std::make_unique<TiffWriter>(std::move(own), order, shape, pool);
  if (auto written = writer->WriteHeader(); !written) return written.Error();
  return std::unique_ptr<ImageWriter>(std::move(writer));
}

}  // namespace rastrel::odalis
