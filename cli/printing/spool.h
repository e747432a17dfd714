#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "pages/page_info.h"
#include "rastrel/platform/os/expected.h"

/// The spool: directories "NAME.cfm" that hold the pages of one job each. docs/formats/spool.md has
/// the files.
namespace rastrel::cli {

/// A page of a spool entry.
struct SpoolPage {
  std::string title;  ///< its directory's name
  std::uint64_t bytes = 0;
  std::optional<pages::PageInfo> info;  ///< nothing if its ".info" can't be read
  std::string problem;                  ///< why not
};

/// Whether a job in the spool has all its pages.
enum class SpoolState {
  Kept,           ///< its record says so, and its pages have the record's sizes
  WithoutRecord,  ///< kept by an earlier version: its pages' own descriptions say so
  Incomplete,     ///< it is not printed
};

struct SpoolEntry {
  std::string name;       ///< without ".cfm"
  std::string directory;  ///< native path
  std::string staged;     ///< where its pages are before they come to the spool; may not exist
  std::size_t pages = 0;
  std::uint64_t bytes = 0;    ///< of the pages
  std::int64_t modified = 0;  ///< seconds since 1970
  SpoolState state = SpoolState::Incomplete;
  std::string problem;              ///< of an incomplete one: why it is
  std::vector<std::string> titles;  ///< of a kept one: its pages in printing order
};

/// All entries, by name. Those whose pages never came to the spool are among them.
[[nodiscard]] std::vector<SpoolEntry> ListSpool();
/// The entry of exactly that name, or nothing.
[[nodiscard]] std::optional<SpoolEntry> FindSpoolEntry(const std::string& name);
/// The same; fails with a message for the user if there is none.
[[nodiscard]] Expected<SpoolEntry> NeedSpoolEntry(const std::string& name);
/// Its pages in printing order: as its record has them, else by the numbers in their ".info", then
/// by name.
[[nodiscard]] std::vector<SpoolPage> PagesOf(const SpoolEntry& entry);

/// Fails, with a message for the user that names the remedy, unless the entry has all its pages.
/// Without a record the files' check sums are compared too, which reads them all.
[[nodiscard]] Expected<void> CheckPrintable(const SpoolEntry& entry);

/// Where pages of a job of that name are until they are all there: below the RIP's pages, so that
/// they come there by renaming.
[[nodiscard]] std::string StagedDirectory(const std::string& name);
/// Whether a directory has an owner that may still be running.
[[nodiscard]] bool IsOwned(const std::string& directory);

}  // namespace rastrel::cli
