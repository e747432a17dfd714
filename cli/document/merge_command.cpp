#include "cli/document/merge_command.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
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
#include "host/document/document.h"
#include "host/document/notices.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/output_file.h"
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

// Of the merged template, so that runs of one merge know whether they have the same: FNV-1a.
std::string SumOf(const std::string& text) {
  std::uint64_t sum = 0xcbf29ce484222325;
  for (const char byte : text) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
  return std::to_string(sum);
}

void CheckKind(const DrawingRequest& request, const std::string& output) {
  if (request.kind == DrawingKind::Svg || request.kind == DrawingKind::Png) return;
  throw CommandError(ExitStatus::WrongUse,
                     "-o " + output +
                         ": a batch makes a file of each page, .png or .svg; one file of all pages "
                         "comes from `rastrel merge`");
}

void WriteCount(const std::string& path, int pages, const std::string& sum) {
  const nlohmann::json count{
      {"format", MergeCountFormat}, {"version", 1}, {"pages", pages}, {"sum", sum}};
  OrEnd(ExitStatus::JobFailed,
        os::ReplaceFile(os::FromNative(path), count.dump() + "\n", os::Access::Private));
}

std::string NameOfPage(const std::string& output, int page, int pages) {
  return pages == 1 ? output : os::NumberedPath(output, static_cast<unsigned>(page));
}

// A document without a page is drawn as an empty one.
int PagesOf(const OpenedFile& file) { return std::max(file.host->GetDocument().HighestPage(), 1); }

// The rows are reported by another run; this one reports the notices of the drawing alone.
ExitStatus DrawPage(const OpenedFile& file, DrawingRequest request, const std::string& output,
                    int page, bool json) {
  const document::Notices& notices = file.host->GetNotices();
  const std::size_t texts = notices.Texts().size();
  const std::size_t losses = notices.Losses().size();
  const int pages = PagesOf(file);
  request.page = page;
  // The user gave the name of an only page, but not those with a number.
  if (pages > 1) request.single = os::Existing::Replaced;
  static_cast<void>(DrawOrEnd(*file.host, request, NameOfPage(output, page, pages)));
  const auto tell = [json](const char* event, const char* before, const std::wstring& text) {
    if (json)
      JsonLine(event).Add("text", os::Utf8FromWide(text)).Write();
    else
      WriteErrorLine(before + os::Utf8FromWide(text));
  };
  for (std::size_t i = texts; i < notices.Texts().size(); ++i)
    tell("note", "rastrel: ", notices.Texts()[i]);
  for (std::size_t i = losses; i < notices.Losses().size(); ++i)
    tell("left-out", "rastrel: left out: ", notices.Losses()[i]);
  return notices.Losses().size() > losses ? ExitStatus::JobFailed : ExitStatus::Done;
}

// The files of the pages that other runs have drawn.
std::vector<std::string> DrawnFiles(const std::string& output, int pages) {
  std::vector<std::string> files;
  for (int page = 1; page <= pages; ++page) {
    const std::string name = NameOfPage(output, page, pages);
    if (os::Exists(os::FromNative(name))) files.push_back(name);
  }
  return files;
}

}  // namespace

ExitStatus MergeCommand(const Invocation& invocation, const MergePart& part) {
  if (invocation.Has(OptionId::ListFields)) return ListTheFields(invocation);
  using Kind = MergePart::Kind;
  const std::string output = invocation.ValueOr(OptionId::OutputFile, "");
  const DrawingRequest request = OrEnd(ExitStatus::WrongUse, DrawingRequestOf(invocation, output));
  if (part.kind != Kind::Whole) CheckKind(request, output);
  const std::string tablePath = TablePathOf(invocation);
  OrEnd(ExitStatus::BadInput, CheckTemplateFile(invocation.operand));
  OrEnd(ExitStatus::NotInstalled, CheckXmlParser());
  const bool json = invocation.Has(OptionId::Json);
  // Nobody follows the steps of a part.
  const bool shows = json && part.kind == Kind::Whole;
  const auto workspace = OrEnd(ExitStatus::JobFailed, sheet::Workspace::Create(json));
  OrEnd(ExitStatus::NotInstalled, workspace->MakeDirectory());
  sheet::WorkProgress progress(shows);
  const TemplateFormat format = MergeableFormat(invocation);
  MergeTable table = sheet::ValueOf(
      ReadMergeTable(tablePath, invocation.ValueOr(OptionId::Sheet, ""), *workspace, progress));
  const MergeTemplate merge = ReadMergeTemplate(invocation.operand, format, table);
  const std::vector<MergeRow> rows = WantedRows(invocation, table);
  std::string sum;
  if (part.kind != Kind::Whole) sum = SumOf(merge.Write(rows).text);
  if (!part.sum.empty() && part.sum != sum)
    throw CommandError(ExitStatus::BadInput,
                       invocation.operand + ", " + tablePath +
                           ": the template or the table has changed since the batch began");
  std::vector<RowReport> reports = BeginReports(merge, table, rows);
  const Invocation sized =
      WithPlateBlank({invocation, *workspace, progress, format, merge, rows, tablePath});
  const OpenedFile file =
      RunMerge({sized, *workspace, progress, format, merge, rows, tablePath}, reports);
  const int pages = PagesOf(file);
  if (part.kind == Kind::Count) {
    WriteCount(part.file, pages, sum);
    return ExitStatus::Done;
  }
  if (part.kind == Kind::Page) return DrawPage(file, request, output, part.page, json);
  std::vector<std::string> files;
  if (part.kind == Kind::Report) {
    files = DrawnFiles(output, pages);
  } else if (!output.empty()) {
    progress.Enter("drawing");
    files = DrawOrEnd(*file.host, request, output);
  }
  WriteReports(reports, json);
  WriteSummary(file, invocation.operand, files, json);
  return StatusOf(file, reports, invocation.Has(OptionId::Strict));
}

}  // namespace rastrel::cli
