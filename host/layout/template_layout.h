#pragma once

#include <functional>
#include <string>

#include "rastrel/platform/os/expected.h"

class CCROFileImport;
class CLLXFileImport;

namespace rastrel::document {
class DocumentHost;
}

/// The layout of templates whose importers read records and build nothing: CRO and LLX. The rules
/// are in docs/formats/cro.md and docs/formats/llx.md, "Layout of the embedded host".
namespace rastrel::layout {

/// The library path of a file that a template names, to be opened as it is; or the reason why it is
/// not to be opened, which becomes a notice. Called once for each name of an import. An empty one
/// takes every name for a path.
using FileResolver = std::function<Expected<std::wstring>(const std::wstring& name)>;

/// The maximum number of lines of a plate, and of characters of a line. Further ones are left out,
/// with a notice.
inline constexpr int MaximumPlateLines = 1000;
inline constexpr int MaximumLineLength = 100'000;
/// The maximum number of points of paths that the graphics of one import have on all plates; an
/// object counts as ten. Graphics beyond it are left out, with a notice.
inline constexpr int MaximumGraphicPoints = 8'000'000;

/// Lays the plates of a CRO template out in the host's document: on the blank that the host has, or
/// on one of the template's size if it asks for that. The plates are panes of one plate object, in
/// rows, as many as fit on a page; further pages have the others. A document that has objects gets
/// the plates on pages after them. The page on show and the selection are those before the call,
/// but that nothing stays selected.
///
/// The host's notices name all that is left out, replaced or squeezed. Fails, with nothing added,
/// if the file was refused, has no plates, or if a plate does not fit on the blank.
[[nodiscard]] Expected<void> ImportCro(const CCROFileImport& file, document::DocumentHost& host,
                                       const FileResolver& resolve);

/// Lays an LLX template out: its plate is the blank, and one pane that covers it. Otherwise as
/// ImportCro. Fails, with nothing added, if the file was refused, or if the plate's size is none
/// that a plate can have.
[[nodiscard]] Expected<void> ImportLlx(const CLLXFileImport& file, document::DocumentHost& host,
                                       const FileResolver& resolve);

}  // namespace rastrel::layout
