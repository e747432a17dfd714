#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/os/handle.h"

namespace rastrel::host {

class DialogView;

/// A picture for a person to look at.
struct PreviewPicture {
  int width = 0;   ///< pixels
  int height = 0;  ///< pixels
  /// Rows from top to bottom without gaps, each pixel as blue, green, red and alpha, not
  /// multiplied. Empty, or as many bytes as the size asks for; any other number is taken as no
  /// picture.
  std::vector<std::byte> bgra;
  /// A line below the picture, to be shown as it is: why there is none, for example. May be empty.
  std::wstring note;
};

/// Draws a page for a dialog's values, as a view may show it beside the controls. The program that
/// shows the dialog implements it; `DialogViews::SetPreview` hands it over.
///
/// All is called on the dialog's thread, and nothing may wait: a page that takes time is drawn on a
/// thread of the preview's own.
class DialogPreview {
 public:
  DialogPreview() = default;
  DialogPreview(const DialogPreview&) = delete;
  DialogPreview& operator=(const DialogPreview&) = delete;
  virtual ~DialogPreview() = default;

  /// The view wants a picture for the values that its GetValue returns, no larger than this many
  /// pixels each way. Called before the dialog is shown and at each change of a value or of the
  /// size. A later request is in place of one that is not drawn yet.
  virtual void Request(DialogView& view, int width, int height) = 0;
  /// A descriptor that is readable while a picture is ready: to be polled, not read, and owned by
  /// the preview. With INVALID_HANDLE_VALUE the view asks every tenth of a second.
  [[nodiscard]] virtual HANDLE GetReadyHandle() const = 0;
  /// Takes the newest picture that was drawn since the last call; nothing if there is none.
  [[nodiscard]] virtual std::optional<PreviewPicture> Take() = 0;
};

}  // namespace rastrel::host
