#pragma once

#include <string>
#include <vector>

#include "pages/page_info.h"
#include "rastrel/platform/os/expected.h"
#include "server/queue/job.h"

namespace rastrel::server::web {

/// The pages of a job in the spool (docs/formats/spool.md).
struct KeptPages {
  std::string directory;           ///< native
  std::vector<std::string> names;  ///< of the pages' directories, in printing order
};

/// Finds them below the spool's directory, which is native. Where there are none, the failure says
/// why as a sentence for a person: the job was not interpreted yet, its pages are gone.
[[nodiscard]] Expected<KeptPages> KeptPagesOf(const std::string& spool, const Job& job);

/// A failure of the pages' files for a person elsewhere: without this machine's directories.
[[nodiscard]] std::string ReasonOf(Failure failure);

/// A page by its number in printing order, from 1, with its directory.
struct KeptPage {
  std::string directory;  ///< native
  pages::PageInfo info;
};
/// Fails for a number that no page has, and a description that can't be read.
[[nodiscard]] Expected<KeptPage> ReadKeptPage(const KeptPages& pages, std::size_t number);

}  // namespace rastrel::server::web
