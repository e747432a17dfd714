#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/document/template_file.h"
#include "host/document/document.h"

namespace rastrel::cli {

/// How much of what a document holds.
struct DocumentCounts {
  int pages = 0;
  std::size_t plateObjects = 0;
  std::size_t panes = 0;
  std::size_t texts = 0;
  std::size_t drillPoints = 0;
  std::size_t graphics = 0;
  std::size_t others = 0;
};
[[nodiscard]] DocumentCounts CountsOf(const document::Document& document);

/// Tells what became of a file, in words or, with `json`, as lines of JSON
/// (docs/formats/events.md): findings, replaced fonts, what is missing, and the counts. `output` is
/// the file that was made, or empty.
void TellDocument(const OpenedFile& file, const std::string& path,
                  const std::vector<std::string>& output, bool json);

}  // namespace rastrel::cli
