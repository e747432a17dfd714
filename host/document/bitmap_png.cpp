#include "host/document/bitmap_png.h"

#include <png.h>

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <new>

namespace rastrel::document {

namespace {

constexpr std::size_t ChunkSize = std::size_t{1} << 18;

// A bitmap on its way into a file. The library leaves a step that fails by a jump over its own
// frames and those of the step, which therefore own nothing.
class Writer {
 public:
  Writer(const BitmapPixels& pixels, const PngForm& form)
      : m_Pixels(pixels),
        m_Form(form),
        m_Png(png_create_write_struct(PNG_LIBPNG_VER_STRING, this, Fail, nullptr)) {
    if (m_Png != nullptr) m_Info = png_create_info_struct(m_Png);
  }
  ~Writer() { png_destroy_write_struct(&m_Png, &m_Info); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  // The file; empty if there is no memory for it.
  std::string Write() {
    if (m_Png == nullptr || m_Info == nullptr || !Run(&Writer::WriteHead)) return {};
    for (int row = 0; row < m_Pixels.height; ++row) {
      m_Row = m_Pixels.Row(row).data();
      if (!Run(&Writer::WriteRow)) return {};
    }
    return Run(&Writer::WriteEnd) ? std::move(m_File) : std::string();
  }

 private:
  bool Run(void (Writer::*step)()) {
    if (setjmp(png_jmpbuf(m_Png)) != 0) return false;
    (this->*step)();
    return true;
  }

  void WriteHead() {
    png_set_write_fn(m_Png, this, Append, nullptr);
    png_set_user_limits(m_Png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_compression_level(m_Png, std::clamp(m_Form.level, 1, 9));
    png_set_compression_strategy(m_Png, 0);  // also after filters: sheets have long even runs
    png_set_compression_buffer_size(m_Png, ChunkSize);
    // Sheets of even color are mostly zeros by one of these.
    png_set_filter(m_Png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE | PNG_FILTER_SUB | PNG_FILTER_UP);
    png_set_IHDR(m_Png, m_Info, static_cast<png_uint_32>(m_Pixels.width),
                 static_cast<png_uint_32>(m_Pixels.height), 8,
                 m_Pixels.gray ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (m_Form.dpiX > 0 && m_Form.dpiY > 0)
      png_set_pHYs(m_Png, m_Info, PerMetre(m_Form.dpiX), PerMetre(m_Form.dpiY),
                   PNG_RESOLUTION_METER);
    png_write_info(m_Png, m_Info);
    if (!m_Pixels.gray) png_set_bgr(m_Png);  // blue is first in a bitmap
  }
  // NOLINTNEXTLINE: the library's bytes are unsigned
  void WriteRow() { png_write_row(m_Png, reinterpret_cast<png_const_bytep>(m_Row)); }
  void WriteEnd() { png_write_end(m_Png, nullptr); }

  static png_uint_32 PerMetre(double dpi) {
    constexpr double inchesPerMetre = 1 / 0.0254;
    return static_cast<png_uint_32>(
        std::clamp(std::round(dpi * inchesPerMetre), 1.0, double{PNG_UINT_31_MAX}));
  }

  static void Append(png_structp png, png_bytep bytes, png_size_t count) {
    try {
      // NOLINTNEXTLINE: the library's bytes are unsigned
      static_cast<Writer*>(png_get_io_ptr(png))
          ->m_File.append(reinterpret_cast<char*>(bytes), count);
      return;
    } catch (const std::bad_alloc&) {
    }
    png_error(png, "there is no memory");  // outside of the handler, which it jumps over
  }
  static void Fail(png_structp png, png_const_charp) { png_longjmp(png, 1); }

  const BitmapPixels& m_Pixels;
  const PngForm& m_Form;
  png_structp m_Png;
  png_infop m_Info = nullptr;
  const std::byte* m_Row = nullptr;
  std::string m_File;
};

}  // namespace

std::string PngOfBitmap(const BitmapPixels& pixels, const PngForm& form) {
  return Writer(pixels, form).Write();
}

}  // namespace rastrel::document
