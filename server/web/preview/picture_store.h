#pragma once

#include <functional>
#include <string>

#include "pages/page_info.h"
#include "rastrel/platform/os/expected.h"
#include "server/web/preview/page_picture.h"

namespace rastrel::server::web {

/// A word that is another one as soon as the page's pixels are: for names of stored pictures, and
/// for browsers that keep them.
[[nodiscard]] std::string StampOf(const pages::PageInfo& page);

/// The PNG file of a part of a page.
[[nodiscard]] Expected<std::string> DrawPng(const std::string& directory,
                                            const pages::PageInfo& page,
                                            const PictureRequest& request);

/// Widths of whole pages that are stored once they were made.
inline constexpr unsigned StoredWidths[] = {128, 256, 512, 1024};

/// The PNG file of a whole page with all its inks, `width` pixels wide as WholePage has it. One of
/// the stored widths is taken from `store`, or put there: the directory of the job in the queue, a
/// native path, which need not exist. There it is hidden until it is whole. A picture that can't be
/// stored, or is damaged there, is made again.
[[nodiscard]] Expected<std::string> WholePagePng(const std::string& directory,
                                                 const pages::PageInfo& page, unsigned width,
                                                 const std::string& store);

}  // namespace rastrel::server::web
