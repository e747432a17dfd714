#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/owner.h"

class CCFMFile;

/// The record of a job in the spool, which says that all its pages are there.
///
///     NAME.cfm/
///       p0001/ p0002/ ...     the pages
///       .kept-unfinished      while they are moved: the pages to come, and where they come from
///       .kept                 in its place at the end: the pages that are there
///
/// docs/formats/spool.md has the format. Paths are native.
namespace rastrel::cfm {

/// One page of a kept job.
struct KeptPage {
  std::string title;        ///< its directory's name, UTF-8
  std::uint64_t files = 0;  ///< entries below it that are no directories
  std::uint64_t bytes = 0;  ///< of its regular files
  std::string source;       ///< the directory it is moved from; of an unfinished job only
};

struct KeptJob {
  std::vector<KeptPage> pages;               ///< in printing order
  std::optional<os::ProcessIdentity> mover;  ///< who moves the pages; of an unfinished job only
};

inline constexpr std::string_view KeptJobName = ".kept";
inline constexpr std::string_view UnfinishedJobName = ".kept-unfinished";

/// The record's text. Sources and the mover are written if there are any.
[[nodiscard]] std::string FormatKeptJob(const KeptJob& job);
/// Reads such a text. The failure has the line.
[[nodiscard]] Expected<KeptJob> ParseKeptJob(std::string_view text);
/// Reads a record of a job's directory, by one of the names above. ENOENT if there is none.
[[nodiscard]] Expected<KeptJob> ReadKeptJob(const std::string& directory, std::string_view name);

/// Notes the pages of a list with their sizes before they are moved to a directory, as the
/// directory's unfinished record. A record that the directory had is removed: from now on the job
/// is incomplete.
[[nodiscard]] Expected<KeptJob> BeginKeptJob(const CCFMFile& pages, const std::string& directory);
/// Compares the pages in the directory with the job's, has them written to the disk, and then gives
/// the directory its record. On a failure the unfinished record stays.
[[nodiscard]] Expected<void> FinishKeptJob(const KeptJob& job, const std::string& directory);
/// Takes an unfinished record away.
void ForgetUnfinishedJob(const std::string& directory);

/// Compares pages in the directory with the job's, by number and size. The failure names the first
/// one that is missing or differs.
[[nodiscard]] Expected<void> ComparePages(const KeptJob& job, const std::string& directory);

}  // namespace rastrel::cfm
