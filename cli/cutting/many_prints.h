#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "cli/console/options.h"
#include "cli/cutting/page_picture.h"
#include "cutting/frame/mark_layout.h"
#include "cutting/nest/nest.h"
#include "cutting/panel/panel.h"

/// The prints of several results: sheets of nested pieces, and panels.
namespace rastrel::cli {

/// The value of --print, or nothing without it. Throws CommandError for a name that does not end in
/// .pdf.
[[nodiscard]] std::string PrintNameOf(const Invocation& invocation);

/// A job with the command's marks around it, on whole pixels of `picture` if there is one. Without
/// --marks it stays as it is, and nothing grows. Throws CommandError.
[[nodiscard]] cutting::MarkedJob WithMarksOf(const Invocation& invocation, cutting::CutJob job,
                                             const PagePicture* picture);

/// The page of a sheet: each piece's picture as it is placed and turned, as far as the room that
/// the piece takes, and the marks. `pictures` has one for each input.
[[nodiscard]] cutting::PrintPage SheetPage(
    const Invocation& invocation, const std::vector<cutting::NestInput>& inputs,
    const cutting::NestOptions& options, const cutting::NestResult& result, std::size_t sheet,
    const std::vector<std::shared_ptr<PagePicture>>& pictures, const cutting::MarkedJob& marked);

/// The page of a panel: its part of the picture with the overlaps, the marks, and its number in the
/// margin of the marks or else in an overlap, beyond the seam.
[[nodiscard]] cutting::PrintPage PanelPage(const Invocation& invocation,
                                           const cutting::Panel& panel,
                                           const cutting::PanelOptions& options,
                                           const std::shared_ptr<PagePicture>& picture,
                                           const cutting::MarkedJob& marked);

}  // namespace rastrel::cli
