#include "children/coreodalis/png_writer.h"

#include <png.h>

#include <cmath>
#include <csetjmp>
#include <utility>

#include "children/coreodalis/band_queue.h"
#include "children/coreodalis/deflate_encoder.h"
#include "children/coreodalis/png_filter.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::odalis {
namespace {

constexpr double InchesPerMetre = 39.3700787402;

/// CMYK as light, without a profile.
void ConvertRow(std::span<const std::uint8_t> row, std::uint8_t* to) {
  const std::uint8_t* from = row.data();
  for (const std::uint8_t* const end = from + row.size(); from != end; from += 4) {
    // Samples of ink planes count the bare paper: 255 is no ink.
    const unsigned paper = from[3];
    for (unsigned light = 0; light < 3; ++light) {
      *to++ = static_cast<std::uint8_t>((from[light] * paper + 127) / 255);
    }
  }
}

/// Filters and compresses a band's rows.
class PngBandEncoder final : public BandEncoder {
 public:
  PngBandEncoder(const ImageShape& shape, devices::Compression compression)
      : m_Width(shape.width),
        m_IsCmyk(shape.model == ColorModel::Cmyk),
        m_Samples(m_IsCmyk ? 3 : shape.planes.size()),
        m_Compression(compression),
        m_Deflate(compression) {}

  Expected<void> Encode(Band& band) override {
    if (m_IsCmyk) {
      Convert(band.above);
      Convert(band.rows);
    }
    const std::size_t rowBytes = m_Width * m_Samples;
    std::span<const std::uint8_t> above = band.above;
    m_Filtered.clear();
    m_Filtered.reserve(band.rows.size() + band.rows.size() / rowBytes + 2 * (rowBytes + 1));
    for (std::size_t at = 0; at < band.rows.size(); at += rowBytes) {
      const std::span<const std::uint8_t> row = std::span(band.rows).subspan(at, rowBytes);
      if (m_Compression == devices::Compression::None) {
        AppendPlainRow(row, m_Filtered);
      } else {
        AppendFilteredRow(row, above, m_Samples, m_Filtered);
      }
      above = row;
    }
    return m_Deflate.Encode(m_Filtered, band);
  }

 private:
  /// In place: a pixel becomes shorter.
  void Convert(std::vector<std::uint8_t>& rows) const {
    ConvertRow(rows, rows.data());
    rows.resize(rows.size() / 4 * 3);
  }

  std::size_t m_Width;
  bool m_IsCmyk;
  std::size_t m_Samples;
  devices::Compression m_Compression;
  DeflateEncoder m_Deflate;
  std::vector<std::uint8_t> m_Filtered;
};

/// A file whose pixels are one zlib stream, each band in a chunk of its own:
///
///     signature  IHDR  pHYs  IDAT (first band)  IDAT ... IDAT (sum)  IEND
///
/// The library deflates on one thread only, so that it writes the head and frames the chunks.
class PngWriter final : public ImageWriter {
 public:
  PngWriter(const ImageOrder& order, const ImageShape& shape, WorkerPool& pool)
      : m_Descriptor(order.descriptor),
        m_Name(order.name),
        m_Shape(shape),
        m_Compression(order.compression),
        m_Bands(
            pool, DeflatedForm(shape.RowBytes(), shape.height, order.share),
            [this] { return std::make_unique<PngBandEncoder>(m_Shape, m_Compression); },
            [this](const Band& band) { return WriteBand(band); }) {}
  ~PngWriter() override { png_destroy_write_struct(&m_Png, &m_Info); }
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;

  Expected<void> WriteHeader() {
    m_Png = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, TakeError, TakeWarning);
    if (m_Png) m_Info = png_create_info_struct(m_Png);
    if (!m_Png || !m_Info) return FailureOf("writing '" + m_Name + "': out of memory");
    return Named(Guarded(&PngWriter::EmitHeader));
  }

  Expected<std::span<std::uint8_t>> Room() override { return Named(m_Bands.Room()); }
  Expected<void> Take(std::size_t bytes) override { return Named(m_Bands.Take(bytes)); }

