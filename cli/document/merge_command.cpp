#include "cli/document/merge_command.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/long_output.h"
#include "cli/console/standard_streams.h"
#include "cli/document/document_summary.h"
#include "cli/document/drawing.h"
#include "cli/document/merge_report.h"
#include "cli/document/merge_run.h"
#include "cli/document/merge_table.h"
#include "cli/document/merge_template.h"
#include "cli/document/open_template.h"
#include "cli/document/plate_blank.h"
#include "cli/document/template_fields.h"
#include "cli/document/template_tree.h"
#include "cli/input/xml_input.h"
#include "cli/sheet/failed_spreadsheet.h"
#include "cli/sheet/work_progress.h"
#include "cli/sheet/workspace.h"
#include "host/document/notices.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"

namespace rastrel::cli {
namespace {

std::string TablePathOf(const Invocation& invocation) {
  std::string path = invocation.ValueOr(OptionId::Data, "");
  if (path.empty())
    throw CommandError(ExitStatus::WrongUse,
                       "`rastrel merge` needs --data TABLE, the table with a row for each plate");
  return path;
}

TemplateFormat MergeableFormat(const Invocation& invocation) {
  const TemplateFormat format = FormatFor(invocation, invocation.operand);
  if (format == TemplateFormat::Document)
    throw CommandError(ExitStatus::WrongUse,
                       invocation.operand + ": a document has no fields; merge takes a template");
  return format;
}

XmlNode LoadOrEnd(const std::string& path, TemplateFormat format) {
  XmlNode root = LoadTemplate(format, ReaderPath(path));
  if (root) return root;
  const auto state = xml::TakeXmlFailure();
  throw CommandError(
      ExitStatus::BadInput,
      state ? path + ": can't be read"
            : Describe(FailureAt(os::Utf8FromWide(os::FromNative(path)), state.Error())));
}

template <typename T>
T OfTemplate(const std::string& path, Expected<T> value) {
  if (value) return *std::move(value);
  const Failure& failure = value.Error();
  throw CommandError(
      ExitStatus::BadInput,
      path + (failure.line > 0 ? ":" + std::to_string(failure.line) : "") + ": " + failure.why);
}

MergeTemplate ReadMergeTemplate(const std::string& path, TemplateFormat format,
                                const MergeTable& table) {
  return OfTemplate(path, MergeTemplate::Read(LoadOrEnd(path, format), format, table));
}

void WriteField(const TemplateField& field, bool json) {
  const auto maximum = static_cast<std::int64_t>(field.maximum);
  if (json) {
    JsonLine("merge-field")
        .Add("name", field.heading)
        .Add("kind", NameOf(field.kind))
        .Add("maximum", maximum)
        .Write();
    return;
  }
  WriteOutLine(field.heading + ": " + NameOf(field.kind) +
               (maximum > 0 ? ", at most " + std::to_string(maximum) + " characters" : ""));
}

ExitStatus ListTheFields(const Invocation& invocation) {
  for (const OptionId other : {OptionId::Data, OptionId::OutputFile, OptionId::OnlyBad})
    if (invocation.Has(other))
      throw CommandError(ExitStatus::WrongUse,
                         std::string("--fields takes no ") + OptionOf(other).name);
  OrEnd(ExitStatus::BadInput, CheckTemplateFile(invocation.operand));
  OrEnd(ExitStatus::NotInstalled, CheckXmlParser());
  const TemplateFormat format = MergeableFormat(invocation);
  const auto fields = OfTemplate(
      invocation.operand, MergeTemplate::FieldsOf(LoadOrEnd(invocation.operand, format), format));
  for (const TemplateField& field : fields) WriteField(field, invocation.Has(OptionId::Json));
  return ExitStatus::Done;
}

// The rows that are to be merged.
std::vector<MergeRow> WantedRows(const Invocation& invocation, MergeTable& table) {
  if (!invocation.Has(OptionId::OnlyBad)) return std::move(table.rows);
  const std::string path = invocation.ValueOr(OptionId::OnlyBad, "");
  const auto bad = OrEnd(ExitStatus::BadInput, BadRowsOf(path));
  if (bad.empty()) throw CommandError(ExitStatus::BadInput, path + ": none of its rows is bad");
  const std::unordered_set<std::uint64_t> wanted(bad.begin(), bad.end());
  std::vector<MergeRow> rows;
  for (MergeRow& row : table.rows) {
    if (wanted.contains(row.number)) rows.push_back(std::move(row));
  }
  if (rows.empty())
    throw CommandError(ExitStatus::BadInput,
                       path + ": the table has none of the rows that it says are bad");
  return rows;
}

void WriteReports(const std::vector<RowReport>& reports, bool json) {
  LongOutput output;
  for (const RowReport& report : reports)
    output.Append(json ? report.JsonLine() : os::CleanLine(report.Text()) + "\n");
}

ExitStatus StatusOf(const OpenedFile& file, const std::vector<RowReport>& reports, bool strict) {
  const bool placed = std::ranges::all_of(reports, &RowReport::placed);
  if (!placed || !file.host->GetNotices().Losses().empty()) return ExitStatus::JobFailed;
  const bool bad = std::ranges::any_of(reports, &RowReport::IsBad);
  return strict && (bad || !file.findings.empty()) ? ExitStatus::BadInput : ExitStatus::Done;
}

}  // namespace

ExitStatus MergeCommand(const Invocation& invocation) {
  if (invocation.Has(OptionId::ListFields)) return ListTheFields(invocation);
  const std::string output = invocation.ValueOr(OptionId::OutputFile, "");
  const DrawingRequest request = OrEnd(ExitStatus::WrongUse, DrawingRequestOf(invocation, output));
  const std::string tablePath = TablePathOf(invocation);
  OrEnd(ExitStatus::BadInput, CheckTemplateFile(invocation.operand));
  OrEnd(ExitStatus::NotInstalled, CheckXmlParser());
  const bool json = invocation.Has(OptionId::Json);
  const auto workspace = OrEnd(ExitStatus::JobFailed, sheet::Workspace::Create(json));
  OrEnd(ExitStatus::NotInstalled, workspace->MakeDirectory());
  sheet::WorkProgress progress(json);
  const TemplateFormat format = MergeableFormat(invocation);
  MergeTable table = sheet::ValueOf(
      ReadMergeTable(tablePath, invocation.ValueOr(OptionId::Sheet, ""), *workspace, progress));
  const MergeTemplate merge = ReadMergeTemplate(invocation.operand, format, table);
  const std::vector<MergeRow> rows = WantedRows(invocation, table);
  std::vector<RowReport> reports = BeginReports(merge, table, rows);
  const Invocation sized =
      WithPlateBlank({invocation, *workspace, progress, format, merge, rows, tablePath});
  const OpenedFile file =
      RunMerge({sized, *workspace, progress, format, merge, rows, tablePath}, reports);
  std::vector<std::string> files;
  if (!output.empty()) {
    progress.Enter("drawing");
    files = DrawOrEnd(*file.host, request, output);
  }
  WriteReports(reports, json);
  WriteSummary(file, invocation.operand, files, json);
  return StatusOf(file, reports, invocation.Has(OptionId::Strict));
}

}  // namespace rastrel::cli
