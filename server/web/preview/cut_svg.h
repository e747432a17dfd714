#pragma once

#include <cstddef>
#include <string>

#include "cutting/job/cut_job.h"
#include "pages/page_info.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::server::web {

/// A file of cut paths that is larger is not shown: a browser would not take it.
inline constexpr std::size_t MaximumShownCutBytes = 32 * 1024 * 1024;

/// Whether the page's description lists cut paths.
[[nodiscard]] bool HasCutPaths(const pages::PageInfo& page);

/// The paths as a transparent drawing of the page's size, in millimetres from its top left corner.
/// Lines are as wide on the screen at any zoom, and closed and open ones the same. Of the file
/// nothing is in it but numbers.
[[nodiscard]] std::string CutSvg(const cutting::CutJob& job);

/// Reads the cut paths of a page and draws them. Fails, as BadInput, for a page that has none, a
/// file that is too large, and one of another form.
[[nodiscard]] Expected<std::string> CutSvgOfPage(const std::string& directory,
                                                 const pages::PageInfo& page);

}  // namespace rastrel::server::web
