#pragma once

#include <optional>
#include <string_view>

#include "host/document/shapes.h"

/// The parts of PostScript files that are known without running them.
namespace rastrel::graphics {

/// The PostScript of a file: all of it, or of an EPS file with a binary head the part that the head
/// names. Nothing if the file is no PostScript, or that part is not within it.
///
///     +-------------+-----------+-----------+-------------------------------------+
///     | C5 D0 D3 C6 | offset of | length of | offsets and lengths of two          |
///     | 4 bytes     | it: 4     | it: 4     | previews, and a check sum: 18 bytes |
///     +-------------+-----------+-----------+-------------------------------------+
///
/// Numbers have the lowest byte first.
[[nodiscard]] std::optional<std::string_view> PostScriptPart(std::string_view file);

/// Whether the head comments of PostScript name files or parts of its separations: those of the
/// first form of DCS (%%CyanPlate: and its three neighbors), or of the second (%%PlateFile:).
[[nodiscard]] bool NamesPlates(std::string_view postScript);

/// The kind of a file that is placed whole: Pdf, Eps (a binary head, or "EPSF" in the first line)
/// or PostScript; nothing for any other.
[[nodiscard]] std::optional<document::GraphicKind> PlacedKindOf(std::string_view file);

}  // namespace rastrel::graphics
