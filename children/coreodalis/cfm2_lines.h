#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// The CFM2 text that the library's generator writes, read by lines.
///
/// The library's own reader finds pages by searching the text for words; this one does not, since
/// titles and directories may hold the words begin and end, a '>' and anything else but a line
/// feed. The form is described in docs/formats/output-engine.md.
namespace rastrel::odalis {

/// The treatment of a page.
enum class TicketType { Once, Reprint, Only, Delete };

/// One page entry. The texts point into the document they were read from.
struct PageEntry {
  TicketType type = TicketType::Reprint;
  std::string_view id;         ///< may be empty
  std::string_view directory;  ///< library path, UTF-8, never empty
  std::string_view title;      ///< name of the page's directory in it, UTF-8, never empty
  unsigned copies = 1;         ///< 0 to MaximumCopies
  std::size_t line = 0;        ///< of its "begin", counted from 1
};

/// More copies of one entry than this are taken for a mistake.
inline constexpr unsigned MaximumCopies = 9999;

/// All entries of a text, in order, and a warning about each that was skipped.
struct Cfm2Document {
  std::vector<PageEntry> entries;
  std::vector<std::string> warnings;  ///< at most MaximumWarnings, each with its line number
};

/// So many warnings are kept; a text full of unknown lines does not flood the job's log.
inline constexpr std::size_t MaximumWarnings = 20;

/// Reads a text. The entries point into `text`, which must outlive them. The failure's reason
/// begins with "line N: ". A text with comments and no page is a document without entries; an empty
/// text is a failure, because the library always writes its header lines.
[[nodiscard]] Expected<Cfm2Document> ReadCfm2(std::string_view text);

/// The page directory of an entry as a library path: the directory, a separator if it has none at
/// its end, and the title.
[[nodiscard]] std::string PageDirectoryOf(const PageEntry& entry);

}  // namespace rastrel::odalis
