#include <cairo.h>
#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "host/drawing/image_picture.h"
#include "host/drawing/picture_formats.h"

/// TIFF files as pictures.
namespace rastrel::drawing {

using graphics::MaximumGraphicPixels;

namespace {

constexpr double CentimetresPerInch = 2.54;
// The maximum size of one allocation: a strip as large as the largest image.
constexpr tmsize_t LargestAllocation = tmsize_t{8} * MaximumGraphicPixels;

// A file in memory, as the library reads one.
struct Source {
  const std::string& bytes;
  std::uint64_t place = 0;
  std::string fault;  // the library's message for the first fault
};

Source& SourceOf(thandle_t handle) { return *static_cast<Source*>(handle); }

tmsize_t Read(thandle_t handle, void* target, tmsize_t count) {
  Source& source = SourceOf(handle);
  if (count <= 0 || source.place >= source.bytes.size()) return 0;
  const auto wanted = static_cast<std::uint64_t>(count);
  const std::uint64_t had = std::min(wanted, source.bytes.size() - source.place);
  std::memcpy(target, source.bytes.data() + source.place, had);
  source.place += had;
  return static_cast<tmsize_t>(had);
}

tmsize_t Write(thandle_t /*handle*/, void* /*bytes*/, tmsize_t /*count*/) { return -1; }

toff_t Seek(thandle_t handle, toff_t offset, int whence) {
  Source& source = SourceOf(handle);
  const std::uint64_t base = whence == SEEK_CUR   ? source.place
                             : whence == SEEK_END ? source.bytes.size()
                                                  : 0;
  source.place = base + offset;
  return source.place;
}

int Close(thandle_t /*handle*/) { return 0; }
toff_t Size(thandle_t handle) { return SourceOf(handle).bytes.size(); }

int KeepFault(TIFF* /*file*/, void* target, const char* /*module*/, const char* format,
              va_list arguments) {
  Source& source = *static_cast<Source*>(target);
  if (!source.fault.empty()) return 1;
  char text[256];
  std::vsnprintf(text, sizeof text, format, arguments);
  source.fault = text;
  return 1;
}
int PassOver(TIFF* /*file*/, void* /*target*/, const char* /*module*/, const char* /*format*/,
             va_list /*arguments*/) {
  return 1;
}

struct FileEnd {
  void operator()(TIFF* file) const { TIFFClose(file); }
  void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};
using File = std::unique_ptr<TIFF, FileEnd>;

File Open(Source& source) {
  const std::unique_ptr<TIFFOpenOptions, FileEnd> options(TIFFOpenOptionsAlloc());
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), LargestAllocation);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), KeepFault, &source);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), PassOver, nullptr);
  return File(TIFFClientOpenExt("placed", "rm", &source, Read, Write, Seek, Close, Size, nullptr,
                                nullptr, options.get()));
}

Resolution ResolutionOf(TIFF* file) {
  float x = 0;
  float y = 0;
  std::uint16_t unit = RESUNIT_INCH;
  TIFFGetField(file, TIFFTAG_XRESOLUTION, &x);
  TIFFGetField(file, TIFFTAG_YRESOLUTION, &y);
  TIFFGetFieldDefaulted(file, TIFFTAG_RESOLUTIONUNIT, &unit);
  if (unit == RESUNIT_INCH) return Plausible(x, y);
  if (unit == RESUNIT_CENTIMETER) return Plausible(x * CentimetresPerInch, y * CentimetresPerInch);
  return {};
}

Failure NotWhole(const Source& source) {
  return FailureOf("it is no whole TIFF file" +
                   (source.fault.empty() ? std::string() : ": " + source.fault));
}

// From red, green, blue and alpha in the order of rising bits to the drawing library's order.
std::uint32_t Reordered(std::uint32_t pixel) {
  return TIFFGetA(pixel) << 24 | TIFFGetR(pixel) << 16 | TIFFGetG(pixel) << 8 | TIFFGetB(pixel);
}

}  // namespace

OpenedPicture OpenTiff(const std::string& bytes) {
  Source source{bytes, 0, {}};
  const File file = Open(source);
  if (!file) return NotWhole(source);
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  TIFFGetField(file.get(), TIFFTAG_IMAGEWIDTH, &width);
  TIFFGetField(file.get(), TIFFTAG_IMAGELENGTH, &height);
  if (const auto size = CheckImageSize(width, height); !size) return size.Error();
  std::vector<std::uint32_t> pixels(std::size_t{width} * height);
  if (TIFFReadRGBAImageOriented(file.get(), width, height, pixels.data(), ORIENTATION_TOPLEFT, 1) ==
      0) {
    return NotWhole(source);
  }
  Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(width),
                                             static_cast<int>(height)));
  unsigned char* target = cairo_image_surface_get_data(surface.get());
  if (!target) return FailureOf("there is no memory for its pixels");
  // Rows of whole pixels of 4 bytes need no padding.
  std::ranges::transform(pixels, pixels.begin(), Reordered);
  std::memcpy(target, pixels.data(), pixels.size() * sizeof pixels[0]);
  cairo_surface_mark_dirty(surface.get());
  return std::unique_ptr<Picture>(
      std::make_unique<ImagePicture>(std::move(surface), ResolutionOf(file.get()), nullptr));
}

}  // namespace rastrel::drawing
