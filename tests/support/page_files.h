#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "pages/page_info.h"
#include "tests/support/scratch_directory.h"

/// Page directories for tests, with pixels of their own.
namespace rastrel::test {

/// The bytes 1, 2, 3 and so on, of which no two neighbors are the same.
inline std::string CountingBytes(std::size_t count) {
  std::string bytes(count, '\0');
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<char>(1 + i % 251);
  return bytes;
}

/// A binary netpbm picture: "P5" or "P6".
inline std::string Netpbm(const char* kind, unsigned width, unsigned height,
                          std::string_view samples) {
  return std::string(kind) + "\n" + std::to_string(width) + " " + std::to_string(height) +
         "\n255\n" + std::string(samples);
}

/// The fields of a gray TIFF file, which a test may spoil.
struct TiffForm {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t rowsPerStrip = 1'000'000;
  std::uint32_t bits = 8;
  std::uint32_t compression = 1;
  std::uint32_t photometric = 1;
  std::uint32_t samples = 1;
  bool isTiled = false;
  bool isBackwards = false;  ///< the last strip lies first in the file
};

inline std::string LittleEndianText(std::uint32_t number, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(number >> 8 * i & 0xFF);
  return text;
}

/// A TIFF file: head, strips, their places and sizes, directory.
inline std::string GrayTiff(const TiffForm& form, std::string_view samples) {
  const std::size_t stripBytes = std::size_t{form.width} * std::min(form.rowsPerStrip, form.height);
  std::vector<std::string_view> strips;
  for (std::size_t at = 0; at < samples.size(); at += stripBytes)
    strips.push_back(samples.substr(at, stripBytes));
  std::string pixels;
  std::vector<std::uint32_t> offsets(strips.size());
  for (std::size_t i = 0; i < strips.size(); ++i) {
    const std::size_t strip = form.isBackwards ? strips.size() - 1 - i : i;
    offsets[strip] = static_cast<std::uint32_t>(8 + pixels.size());
    pixels += strips[strip];
  }
  if (pixels.size() % 2 != 0) pixels += '\0';
  std::string places;
  std::string sizes;
  for (std::size_t i = 0; i < strips.size(); ++i) {
    places += LittleEndianText(offsets[i], 4);
    sizes += LittleEndianText(static_cast<std::uint32_t>(strips[i].size()), 4);
  }
  const auto count = static_cast<std::uint32_t>(strips.size());
  const auto placesAt = static_cast<std::uint32_t>(8 + pixels.size());
  const auto entry = [](std::uint32_t tag, std::uint32_t number, std::uint32_t value,
                        std::uint32_t type = 4) {
    return LittleEndianText(tag, 2) + LittleEndianText(type, 2) + LittleEndianText(number, 4) +
           LittleEndianText(value, 4);
  };
  std::string entries = entry(256, 1, form.width) + entry(257, 1, form.height) +
                        entry(258, 1, form.bits, 3) + entry(259, 1, form.compression, 3) +
                        entry(262, 1, form.photometric, 3) +
                        entry(273, count, count == 1 ? offsets[0] : placesAt) +
                        entry(277, 1, form.samples, 3) + entry(278, 1, form.rowsPerStrip);
  const auto sizesAt = static_cast<std::uint32_t>(placesAt + places.size());
  entries += entry(279, count, count == 1 ? static_cast<std::uint32_t>(strips[0].size()) : sizesAt);
  if (form.isTiled) entries += entry(322, 1, 16);
  const auto directoryAt = static_cast<std::uint32_t>(sizesAt + sizes.size());
  return std::string("II*\0", 4) + LittleEndianText(directoryAt, 4) + pixels + places + sizes +
         LittleEndianText(static_cast<std::uint32_t>(entries.size() / 12), 2) + entries +
         LittleEndianText(0, 4);
}

/// Writes the description of a page directory whose files lie there already. `planes` name them.
inline pages::PageInfo DescribePage(const ScratchDirectory& root, const std::string& directory,
                                    unsigned width, unsigned height, pages::PageColor color,
                                    std::vector<pages::PagePlane> planes) {
  pages::PageInfo info;
  info.job = "shopfront";
  info.width = width;
  info.height = height;
  info.xResolution = 300;
  info.yResolution = 150;
  info.color = color;
  info.planes = std::move(planes);
  for (const pages::PagePlane& plane : info.planes) {
    const bool isListed = std::any_of(info.files.begin(), info.files.end(),
                                      [&](const auto& file) { return file.name == plane.file; });
    if (isListed) continue;
    auto file = pages::DescribeFile(root.Path(directory), plane.file);
    if (!file) std::abort();
    info.files.push_back(std::move(*file));
  }
  root.Write(directory + "/.info", pages::FormatPageInfo(info));
  return info;
}

/// An RGB page with those samples: "page.ppm" and its description.
inline pages::PageInfo WriteRgbPage(const ScratchDirectory& root, const std::string& directory,
                                    unsigned width, unsigned height, std::string_view samples) {
  root.Write(directory + "/page.ppm", Netpbm("P6", width, height, samples));
  return DescribePage(root, directory, width, height, pages::PageColor::Rgb,
                      {{"Red", "page.ppm", 0}, {"Green", "page.ppm", 1}, {"Blue", "page.ppm", 2}});
}

/// A gray page likewise.
inline pages::PageInfo WriteGrayPage(const ScratchDirectory& root, const std::string& directory,
                                     unsigned width, unsigned height, std::string_view samples) {
  root.Write(directory + "/page.pgm", Netpbm("P5", width, height, samples));
  return DescribePage(root, directory, width, height, pages::PageColor::Gray,
                      {{"Gray", "page.pgm", 0}});
}

/// A page of CMYK and one spot color, whose planes are all 1, 2, 3, 4 and 5.
inline pages::PageInfo WriteSeparatedPage(const ScratchDirectory& root,
                                          const std::string& directory, unsigned width,
                                          unsigned height) {
  std::vector<pages::PagePlane> planes{{"Cyan", "cyan.tif", 0},
                                       {"Magenta", "magenta.tif", 0},
                                       {"Yellow", "yellow.tif", 0},
                                       {"Black", "black.tif", 0},
                                       {"Gold \xC3\xA4", "spot-1.tif", 0}};
  char sample = 1;
  for (const pages::PagePlane& plane : planes)
    root.Write(directory + "/" + plane.file,
               GrayTiff({.width = width, .height = height, .rowsPerStrip = 2},
                        std::string(std::size_t{width} * height, sample++)));
  return DescribePage(root, directory, width, height, pages::PageColor::Separations,
                      std::move(planes));
}

}  // namespace rastrel::test
