#include "cli/sheet/sheet_command.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/long_output.h"
#include "cli/console/options.h"
#include "cli/console/standard_streams.h"
#include "cli/input/file_head.h"
#include "cli/input/standard_input.h"
#include "cli/input/xml_input.h"
#include "cli/sheet/failed_spreadsheet.h"
#include "cli/sheet/faithful_text.h"
#include "cli/sheet/row_text.h"
#include "cli/sheet/work_progress.h"
#include "cli/sheet/workspace.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/reader_gone.h"
#include "spreadsheet/source.h"

namespace rastrel::cli {
namespace {

using sheet::RowCounter;
using sheet::RowText;
using sheet::WorkProgress;
using sheet::Workspace;
using spreadsheet::Source;

/// Where the text goes; empty for standard output.
std::string TargetOf(const Invocation& invocation) {
  const std::string target = invocation.ValueOr(OptionId::OutputFile, StandardOutputName);
  return target == StandardOutputName ? std::string() : target;
}

// Thrown where the work for standard output ends, since nobody reads that any more.
struct NoReader {};

void EndWithoutReader() {
  if (os::ReaderIsGone(os::StandardHandle(os::StandardStream::Output))) throw NoReader();
}

// Hands rows on as long as somebody reads standard output.
class WhileRead : public spreadsheet::RowSink {
 public:
  explicit WhileRead(spreadsheet::RowSink& sink) : m_Sink(sink) {}

  Expected<void> BeginSheet(const spreadsheet::SheetInfo& sheet, std::size_t number) override {
    return m_Sink.BeginSheet(sheet, number);
  }
  Expected<void> Row(std::uint64_t row, std::vector<std::string>& cells) override {
    constexpr unsigned step = 256;  // asking is a call of the system
    if (++m_Rows % step == 0) EndWithoutReader();
    return m_Sink.Row(row, cells);
  }

 private:
  spreadsheet::RowSink& m_Sink;
  unsigned m_Rows = 0;
};

struct Task {
  const Invocation& invocation;
  Workspace& workspace;
  WorkProgress& progress;
  Source source;
  int only = -1;  // place of the one sheet that is wanted

  [[nodiscard]] bool IsJson() const { return invocation.Has(OptionId::Json); }
  [[nodiscard]] std::string Target() const { return TargetOf(invocation); }
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
      WriteErrorLine("rastrel: " + message);
  }
}

void CopyToOutput(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::array<char, 64 * 1024> piece;
  LongOutput output;
  while (file) {
    file.read(piece.data(), piece.size());
    output.Append({piece.data(), static_cast<std::size_t>(file.gcount())});
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

// The text is as private as the spreadsheet.
void Deliver(Task& task, const std::string& text) {
  OrEnd(ExitStatus::JobFailed,
        task.workspace.Deliver(text, task.Target(), AccessOf(task.invocation.operand)));
}

void WriteFaithful(Task& task) {
  std::vector<std::string> notes;
  task.progress.Enter("reading");
  const std::string text =
      sheet::ValueOf(MakeFaithfulText(task.source, task.only, task.workspace, notes));
  if (!task.Target().empty())
    Deliver(task, text);
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
    WhileRead whileRead(text);
    spreadsheet::RowSink* sink = &text;
    if (task.Target().empty()) sink = &whileRead;
    sheet::RequireSuccess(ReadRows(task.source, task.only, *sink));
    sheet::RequireSuccess(text.Finish());
  }
  if (task.Target().empty())
    CopyToOutput(path);
  else
    Deliver(task, path);
  WriteDone(task);
}

void WriteList(Task& task) {
  RowCounter counter;
  task.progress.Enter("counting");
  WhileRead whileRead(counter);
  sheet::RequireSuccess(ReadRows(task.source, task.only, whileRead));
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
    WriteOutData(line + "\t" + visibility + "\t" + std::to_string(rows) + " rows\t" +
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

Source Open(const Invocation& invocation, const Workspace& workspace, WorkProgress& progress) {
  CheckKind(invocation.operand);
  const bool toOutput = TargetOf(invocation).empty();
  return sheet::ValueOf(spreadsheet::OpenSource(
      invocation.operand, OrEnd(ExitStatus::JobFailed, workspace.MakeFolder("package")),
      [&progress, toOutput](std::uint64_t done, std::uint64_t whole) {
        if (toOutput) EndWithoutReader();
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
  try {
    Task task{invocation, *workspace, progress, Open(invocation, *workspace, progress)};
    Run(task);
  } catch (const NoReader&) {
    // As after a text that is written to its end: that nobody wants more of it is no failure.
  }
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
