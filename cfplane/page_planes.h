#pragma once

#include <cstddef>
#include <string>

#include "cfplane/pixel_block.h"
#include "pages/page_info.h"
#include "rastrel/platform/os/expected.h"

/// The pixels of a page directory as blocks. Sizes are checked against the files before memory is
/// taken, and a block is the only copy of its pixels. Check sums are not compared: hashing takes
/// longer than reading, the files come from a program of ours moments before, and whoever could
/// change them could change the sums as well.
namespace rastrel::planes {

/// Pixels with their form.
struct Pixels {
  BlockForm form;
  PixelBlock block;
};

/// Whether the page can be shown as a picture, with the form of its block: gray, of one byte, or
/// RGB, of three. The failure of a separated page says so. Looks at the description alone.
[[nodiscard]] Expected<BlockForm> PictureForm(const pages::PageInfo& info);
/// Reads the picture: gray samples as they are, or blue, green and red.
[[nodiscard]] Expected<Pixels> ReadPicture(const std::string& directory,
                                           const pages::PageInfo& info);

/// The form of the block of one plane, by its number from 0.
[[nodiscard]] Expected<BlockForm> PlaneForm(const pages::PageInfo& info, std::size_t plane);
/// Reads the samples of one plane alone.
[[nodiscard]] Expected<Pixels> ReadPlane(const std::string& directory, const pages::PageInfo& info,
                                         std::size_t plane);

}  // namespace rastrel::planes
