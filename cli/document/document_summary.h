#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/document/template_file.h"
#include "host/document/document.h"

namespace rastrel::cli {

/// The counts of a document's contents.
struct DocumentCounts {
  int pages = 0;
  std::size_t plateObjects = 0;
  std::size_t panes = 0;
  std::size_t texts = 0;
  std::size_t drillPoints = 0;
  std::size_t graphics = 0;
  std::size_t paths = 0;  ///< lines and curves: placed vector files and cut lines
};
[[nodiscard]] DocumentCounts CountsOf(const document::Document& document);

/// Writes the result of an import, as text or, with `json`, as lines of JSON
/// (docs/formats/events.md): findings, replaced fonts, missing things, and the counts. `output` is
/// the file that was made, or empty.
void WriteSummary(const OpenedFile& file, const std::string& path,
                  const std::vector<std::string>& output, bool json);

}  // namespace rastrel::cli
