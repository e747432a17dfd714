#pragma once

#include "cli/cutting/marked_picture.h"
#include "cli/cutting/page_picture.h"
#include "cutting/view/cut_window.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

inline constexpr std::uint32_t MaximumShownEdge = 4096;  ///< pixels

/// The picture of a page as a screen shows it, without color management: each ink takes its part of
/// the light away. A page of more pixels than MaximumShownEdge along an edge is made smaller, by
/// the mean of whole squares of pixels. `margins` are those by which the page has grown around the
/// picture. Fails if the picture's files are cut short.
[[nodiscard]] Expected<cutting::ShownPrint> PrintOnScreen(PagePicture& picture,
                                                          const PictureMargins& margins);

}  // namespace rastrel::cli
