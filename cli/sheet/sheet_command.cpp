#include "cli/sheet/sheet_command.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/options.h"
#include "cli/console/standard_streams.h"
#include "cli/input/file_head.h"
#include "cli/input/xml_input.h"
#include "cli/sheet/failed_spreadsheet.h"
#include "cli/sheet/faithful_text.h"
#include "cli/sheet/row_text.h"
#include "cli/sheet/work_progress.h"
#include "cli/sheet/workspace.h"
#include "spreadsheet/source.h"

namespace rastrel::cli {
namespace {

using sheet::RowCounter;
using sheet::RowText;
using sheet::WorkProgress;
using sheet::Workspace;
using spreadsheet::Source;

constexpr const char* StandardOutputName = "-";

struct Task {
  const Invocation& invocation;
  Workspace& workspace;
  WorkProgress& progress;
  Source source;
  int only = -1;  // place of the one sheet that is wanted

  [[nodiscard]] bool IsJson() const { return invocation.Has(OptionId::Json); }
  /// Where the text goes; empty for standard output.
  [[nodiscard]] std::string Target() const {
    const std::string target = invocation.ValueOr(OptionId::OutputFile, StandardOutputName);
    return target == StandardOutputName ? std::string() : target;
  }
};

void CheckUse(const Invocation& invocation) {
  const bool asShown = invocation.Has(OptionId::AsShown);
  if (asShown && invocation.Has(OptionId::Faithful))
    throw CommandError(ExitStatus::WrongUse, "--faithful and --as-shown exclude each other");
  const bool writes = asShown || invocation.Has(OptionId::Faithful) ||
                      invocation.Has(OptionId::OutputFile) || invocation.Has(OptionId::Sheet);
  if (invocation.Has(OptionId::List) && writes)
    throw CommandError(ExitStatus::WrongUse, "--list goes with no option but --json");
  if (invocation.Has(OptionId::OutputFile) && invocation.ValueOr(OptionId::OutputFile, "").empty())
    throw CommandError(ExitStatus::WrongUse, "-o needs the name of a file, or -");
  std::error_code ignored;
  const std::string target = invocation.ValueOr(OptionId::OutputFile, "");
  if (std::filesystem::equivalent(target, invocation.operand, ignored))
    throw CommandError(ExitStatus::WrongUse,
                       "the text would take the place of '" + target + "', which it is made of");
}

void WriteDone(const Task& task) {
  if (!task.IsJson()) return;
  JsonLine line("done");
  line.Add("originator", "system").Add("exit", 0);
  std::vector<std::string> paths;
  if (!task.Target().empty()) paths.push_back(task.Target());
  line.Add("paths", paths).Write();
}

void WriteNotes(const Task& task, const std::vector<std::string>& notes) {
  for (const std::string& note : notes) {
    const std::string message = task.invocation.operand + ": passed over: " + note;
    if (task.IsJson())
      JsonLine("warning")
          .Add("originator", "system")
          .Add("text", std::string_view(message))
          .Write();
    else
      WriteError("rastrel: " + message + "\n");
  }
}

void CopyToOutput(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::array<char, 64 * 1024> piece;
  while (file) {
    file.read(piece.data(), piece.size());
    WriteOut({piece.data(), static_cast<std::size_t>(file.gcount())});
  }
}

// The import's lines, as objects.
void WriteLinesAsJson(const std::string& path) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  std::ifstream file(path, std::ios::binary);
  std::int64_t number = 0;
  for (std::string line; std::getline(file, line);) {
    if (number++ == 0 && line.starts_with(mark)) line.erase(0, mark.size());
    if (line.ends_with('\r')) line.pop_back();
    std::vector<std::string> cells;
    for (std::size_t begin = 0; begin <= line.size();) {
      const std::size_t tab = std::min(line.find('\t', begin), line.size());
      cells.push_back(line.substr(begin, tab - begin));
      begin = tab + 1;
    }
    JsonLine("line").Add("row", number).Add("cells", cells).Write();
  }
}

void WriteFaithful(Task& task) {
  std::vector<std::string> notes;
  task.progress.Enter("reading");
  const std::string text =
      sheet::ValueOf(MakeFaithfulText(task.source, task.only, task.workspace, notes));
  if (!task.Target().empty())
    OrEnd(ExitStatus::JobFailed, task.workspace.Deliver(text, task.Target()));
  else if (task.IsJson())
    WriteLinesAsJson(text);
  else
    CopyToOutput(text);
  WriteNotes(task, notes);
  WriteDone(task);
}

void WriteAsShown(Task& task) {
  const bool isJson = task.IsJson() && task.Target().empty();
  const std::string path = task.workspace.Path("shown.txt");
  task.progress.Enter("reading");
  {
    RowText text(path, isJson ? RowText::Form::Json : RowText::Form::Table, task.only < 0);
    sheet::RequireSuccess(ReadRows(task.source, task.only, text));
    sheet::RequireSuccess(text.Finish());
  }
  if (task.Target().empty())
    CopyToOutput(path);
  else
    OrEnd(ExitStatus::JobFailed, task.workspace.Deliver(path, task.Target()));
  WriteDone(task);
}

void WriteList(Task& task) {
  RowCounter counter;
  task.progress.Enter("counting");
  sheet::RequireSuccess(ReadRows(task.source, task.only, counter));
  for (const RowCounter::Entry& entry : counter.Sheets()) {
    const char* visibility = WordOf(entry.sheet.visibility);
    const auto rows = static_cast<std::int64_t>(entry.size.rows);
    const auto columns = static_cast<std::int64_t>(entry.size.columns);
    const auto cells = static_cast<std::int64_t>(entry.size.cells);
    if (task.IsJson()) {
      JsonLine line("sheet");
      line.Add("text", std::string_view(entry.sheet.name));
      line.Add("number", static_cast<std::int64_t>(entry.number)).Add("visibility", visibility);
      line.Add("rows", rows).Add("columns", columns).Add("cells", cells).Write();
      continue;
    }
    std::string line = std::to_string(entry.number) + "\t";
    sheet::AppendEscaped(line, entry.sheet.name);
    WriteOut(line + "\t" + visibility + "\t" + std::to_string(rows) + " rows\t" +
             std::to_string(columns) + " columns\t" + std::to_string(cells) + " cells\n");
  }
  WriteDone(task);
}

int PlaceOfWantedSheet(const Task& task) {
  const auto place = PlaceOfSheet(sheet::ValueOf(SheetsOf(task.source)),
                                  task.invocation.ValueOr(OptionId::Sheet, ""));
  if (!place)
    throw CommandError(ExitStatus::WrongUse,
                       task.invocation.operand + ": " + Describe(place.Error()));
  return *place;
}

void Run(Task& task) {
  const Invocation& invocation = task.invocation;
  if (invocation.Has(OptionId::Sheet)) task.only = PlaceOfWantedSheet(task);
  if (invocation.Has(OptionId::List))
    WriteList(task);
  else if (invocation.Has(OptionId::AsShown))
    WriteAsShown(task);
  else
    WriteFaithful(task);
}

constexpr std::size_t HeadSize = 512;

// Refuses a file that can be no spreadsheet, and names its kind if that is known.
void CheckKind(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) return;
  const auto head = ReadFileHead(path, HeadSize);
  if (!head) throw CommandError(ExitStatus::BadInput, path + ": " + Describe(head.Error()));
  if (spreadsheet::IsContainer(*head) || MayBeXml(*head)) return;
  const std::string kind(KnownKind(*head));
  throw CommandError(ExitStatus::BadInput,
                     path + ": it is neither a package of a spreadsheet nor a document of XML" +
                         (kind.empty() ? "" : ", but " + kind));
}

Source Open(const std::string& path, const Workspace& workspace, WorkProgress& progress) {
  CheckKind(path);
  return sheet::ValueOf(
      spreadsheet::OpenSource(path, OrEnd(ExitStatus::JobFailed, workspace.MakeFolder("package")),
                              [&progress](std::uint64_t done, std::uint64_t whole) {
                                // An unpacked part is read next, and nobody knows how far that is.
                                progress.Enter(done < whole ? "unpacking" : "reading");
                                if (done < whole) progress.Reach(done, whole);
                              }));
}

}  // namespace

ExitStatus SheetCommand(const Invocation& invocation) {
  CheckUse(invocation);
  OrEnd(ExitStatus::NotInstalled, CheckXmlParser());
  const bool json = invocation.Has(OptionId::Json);
  const auto workspace = OrEnd(ExitStatus::JobFailed, Workspace::Create(json));
  OrEnd(ExitStatus::NotInstalled, workspace->MakeDirectory());
  WorkProgress progress(json);
  progress.Enter("unpacking");
  Task task{invocation, *workspace, progress, Open(invocation.operand, *workspace, progress)};
  Run(task);
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
