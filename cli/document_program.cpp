#include "cli/document_program.h"

#include "rastrel/platform/host/data_root.h"
#include "rastrel/platform/os/process.h"

namespace rastrel::cli {

ExitStatus RunDocumentProgram(const std::vector<std::string>& words) {
  const std::string programs = host::FindResources().programs;
  if (programs.empty())
    throw CommandError(ExitStatus::NotInstalled,
                       "rastrel-document, which opens documents, is not installed");
  const os::Failure failure = os::ReplaceProcess(programs + "/rastrel-document", words);
  throw CommandError(
      ExitStatus::NotInstalled,
      "rastrel-document, which opens documents, can't be started: " + os::Describe(failure));
}

}  // namespace rastrel::cli
