#pragma once

#include <cairo-pdf.h>
#include <cairo.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <tiffio.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/scratch_directory.h"

/// Small files of every kind that can be placed: a red upper half over a blue lower one, 20 by 10.
namespace rastrel::test {

inline cairo_status_t AppendTo(void* text, const unsigned char* bytes, unsigned count) {
  static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), count);
  return CAIRO_STATUS_SUCCESS;
}

inline void PaintHalves(cairo_surface_t* surface) {
  cairo_t* context = cairo_create(surface);
  cairo_set_source_rgb(context, 1, 0, 0);
  cairo_rectangle(context, 0, 0, 20, 5);
  cairo_fill(context);
  cairo_set_source_rgb(context, 0, 0, 1);
  cairo_rectangle(context, 0, 5, 20, 5);
  cairo_fill(context);
  cairo_destroy(context);
}

inline std::string PngFile() {
  std::string file;
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 20, 10);
  PaintHalves(surface);
  cairo_surface_write_to_png_stream(surface, AppendTo, &file);
  cairo_surface_destroy(surface);
  return file;
}

/// With a pHYs chunk of that unit.
inline std::string PngFile(std::uint32_t x, std::uint32_t y, char unit) {
  std::string chunk{'\0', '\0', '\0', '\x9', 'p', 'H', 'Y', 's'};
  for (const std::uint32_t value : {x, y}) {
    for (int shift = 24; shift >= 0; shift -= 8) chunk += static_cast<char>(value >> shift & 0xFF);
  }
  chunk += unit;
  std::uint32_t sum = 0xFFFFFFFF;
  for (std::size_t i = 4; i < chunk.size(); ++i) {
    sum ^= static_cast<unsigned char>(chunk[i]);
    for (int bit = 0; bit < 8; ++bit) sum = (sum & 1) != 0 ? sum >> 1 ^ 0xEDB88320 : sum >> 1;
  }
  sum = ~sum;
  for (int shift = 24; shift >= 0; shift -= 8) chunk += static_cast<char>(sum >> shift & 0xFF);
  return PngFile().insert(33, chunk);
}

/// The head of a PNG of that size, and no pixels.
inline std::string PngHead(std::uint32_t width, std::uint32_t height) {
  std::string file = PngFile().substr(0, 33);
  for (int i = 0; i < 4; ++i) {
    file[static_cast<std::size_t>(16 + i)] = static_cast<char>(width >> (24 - 8 * i) & 0xFF);
    file[static_cast<std::size_t>(20 + i)] = static_cast<char>(height >> (24 - 8 * i) & 0xFF);
  }
  return file;
}

/// With the resolution in that unit of JFIF: 0 none, 1 dots to the inch, 2 to the centimetre.
inline std::string JpegFile(char unit, unsigned char density) {
  GdkPixbuf* pixels = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, 20, 10);
  gdk_pixbuf_fill(pixels, 0x0000FFFF);
  for (int y = 0; y < 5; ++y) {
    for (int x = 0; x < 20; ++x) {
      guchar* pixel = gdk_pixbuf_get_pixels(pixels) + y * gdk_pixbuf_get_rowstride(pixels) + x * 3;
      pixel[0] = 255;
      pixel[1] = pixel[2] = 0;
    }
  }
  gchar* bytes = nullptr;
  gsize count = 0;
  gdk_pixbuf_save_to_buffer(pixels, &bytes, &count, "jpeg", nullptr, "quality", "100", nullptr);
  std::string file(bytes, count);
  g_free(bytes);
  g_object_unref(pixels);
  // The head of JFIF is the first segment: its unit is at 13, and two densities follow.
  file[13] = unit;
  file[14] = file[16] = 0;
  file[15] = file[17] = static_cast<char>(density);
  return file;
}

/// With the resolution in that unit of TIFF: 1 none, 2 dots to the inch, 3 to the centimetre.
inline std::string TiffFile(std::uint16_t unit, float density) {
  const ScratchDirectory directory;
  TIFF* file = TIFFOpen(directory.Path("a.tif").c_str(), "w");
  TIFFSetField(file, TIFFTAG_IMAGEWIDTH, 20);
  TIFFSetField(file, TIFFTAG_IMAGELENGTH, 10);
  TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, 3);
  TIFFSetField(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
  TIFFSetField(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(file, TIFFTAG_RESOLUTIONUNIT, unit);
  if (density > 0) {
    TIFFSetField(file, TIFFTAG_XRESOLUTION, static_cast<double>(density));
    TIFFSetField(file, TIFFTAG_YRESOLUTION, static_cast<double>(density));
  }
  for (std::uint32_t y = 0; y < 10; ++y) {
    std::vector<unsigned char> row(60, 0);
    for (std::size_t x = 0; x < 20; ++x) row[x * 3 + (y < 5 ? 0 : 2)] = 255;
    TIFFWriteScanline(file, row.data(), y, 0);
  }
  TIFFClose(file);
  return directory.Read("a.tif");
}

/// A page of 20 by 10 points.
inline std::string PdfFile() {
  std::string file;
  cairo_surface_t* surface = cairo_pdf_surface_create_for_stream(AppendTo, &file, 20, 10);
  PaintHalves(surface);
  cairo_surface_destroy(surface);
  return file;
}

inline std::string SvgFile(const std::string& attributes) {
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" " + attributes +
         "><rect width=\"20\" height=\"5\" fill=\"#f00\"/>"
         "<rect y=\"5\" width=\"20\" height=\"5\" fill=\"#00f\"/></svg>";
}

/// With a box whose lower left corner is no origin.
inline std::string EpsFile(const std::string& body =
                               "1 0 0 setrgbcolor 100 205 20 5 rectfill\n"
                               "0 0 1 setrgbcolor 100 200 20 5 rectfill\n",
                           const std::string& box = "100 200 120 210") {
  return "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: " + box + "\n%%EndComments\n" + body + "%%EOF\n";
}

}  // namespace rastrel::test
