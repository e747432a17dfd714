#pragma once

#include <optional>
#include <string>

#include "rastrel/conversion/cut/cut_objects.h"
#include "rastrel/platform/host/dialog_preview.h"

namespace rastrel::cli {

/// Pixels each way of the largest preview.
inline constexpr int MaxPreviewSide = 4096;

/// The bytes of a binary netpbm file (P6 with 255 as its highest value, as the queue program writes
/// it) as a picture. Nothing if they are of another form, end too early, or are larger than the
/// largest preview.
[[nodiscard]] std::optional<host::PreviewPicture> PictureFromNetpbm(const std::string& bytes);

/// Draws the paths of the objects over a picture of that resolution, in magenta. They count
/// centimetres from its top left corner, upward. Points outside the picture are left out, as are
/// those that are no numbers.
void DrawCutLines(const CCutObjects& objects, int resolution, host::PreviewPicture& picture);

}  // namespace rastrel::cli
