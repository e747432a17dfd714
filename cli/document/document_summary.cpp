#include "cli/document/document_summary.h"

#include <variant>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "host/document/measure_text.h"
#include "host/document/notices.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

void Count(const document::Document& document, host::ObjectHandle root, DocumentCounts& counts) {
  for (const host::ObjectHandle member : document.Members(root)) {
    const document::Shape& shape = document.Find(member)->shape;
    if (const auto* plate = std::get_if<document::PlateShape>(&shape)) {
      ++counts.plateObjects;
      counts.panes += plate->panes.size();
    } else if (std::holds_alternative<document::TextShape>(shape) ||
               std::holds_alternative<document::ArcTextShape>(shape)) {
      ++counts.texts;
    } else if (std::holds_alternative<document::DrillShape>(shape)) {
      ++counts.drillPoints;
    } else if (std::holds_alternative<document::GraphicShape>(shape) ||
               std::holds_alternative<document::SeparationShape>(shape) ||
               std::holds_alternative<document::BitmapShape>(shape)) {
      ++counts.graphics;
    } else if (std::holds_alternative<document::GroupShape>(shape)) {
      Count(document, member, counts);
    } else {
      ++counts.paths;
    }
  }
}

std::string Number(std::size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

void WriteText(const OpenedFile& file, const std::string& path,
               const std::vector<std::string>& output) {
  for (const Finding& finding : file.findings) {
    WriteErrorLine(path + ":" + (finding.line > 0 ? std::to_string(finding.line) + ":" : "") + " " +
                   finding.text);
  }
  const document::Notices& notices = file.host->GetNotices();
  if (file.findings.empty()) {
    for (const std::wstring& text : notices.Texts())
      WriteErrorLine("rastrel: " + os::Utf8FromWide(text));
  }
  for (const std::wstring& text : notices.Losses())
    WriteErrorLine("rastrel: left out: " + os::Utf8FromWide(text));
  const document::Document& document = file.host->GetDocument();
  const DocumentCounts counts = CountsOf(document);
  const document::SignBlank& blank = document.Blank();
  std::string text = Number(static_cast<std::size_t>(counts.pages), "page", "pages") + " of " +
                     document::SizeText(blank.width, blank.height) + ": " +
                     Number(counts.panes, "plate", "plates") + ", " +
                     Number(counts.texts, "text", "texts") + ", " +
                     Number(counts.drillPoints, "drill point", "drill points");
  if (counts.graphics > 0) text += ", " + Number(counts.graphics, "graphic", "graphics");
  if (counts.paths > 0) text += ", " + Number(counts.paths, "path", "paths");
  if (document.Rotation() != 0) text += ", rotation " + os::ShortDecimal(document.Rotation(), 3);
  for (const std::string& name : output)
    text += (&name == output.data() ? "; written to " : ", ") + name;
  WriteOutLine(text);
}

void WriteJson(const OpenedFile& file, const std::string& path,
               const std::vector<std::string>& output) {
  for (const Finding& finding : file.findings)
    JsonLine("finding")
        .Add("file", path)
        .Add("line", finding.line)
        .Add("text", finding.text)
        .Write();
  for (const std::wstring& text : file.host->GetNotices().Texts())
    JsonLine("note").Add("text", os::Utf8FromWide(text)).Write();
  for (const std::wstring& text : file.host->GetNotices().Losses())
    JsonLine("left-out").Add("text", os::Utf8FromWide(text)).Write();
  WriteOutLines(file.records);
  const document::Document& document = file.host->GetDocument();
  const DocumentCounts counts = CountsOf(document);
  const auto number = [](std::size_t count) { return static_cast<std::int64_t>(count); };
  JsonLine("document")
      .Add("file", path)
      .Add("format", NameOf(file.format))
      .Add("pages", counts.pages)
      .AddNumber("width_cm", document.Blank().width)
      .AddNumber("height_cm", document.Blank().height)
      .AddNumber("rotation", document.Rotation())
      .Add("plate_objects", number(counts.plateObjects))
      .Add("plates", number(counts.panes))
      .Add("texts", number(counts.texts))
      .Add("drill_points", number(counts.drillPoints))
      .Add("graphics", number(counts.graphics))
      .Add("paths", number(counts.paths))
      .Add("output", output)
      .Write();
}

}  // namespace

DocumentCounts CountsOf(const document::Document& document) {
  DocumentCounts counts;
  counts.pages = document.HighestPage();
  Count(document, host::DocumentRoot, counts);
  return counts;
}

void WriteSummary(const OpenedFile& file, const std::string& path,
                  const std::vector<std::string>& output, bool json) {
  json ? WriteJson(file, path, output) : WriteText(file, path, output);
}

}  // namespace rastrel::cli
