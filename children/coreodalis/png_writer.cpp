#include "children/coreodalis/png_writer.h"

#include <png.h>

#include <cmath>
#include <csetjmp>
#include <utility>

#include "rastrel/platform/os/file.h"

namespace rastrel::odalis {
namespace {

constexpr double InchesPerMetre = 39.3700787402;
constexpr int FastCompression = 3;

class PngWriter final : public ImageWriter {
 public:
  PngWriter(int descriptor, std::string name, const ImageShape& shape)
      : m_Descriptor(descriptor), m_Name(std::move(name)), m_Shape(shape) {
    if (shape.model == ColorModel::Cmyk) m_Row.resize(std::size_t{shape.width} * 3);
  }
  ~PngWriter() override { png_destroy_write_struct(&m_Png, &m_Info); }
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;

  Expected<void> WriteHeader() {
    m_Png = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, TakeError, TakeWarning);
    if (m_Png) m_Info = png_create_info_struct(m_Png);
    if (!m_Png || !m_Info) return FailureOf("writing '" + m_Name + "': out of memory");
    return Guarded(&PngWriter::EmitHeader);
  }

  Expected<void> WriteRow(std::span<const std::uint8_t> row) override {
    m_Source = row.data();
    if (m_Shape.model == ColorModel::Cmyk) {
      ConvertRow(row);
      m_Source = m_Row.data();
    }
    return Guarded(&PngWriter::EmitRow);
  }

  Expected<void> Finish() override { return Guarded(&PngWriter::EmitEnd); }

 private:
  Expected<void> Guarded(void (PngWriter::*step)()) {
    if (!IsDone(step)) return FailureOf("writing '" + m_Name + "': " + m_Error);
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
    png_set_compression_level(m_Png, FastCompression);
    const int type = m_Shape.model == ColorModel::Gray ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB;
    png_set_IHDR(m_Png, m_Info, m_Shape.width, m_Shape.height, 8, type, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_pHYs(m_Png, m_Info, PerMetre(m_Shape.xResolution), PerMetre(m_Shape.yResolution),
                 PNG_RESOLUTION_METER);
    png_write_info(m_Png, m_Info);
  }
  void EmitRow() { png_write_row(m_Png, m_Source); }
  void EmitEnd() { png_write_end(m_Png, m_Info); }

  static png_uint_32 PerMetre(double perInch) {
    return static_cast<png_uint_32>(std::lround(perInch * InchesPerMetre));
  }

  void ConvertRow(std::span<const std::uint8_t> row) {
    const std::uint8_t* from = row.data();
    std::uint8_t* to = m_Row.data();
    for (unsigned x = 0; x < m_Shape.width; ++x, from += 4) {
      // Samples of ink planes count the bare paper: 255 is no ink.
      const unsigned paper = from[3];
      for (unsigned light = 0; light < 3; ++light) {
        *to++ = static_cast<std::uint8_t>((from[light] * paper + 127) / 255);
      }
    }
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
  png_structp m_Png = nullptr;
  png_infop m_Info = nullptr;
  const std::uint8_t* m_Source = nullptr;
  std::vector<std::uint8_t> m_Row;
  std::string m_Error;
  int m_WriteError = 0;
};

}  // namespace

Expected<std::unique_ptr<ImageWriter>> MakePngWriter(int descriptor, const std::string& name,
                                                     const ImageShape& shape) {
  if (shape.model == ColorModel::Inks) {
    return FailureOf("writing '" + name + "': a PNG file can't hold spot inks; use TIFF or planes");
  }
  auto writer = std::make_unique<PngWriter>(descriptor, name, shape);
  if (auto written = writer->WriteHeader(); !written) return written.Error();
  return std::unique_ptr<ImageWriter>(std::move(writer));
}

}  // namespace rastrel::odalis
