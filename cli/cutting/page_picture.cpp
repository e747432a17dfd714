#include "cli/cutting/page_picture.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "cfplane/pixel_file.h"
#include "cli/console/unwritten_file.h"
#include "pages/page_info.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

using cutting::ProcessColors;

Expected<PagePicture::Part> OpenPart(const std::string& directory, const pages::PageInfo& info,
                                     const std::string& name, std::size_t samples) {
  const auto listed = std::ranges::find(info.files, name, &pages::PageFile::name);
  if (listed == info.files.end()) return FailureOf("the page lists no file of its picture");
  const auto pixels = planes::PixelFile::Open(directory, *listed);
  if (!pixels) return pixels.Error();
  const bool fits = pixels->Width() == info.width && pixels->Height() == info.height &&
                    pixels->Samples() == samples && pixels->IsInOnePiece();
  if (!fits) return FailureOf("the picture of the page has another form than the page says");
  auto file = os::RandomAccessFile::Open(os::FromNative(directory + "/" + name));
  if (!file) return file.Error();
  return PagePicture::Part{*std::move(file), pixels->FirstSampleAt()};
}

// Process colors come first in a page's planes.
cutting::PixelInks InksOf(const pages::PageInfo& info) {
  if (info.color == pages::PageColor::Gray) return {.process = ProcessColors::Gray};
  if (info.color == pages::PageColor::Rgb) return {.process = ProcessColors::Rgb};
  cutting::PixelInks inks{.process = ProcessColors::Cmyk};
  for (std::size_t i = 4; i < info.planes.size(); ++i) {
    constexpr pages::InkColor UnknownLook{0, 0, 0, 1};
    inks.spots.push_back({info.planes[i].name, info.planes[i].ink.value_or(UnknownLook)});
  }
  return inks;
}

Expected<void> ReadWhole(PagePicture::Part& part, std::uint64_t offset, std::span<char> bytes) {
  const auto read = part.file.ReadAt(part.offset + offset, bytes);
  if (!read) return read.Error();
  if (*read < bytes.size()) return FailureOf("the picture of the page is cut short");
  return {};
}

}  // namespace

Expected<PagePicture> OpenPagePicture(const std::string& directory) {
  const auto info = pages::ReadPageInfo(directory);
  if (!info) return info.Error();
  PagePicture picture{.parts = {},
                      .inks = InksOf(*info),
                      .width = info->width,
                      .height = info->height,
                      .xResolution = info->xResolution,
                      .yResolution = info->yResolution};
  const std::size_t samples = picture.inks.Samples();
  if (info->bits != 8 || info->planes.size() != samples)
    return FailureOf("the page has no picture of 8 bits a sample");
  const bool isSeparate = picture.inks.process == ProcessColors::Cmyk;
  for (std::size_t i = 0; i < (isSeparate ? samples : 1); ++i) {
    auto part = OpenPart(directory, *info, info->planes[i].file, isSeparate ? 1 : samples);
    if (!part) return part.Error();
    picture.parts.push_back(*std::move(part));
  }
  return picture;
}

Expected<void> PagePicture::Read(std::uint64_t row, std::uint64_t column, std::span<char> bytes) {
  const std::size_t samples = inks.Samples();
  const std::uint64_t first = row * width + column;
  if (parts.size() == 1) return ReadWhole(parts.front(), first * samples, bytes);
  std::vector<char> plane(bytes.size() / samples);
  for (std::size_t i = 0; i < samples; ++i) {
    if (auto read = ReadWhole(parts[i], first, plane); !read) return read;
    for (std::size_t x = 0; x < plane.size(); ++x) bytes[x * samples + i] = plane[x];
  }
  return {};
}

cutting::PlacedPixels PixelsOf(const std::shared_ptr<PagePicture>& picture, const PixelArea& area) {
  return {.width = area.width,
          .height = area.height,
          .inks = picture->inks,
          .read =
              [picture, area](std::size_t fromTop, std::span<char> row) {
                return picture->Read(area.top + fromTop, area.left, row);
              },
          .pixelWidth = picture->PixelWidth(),
          .pixelHeight = picture->PixelHeight()};
}

cutting::PrintPage MarkedPage(const std::shared_ptr<PagePicture>& picture,
                              const PictureMargins& margins,
                              const std::vector<cutting::RegistrationMark>& marks, bool inAllInks) {
  const double pixelWidth = picture->PixelWidth();
  const double pixelHeight = picture->PixelHeight();
  cutting::PrintPage page{.width = pixelWidth * (margins.left + picture->width + margins.right),
                          .height = pixelHeight * (margins.bottom + picture->height + margins.top)};
  cutting::PlacedPixels pixels =
      PixelsOf(picture, {.width = picture->width, .height = picture->height});
  pixels.place.e = margins.left * pixelWidth;
  pixels.place.f = margins.bottom * pixelHeight;
  page.pictures.push_back(std::move(pixels));
  for (cutting::PlacedPixels& mark :
       cutting::PicturesOf(marks, picture->inks, pixelWidth, pixelHeight, inAllInks))
    page.pictures.push_back(std::move(mark));
  return page;
}

Expected<void> WritePrintFile(const cutting::PrintPage& page, const std::string& path) {
  auto file = os::OutputFile::Create(path, os::Existing::Followed);
  if (!file) ThrowUnwritten(file.Error());
  const auto written =
      cutting::WritePrintPage(page, [&file](std::string_view bytes) { return file->Write(bytes); });
  if (!written) return written;
  if (const auto named = file->Commit(); !named) ThrowUnwritten(named.Error());
  return {};
}

}  // namespace rastrel::cli
