#include "cli/reading/inspect_command.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "cli/console/files_at_once.h"
#include "cli/console/standard_streams.h"
#include "cli/reading/inspection.h"
#include "cli/reading/inspection_text.h"
#include "cli/reading/painted_spots.h"
#include "cli/reading/template_records.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/terminal.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

bool TerminalShowsColor() {
  return os::IsTerminal(os::StandardHandle(os::StandardStream::Output)) &&
         os::EnvironmentValue("NO_COLOR").empty() && os::EnvironmentValue("TERM") != "dumb";
}

template <typename Iterator, typename Wanted>
std::vector<std::string> FilesIn(const fs::path& folder, const Wanted& wanted) {
  std::vector<std::string> files;
  std::error_code error;
  Iterator entry(folder, fs::directory_options::skip_permission_denied, error);
  for (const Iterator end; !error && entry != end; entry.increment(error))
    if (wanted(*entry)) files.push_back(entry->path().string());
  std::ranges::sort(files);
  return files;
}

bool IsIn(const std::vector<SpotName>& names, const std::string& postScript) {
  return std::ranges::find(names, postScript, &SpotName::postScript) != names.end();
}

void AddPainted(Inspection& inspection) {
  if (inspection.kind == FileKind::Neither) return;
  PaintedReport report;
  // An EPS has no page but its bounds; other files set theirs.
  std::optional<CRect> page;
  const bool hasArea = inspection.bounds && inspection.bounds->left < inspection.bounds->right &&
                       inspection.bounds->bottom < inspection.bounds->top;
  if (inspection.kind != FileKind::PostScript && hasArea) page = inspection.bounds;
  OrEnd(ExitStatus::NotInstalled, CheckGhostscript());
  report.painted = OrEnd(ExitStatus::JobFailed, PaintedSpots(inspection.path, page));
  for (const std::string& name : report.painted)
    if (!IsIn(inspection.names, name)) report.notDeclared.push_back(name);
  for (const SpotName& name : inspection.names)
    if (std::ranges::find(report.painted, name.postScript) == report.painted.end())
      report.notPainted.push_back(name.postScript);
  inspection.painted = std::move(report);
}

// How the results are written.
struct Output {
  bool painted = false;
  bool json = false;
  bool table = false;
  bool color = false;
};

void Write(const Inspection& inspection, const Output& output) {
  if (output.json) return WriteOutLines(InspectionObject(inspection));
  if (output.table) return WriteOutLines(InspectionRow(inspection));
  const std::string line = InspectionLine(inspection, output.color);
  output.color ? WriteOutControl(line) : WriteOutLines(line);
}

// The comments are shown whether the interpreter can paint the file or not.
void InspectOne(const std::string& file, const Output& output) {
  if (HasRecords(file)) {
    if (output.table)
      throw CommandError(ExitStatus::BadInput,
                         file + ": a template has no row in a table; its records are JSON");
    return WriteOutLines(OrEnd(ExitStatus::BadInput, ReadRecordLines(file)));
  }
  Inspection inspection = OrEnd(ExitStatus::BadInput, InspectFile(file));
  try {
    if (output.painted) AddPainted(inspection);
  } catch (const CommandError& error) {
    inspection.paintedError = error.what();
    Write(inspection, output);
    throw;
  }
  Write(inspection, output);
}

}  // namespace

bool MatchesPattern(std::string_view name, std::string_view pattern) {
  // The place of the last star, and how much of the name it has taken: going back that far is
  // enough.
  std::size_t star = pattern.npos;
  std::size_t taken = 0;
  std::size_t at = 0;
  std::size_t index = 0;
  while (index < name.size()) {
    if (at < pattern.size() && pattern[at] == '*') {
      star = at++;
      taken = index;
    } else if (at < pattern.size() && (pattern[at] == '?' || pattern[at] == name[index])) {
      ++at;
      ++index;
    } else if (star != pattern.npos) {
      at = star + 1;
      index = ++taken;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', at) == pattern.npos;
}

std::vector<std::string> FilesOfOperand(const std::string& operand) {
  std::error_code error;
  if (fs::is_directory(operand, error))
    return FilesIn<fs::recursive_directory_iterator>(operand, [](const fs::directory_entry& entry) {
      std::error_code ignored;
      return entry.is_regular_file(ignored);
    });
  const std::string pattern = fs::path(operand).filename().string();
  if (fs::exists(operand, error) || pattern.find_first_of("*?") == pattern.npos) return {operand};
  const fs::path folder = fs::path(operand).parent_path();
  std::vector<std::string> files = FilesIn<fs::directory_iterator>(
      folder.empty() ? fs::path(".") : folder, [&](const fs::directory_entry& entry) {
        const std::string name = entry.path().filename().string();
        return MatchesPattern(name, pattern) && (name.front() != '.' || pattern.front() == '.');
      });
  if (folder.empty())
    for (std::string& file : files) file.erase(0, 2);
  // Nothing matches: the message names the pattern.
  return files.empty() ? std::vector<std::string>{operand} : files;
}

ExitStatus InspectCommand(const Invocation& invocation) {
  Output output{.painted = invocation.Has(OptionId::Painted),
                .json = invocation.Has(OptionId::Json),
                .table = invocation.Has(OptionId::Tsv)};
  if (output.json && output.table)
    throw CommandError(ExitStatus::WrongUse, "--json and --tsv exclude each other");
  output.color = !output.json && !output.table && TerminalShowsColor();
  const unsigned atOnce = OrEnd(ExitStatus::WrongUse, FilesAtOnce(invocation));
  std::vector<std::string> files;
  for (const std::string& operand : invocation.operands)
    std::ranges::move(FilesOfOperand(operand), std::back_inserter(files));
  if (output.table) WriteOutLines(InspectionTableHead());
  ExitStatus status = ExitStatus::Done;
  const auto failed = [&](std::size_t index, const CommandError& error) {
    WriteErrorLine("rastrel: " + files[index] + ": " + error.what());
    if (status != ExitStatus::BadInput) status = error.Status();
  };
  const auto inspect = [&](std::size_t index) { InspectOne(files[index], output); };
  WorkOnFiles(files.size(), atOnce, {.work = inspect, .failed = failed});
  return status;
}

}  // namespace rastrel::cli
