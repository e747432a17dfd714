#pragma once

#include <memory>
#include <string>

#include "host/graphics/picture.h"

/// One opener for each kind of file, for OpenPicture.
namespace rastrel::drawing {

using graphics::Picture;

/// An opened file. Its size is the one that the file names, and not yet checked.
using OpenedPicture = Expected<std::unique_ptr<Picture>>;

/// By librsvg, which reads nothing beside the bytes. `stylesheet` is CSS of the user's, which
/// counts where the file's own says nothing.
[[nodiscard]] OpenedPicture OpenSvg(const std::string& bytes, const std::string& stylesheet = {});
/// PNG (ISO 15948), JPEG (ISO 10918-1) and TIFF 6.0, of which the first image counts. Decoded at
/// once.
[[nodiscard]] OpenedPicture OpenPng(const std::string& bytes);
[[nodiscard]] OpenedPicture OpenJpeg(const std::string& bytes);
[[nodiscard]] OpenedPicture OpenTiff(const std::string& bytes);
/// How a PDF's lines are drawn.
enum class PdfLines {
  OnScreen,  ///< thin ones are moved to whole pixels and are at least one wide
  AsTheyAre  ///< as for a printer; one without width is a device unit wide
};
/// By poppler. The picture keeps the bytes.
[[nodiscard]] OpenedPicture OpenPdf(std::shared_ptr<const std::string> bytes,
                                    PdfLines lines = PdfLines::OnScreen);
/// Whether the first page of a PDF names a font whose letters are drawings (Type 3). The drawing
/// library ends the program on them where it writes a script. False for a file that is no PDF.
[[nodiscard]] bool HasDrawnLetters(const std::string& pdf);

}  // namespace rastrel::drawing
