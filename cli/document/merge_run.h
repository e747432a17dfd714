#pragma once

#include <string>
#include <vector>

#include "cli/console/options.h"
#include "cli/document/merge_report.h"
#include "cli/document/merge_table.h"
#include "cli/document/merge_template.h"
#include "cli/document/template_file.h"
#include "cli/sheet/work_progress.h"
#include "cli/sheet/workspace.h"

namespace rastrel::cli {

/// A merge that is to be done. All must outlive it.
struct MergeTask {
  const Invocation& invocation;
  const sheet::Workspace& workspace;
  sheet::WorkProgress& progress;
  TemplateFormat format;
  const MergeTemplate& merge;
  const std::vector<MergeRow>& rows;
  std::string tablePath;          ///< for messages
  const char* folder = "merged";  ///< of the workspace, which is made for the merged files
};

/// Imports the template with the values of all rows into one document, and completes the reports,
/// which are of the same rows. Rows of a format that has plates follow each other on the blank, as
/// in a template with that many plates; those of any other format have a page each, on the blank of
/// the first row. Installs the document's host. Throws CommandError.
[[nodiscard]] OpenedFile RunMerge(const MergeTask& task, std::vector<RowReport>& reports);

}  // namespace rastrel::cli
