#include "cli/document_program.h"

#include "rastrel/platform/os/process.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::cli {

ExitStatus RunDocumentProgram(const std::vector<std::string>& arguments) {
  const std::string programs = standalone::FindResources().programs;
  if (programs.empty())
    throw CommandError(ExitStatus::NotInstalled,
                       "rastrel-document, which opens documents, is not installed");
  const Failure failure = os::ReplaceProcess(programs + "/rastrel-document", arguments);
  throw CommandError(
      ExitStatus::NotInstalled,
      "rastrel-document, which opens documents, can't be started: " + Describe(failure));
}

}  // namespace rastrel::cli
