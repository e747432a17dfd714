#pragma once

#include <string>
#include <vector>

#include "cli/document/finding.h"
#include "host/document_host.h"

namespace rastrel::cli {

/// The contents of a plate XML of ABB that an import passes over: elements and attributes that it
/// does not know, numbers and texts that are missing or are none, colors that the palette and fonts
/// that the machine lacks. In the file's order. `path` is a library path of a file that loads.
[[nodiscard]] Findings CheckAbb(const std::wstring& path, document::DocumentHost& host);

/// Text that does not look as asked: squeezed into its frame, not to be seen, with letters that no
/// font has, or in the color of its plate. From the document that the file became, which held no
/// text before.
[[nodiscard]] Findings CheckAbbText(const std::wstring& path, const document::DocumentHost& host);

}  // namespace rastrel::cli