  Expected<void> Finish() override {
    if (auto written = Named(m_Bands.Finish()); !written) return written;
    const std::vector<std::uint8_t> sum = m_Sum.Bytes();
    if (auto written = Named(WritePixels(sum)); !written) return written;
    return Named(Guarded(&PngWriter::EmitEnd));
  }

 private:
  /// The same result, whose failure has the file's name.
  template <typename Result>
  Result Named(Result result) const {
    if (result) return result;
    return FailureOf("writing '" + m_Name + "': " + Describe(result.Error()));
  }

  Expected<void> WriteBand(const Band& band) {
    m_Sum.Add(band);
    return WritePixels(band.encoded);
  }
  Expected<void> WritePixels(std::span<const std::uint8_t> bytes) {
    m_Chunk = bytes;
    return Guarded(&PngWriter::EmitPixels);
  }

  Expected<void> Guarded(void (PngWriter::*step)()) {
    if (!IsDone(step)) return FailureOf(m_Error);
    return {};
  }

  /// Calls a step, and returns false after an error in it, which jumps back here over frames of the
  /// C library and of the step. All of these, and this one, therefore own nothing.
  bool IsDone(void (PngWriter::*step)()) {
    if (setjmp(png_jmpbuf(m_Png)) != 0) return false;
    (this->*step)();
    return true;
  }

  void EmitHeader() {
    png_set_write_fn(m_Png, this, Write, nullptr);
    png_set_user_limits(m_Png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    const int type = m_Shape.model == ColorModel::Gray ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB;
    png_set_IHDR(m_Png, m_Info, m_Shape.width, m_Shape.height, 8, type, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_pHYs(m_Png, m_Info, PerMetre(m_Shape.xResolution), PerMetre(m_Shape.yResolution),
                 PNG_RESOLUTION_METER);
    png_write_info(m_Png, m_Info);
  }
  void EmitPixels() { EmitChunk("IDAT", m_Chunk); }
  void EmitEnd() { EmitChunk("IEND", {}); }
  void EmitChunk(const char* name, std::span<const std::uint8_t> bytes) {
    png_write_chunk(m_Png, reinterpret_cast<png_const_bytep>(name), bytes.data(), bytes.size());
  }

  static png_uint_32 PerMetre(double perInch) {
    return static_cast<png_uint_32>(std::lround(perInch * InchesPerMetre));
  }

  static void Write(png_structp png, png_bytep bytes, png_size_t count) {
    auto* self = static_cast<PngWriter*>(png_get_io_ptr(png));
    const std::string_view block(reinterpret_cast<const char*>(bytes), count);
    {
      // Destroyed before the jump, which runs no destructors.
      const auto written = os::WriteAll(self->m_Descriptor, block);
      if (written) return;
      self->m_WriteError = written.Error().error;
    }
    png_error(png, "the file could not be written");
  }

  static void TakeError(png_structp png, png_const_charp text) {
    auto* self = static_cast<PngWriter*>(png_get_error_ptr(png));
    self->m_Error = self->m_WriteError != 0 ? DescribeError(self->m_WriteError) : text;
    png_longjmp(png, 1);
  }
  static void TakeWarning(png_structp, png_const_charp) {}

  int m_Descriptor;
  std::string m_Name;
  ImageShape m_Shape;
  devices::Compression m_Compression;
  png_structp m_Png = nullptr;
  png_infop m_Info = nullptr;
  std::span<const std::uint8_t> m_Chunk;
  StreamSum m_Sum;
  std::string m_Error;
  int m_WriteError = 0;
  BandQueue m_Bands;  ///< last: it uses the others
};

}  // namespace

Expected<std::unique_ptr<ImageWriter>> MakePngWriter(const ImageOrder& order,
                                                     const ImageShape& shape, WorkerPool& pool) {
  if (shape.model == ColorModel::Inks) {
    return FailureOf("writing '" + order.name +
                     "': a PNG file can't hold spot inks; use TIFF or planes");
  }
  auto writer = std::make_unique<PngWriter>(order, shape, pool);
  if (auto written = writer->WriteHeader(); !written) return written.Error();
  return std::unique_ptr<ImageWriter>(std::move(writer));
}

}  // namespace rastrel::odalis
