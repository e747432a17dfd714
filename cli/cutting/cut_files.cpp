#include "cli/cutting/cut_files.h"

#include <array>
#include <string>

#include "cli/console/command_runs.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/input/result_names.h"
#include "cli/input/standard_input.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

using enum OptionId;

// What most cutters take, where a directory is all that is known of the result.
constexpr const char* DefaultEnding = ".plt";

// Each of them makes one file, or goes to one device.
constexpr std::array OptionsOfOne{CutPicture, CutShow, CutPrint, CutDevice, Measured, Measurements};

void CheckSeveral(const Invocation& invocation) {
  for (const OptionId id : OptionsOfOne)
    if (invocation.Has(id))
      throw CommandError(ExitStatus::WrongUse,
                         std::string(OptionOf(id).name) + " is for one file: cut them one by one");
  const std::string output = invocation.ValueOr(ResultOutput, "");
  if (output == StandardOutputName)
    throw CommandError(ExitStatus::WrongUse,
                       "standard output takes one file: cut the files one by one");
  if (output.empty() || !NamesEachResult(output))
    throw CommandError(ExitStatus::WrongUse,
                       "the results of several files need a directory, as in -o out/, or a name "
                       "for each, as in -o '{name}.dxf'");
  CheckResultNames(invocation, output, DefaultEnding, "cut");
}

}  // namespace

ExitStatus CutFileByFile(const Invocation& invocation) {
  CheckSeveral(invocation);
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  const auto begin = [&](const std::string& file) {
    if (!invocation.Has(Json)) return WriteErrorLine("cutting: " + file);
    JsonLine line("job");
    line.Add("originator", "system").Add("text", "cutting").Add("path", file).Write();
  };
  return RunFileByFile(invocation, {}, begin);
}

CutFile TakeCutFile(const Invocation& invocation) {
  CutFile file{invocation};
  Invocation& own = file.invocation;
  const std::string output = own.ValueOr(ResultOutput, "");
  if (!output.empty() && output != StandardOutputName && NamesEachResult(output)) {
    own.options[ResultOutput] =
        ResultNameFor(output, JobNameOfOperand(invocation, invocation.operand), DefaultEnding);
    file.hasMadeName = true;
    // If it can't be made, writing the result fails and says so.
    if (output.ends_with('/')) static_cast<void>(os::MakePath(os::FromNative(output)));
  }
  if (own.operand != StandardInputOperand) return file;
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  file.copy =
      std::make_shared<JobDirectory>(OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(false)));
  own.operand =
      OrEnd(ExitStatus::BadInput, TakeStandardInput(file.copy->Path(), own.ValueOr(Title, "")));
  own.operands = {own.operand};
  return file;
}

}  // namespace rastrel::cli
