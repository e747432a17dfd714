#include "cli/document/conversion_files.h"

#include <array>
#include <string>

#include "cli/console/command_runs.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/converting/queue_diagnosis.h"
#include "cli/document/conversion_report.h"
#include "cli/document/conversion_request.h"
#include "cli/input/result_names.h"
#include "cli/installation/installation.h"

namespace rastrel::cli {
namespace {

// Each file needs a result of its own, and there is one person and one standard output.
void CheckSeveral(const Invocation& invocation, const ConversionRequest& request) {
  const bool cuts = invocation.command == CommandId::Cut;
  const char* const verb = cuts ? "cut" : "convert";
  if (request.window || request.ask)
    throw CommandError(ExitStatus::WrongUse,
                       std::string(request.window ? "--window" : "--ask") +
                           " asks for one file: convert the files one by one");
  if (request.result.isOutput)
    throw CommandError(ExitStatus::WrongUse, std::string("standard output takes one file: ") +
                                                 verb + " the files one by one");
  const std::string output = invocation.ValueOr(OptionId::ResultOutput, "");
  if (!NamesEachResult(output))
    throw CommandError(ExitStatus::WrongUse,
                       "the results of several files need a directory, as in -o out/, or a name "
                       "for each, as in -o '{name}" +
                           request.result.extension + "'");
  CheckResultNames(invocation, output, request.result.extension, verb);
}

}  // namespace

ExitStatus ConvertFileByFile(const Invocation& invocation) {
  const ConversionRequest request = OrEnd(ExitStatus::WrongUse, ReadConversionRequest(invocation));
  CheckSeveral(invocation, request);
  // A pipe with a password is read once, and all runs have it.
  const auto pdf = OrEnd(ExitStatus::WrongUse, ApplyPdfOptions(invocation, request));
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  OrEnd(ExitStatus::NotInstalled, CheckQueueProgram());
  const std::string text = invocation.command == CommandId::Cut ? "cutting" : "converting";
  const auto begin = [&](const std::string& file) {
    if (!request.json) return WriteErrorLine(text + ": " + file);
    JsonLine line("job");
    line.Add("originator", "system").Add("text", text).Add("path", file).Write();
  };
  return RunFileByFile(invocation, std::array{OptionId::PasswordFile}, begin);
}

}  // namespace rastrel::cli
