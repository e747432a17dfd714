#pragma once

#include <string>
#include <vector>

#include "cli/sheet/workspace.h"
#include "rastrel/platform/os/expected.h"
#include "spreadsheet/source.h"

namespace rastrel::cli::sheet {

/// Makes the text that the library's own import makes of a spreadsheet, in a file of the workspace,
/// and returns its native path. `only` is the place of the wanted sheet from 0, or -1 for all.
/// `notes` takes sheets that were passed over, and why. Fails with the reason where the import
/// only fails; `error` is set if a call of the system failed.
[[nodiscard]] Expected<std::string> MakeFaithfulText(spreadsheet::Source& source, int only,
                                                     Workspace& workspace,
                                                     std::vector<std::string>& notes);

}  // namespace rastrel::cli::sheet
