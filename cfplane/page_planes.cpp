#include "cfplane/page_planes.h"

#include <algorithm>
#include <cerrno>
#include <vector>

#include "cfplane/channels.h"
#include "cfplane/pixel_file.h"

namespace rastrel::planes {
namespace {

// Rows on their way to the block stay in the processor's own memory.
constexpr std::size_t BufferBytes = std::size_t{256} << 10;

// REQUIRES: the description was read, so that each plane's file is listed.
const pages::PageFile& FileOf(const pages::PageInfo& info, const pages::PagePlane& plane) {
  return *std::ranges::find(info.files, plane.file, &pages::PageFile::name);
}

Expected<BlockForm> CheckForm(const pages::PageInfo& info, unsigned samples) {
  const BlockForm form{info.width, info.height, samples};
  if (info.bits != 8)
    return FailureOf("the page has " + std::to_string(info.bits) +
                     " bits a sample, and 8 can be read");
  if (info.width > MaximumSide || info.height > MaximumSide)
    return FailureOf("the page has more than 2000000 pixels to a side");
  if (form.Bytes() > MaximumBlock) return FailureOf("the page's pixels take 4 GiB or more");
  return form;
}

// The file of a block of that form, in which pixels have as many samples or more.
Expected<PixelFile> OpenFor(const std::string& directory, const pages::PageInfo& info,
                            const pages::PagePlane& plane, const BlockForm& form) {
  auto file = PixelFile::Open(directory, FileOf(info, plane));
  if (!file) return file;
  const std::string path = directory + "/" + plane.file;
  if (file->Width() != form.width || file->Height() != form.height)
    return Failure{.what = "read pixels",
                   .where = path,
                   .error = EINVAL,
                   .why = "has " + std::to_string(file->Width()) + " by " +
                          std::to_string(file->Height()) + " pixels, and the page " +
                          std::to_string(form.width) + " by " + std::to_string(form.height)};
  const bool fits = form.samples == 3 ? file->Samples() == 3 : plane.channel < file->Samples();
  if (!fits)
    return Failure{.what = "read pixels",
                   .where = path,
                   .error = EINVAL,
                   .why = "has no sample " + std::to_string(plane.channel) + " in its pixels"};
  return file;
}

// Reads row after row through a buffer; `take` makes a row of the block of a row of the file.
template <typename TakeRow>
Expected<void> ReadRows(PixelFile& file, const Pixels& pixels, TakeRow take) {
  const std::size_t rowBytes = file.RowBytes();
  const std::size_t stride = pixels.form.Stride();
  const std::size_t rowsAtOnce = std::max<std::size_t>(1, BufferBytes / rowBytes);
  std::vector<std::byte> buffer(std::min<std::size_t>(rowsAtOnce, pixels.form.height) * rowBytes);
  std::byte* to = pixels.block.Bytes().data();
  for (std::size_t left = pixels.form.height; left > 0;) {
    const std::size_t rows = std::min(left, rowsAtOnce);
    if (auto read = file.Read(std::span(buffer).first(rows * rowBytes)); !read) return read;
    for (std::size_t row = 0; row < rows; ++row, to += stride)
      take(buffer.data() + row * rowBytes, to);
    left -= rows;
  }
  return {};
}

Expected<void> Fill(PixelFile& file, const Pixels& pixels, unsigned channel) {
  const std::size_t width = pixels.form.width;
  if (pixels.form.samples == 3)
    return ReadRows(file, pixels, [width](const std::byte* from, std::byte* to) {
      SwapRedAndBlue(from, to, width);
    });
  const std::size_t step = file.Samples();
  if (step > 1)
    return ReadRows(file, pixels, [=](const std::byte* from, std::byte* to) {
      TakeChannel(from + channel, step, to, width);
    });
  // The file has the very bytes of the block, but for the padding.
  if (pixels.form.Stride() == width) return file.Read(pixels.block.Bytes());
  return ReadRows(file, pixels,
                  [width](const std::byte* from, std::byte* to) { std::copy_n(from, width, to); });
}

Expected<Pixels> ReadBlock(const std::string& directory, const pages::PageInfo& info,
                           const pages::PagePlane& plane, const BlockForm& form) {
  auto file = OpenFor(directory, info, plane, form);
  if (!file) return file.Error();
  auto block = PixelBlock::Allocate(static_cast<std::size_t>(form.Bytes()));
  if (!block) return FailureAt(directory + "/" + plane.file, block.Error());
  Pixels pixels{form, std::move(*block)};
  if (auto filled = Fill(*file, pixels, plane.channel); !filled) return filled.Error();
  return pixels;
}

}  // namespace

Expected<BlockForm> PictureForm(const pages::PageInfo& info) {
  if (info.color == pages::PageColor::Gray) return CheckForm(info, 1);
  if (info.color != pages::PageColor::Rgb)
    return FailureOf("the page is separated, and is no picture");
  for (unsigned channel = 0; channel < 3; ++channel) {
    const pages::PagePlane& plane = info.planes[channel];
    if (plane.channel != channel || plane.file != info.planes[0].file)
      return FailureOf("the page's red, green and blue are not side by side in one file");
  }
  return CheckForm(info, 3);
}

Expected<Pixels> ReadPicture(const std::string& directory, const pages::PageInfo& info) {
  const auto form = PictureForm(info);
  if (!form) return FailureAt(directory, form.Error());
  return ReadBlock(directory, info, info.planes[0], *form);
}

Expected<BlockForm> PlaneForm(const pages::PageInfo& info, std::size_t plane) {
  if (plane >= info.planes.size())
    return FailureOf("the page has no plane " + std::to_string(plane));
  return CheckForm(info, 1);
}

Expected<Pixels> ReadPlane(const std::string& directory, const pages::PageInfo& info,
                           std::size_t plane) {
  const auto form = PlaneForm(info, plane);
  if (!form) return FailureAt(directory, form.Error());
  return ReadBlock(directory, info, info.planes[plane], *form);
}

}  // namespace rastrel::planes
