#include "cli/document/merge_report.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>
#include <utility>
#include <variant>

#include "cli/console/json_text.h"
#include "cli/document/text_findings.h"
#include "host/document/document.h"
#include "host/text/arc_layout.h"
#include "host/text/font_catalog.h"
#include "host/text/text_check.h"
#include "host/text/text_layout.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr double MillimetresPerPoint = 25.4 / 72;
constexpr std::uint64_t MaximumReport = 1ULL << 30;
constexpr std::size_t ShownCharacters = 40;

void AddOnce(std::vector<std::string>& list, std::string text) {
  if (std::ranges::find(list, text) == list.end()) list.push_back(std::move(text));
}

std::string Shortened(std::wstring text) {
  if (text.size() > ShownCharacters) text = text.substr(0, ShownCharacters) + L"...";
  return os::Utf8FromWide(text);
}

std::string BeginningOf(const document::TextShape& shape) {
  std::wstring text;
  for (const document::TextLine& line : shape.lines) {
    if (!text.empty()) text += L' ';
    for (const document::TextRun& run : line.runs) text += run.text;
    if (text.size() > ShownCharacters) break;
  }
  return Shortened(std::move(text));
}

int PercentOf(double needed) {
  return static_cast<int>(std::min(std::ceil(needed * 100 - 1e-6), 1e6));
}

// How far a text is beyond its frame; a percentage of at most 100 if it fits.
OverflowedText OverflowOf(const document::TextShape& shape, const text::TextLayout& layout) {
  OverflowedText found;
  found.squeezed = layout.IsSqueezed();
  double needed = 1;
  for (const text::PlacedLine& line : layout.Lines()) {
    // A text that is squeezed as a whole has lines that would fit by themselves.
    const double scale = std::min(line.scaleX, line.scaleY);
    if (scale > 0) needed = std::max(needed, 1 / scale);
    if (line.scaleX < line.scaleY)
      found.beyondMm = std::max(found.beyondMm, (line.natural - line.width) * MillimetresPerPoint);
  }
  if (!found.squeezed) {
    const double room = (shape.frame.right - shape.frame.left) * 10 / MillimetresPerPoint;
    for (const text::PlacedLine& line : layout.Lines()) {
      if (room <= 0 || line.width <= room * 1.0001) continue;
      found.beyondMm = std::max(found.beyondMm, (line.width - room) * MillimetresPerPoint);
      needed = std::max(needed, line.width / room);
    }
  }
  found.percent = PercentOf(needed);
  return found;
}

// The frame of a text on a circle is the circle's length.
OverflowedText OverflowOf(const text::ArcLayout& layout) {
  const text::PlacedRun& run = layout.Run();
  OverflowedText found;
  found.squeezed = layout.IsSqueezed();
  if (found.squeezed) found.beyondMm = run.width * (1 - run.scaleX) * MillimetresPerPoint;
  found.percent = PercentOf(1 / run.scaleX);
  return found;
}

void CheckFont(const document::TextRun& run, RowReport& row) {
  if (!run.replacement.empty()) AddOnce(row.missingFonts, os::Utf8FromWide(run.font));
}

// Adds the overflow of a text that begins like `beginning`, and its letters that
// can't be seen or that no font has.
template <typename Shape, typename Layout>
void AddFaults(const Shape& shape, const Layout& layout, OverflowedText overflow,
               std::string beginning, RowReport& row) {
  if (overflow.percent > 100) {
    overflow.text = std::move(beginning);
    row.overflowed.push_back(std::move(overflow));
  }
  if (const auto unseen = text::InvisibleTextNotice(shape, layout, 1))
    AddOnce(row.notes, os::Utf8FromWide(*unseen));
  if (const auto missing = text::MissingLettersNotice(shape, layout))
    AddOnce(row.notes, os::Utf8FromWide(*missing));
}

void CheckText(const document::Object& object, const text::FontCatalog& fonts, RowReport& row) {
  if (const auto* arc = std::get_if<document::ArcTextShape>(&object.shape)) {
    CheckFont(arc->run, row);
    const text::ArcLayout layout(*arc, fonts);
    return AddFaults(*arc, layout, OverflowOf(layout), Shortened(arc->run.text), row);
  }
  const auto& shape = std::get<document::TextShape>(object.shape);
  for (const document::TextLine& line : shape.lines) {
    for (const document::TextRun& run : line.runs) CheckFont(run, row);
  }
  const text::TextLayout layout(shape, fonts);
  AddFaults(shape, layout, OverflowOf(shape, layout), BeginningOf(shape), row);
}

std::string Sentence(const OverflowedText& text) {
  std::string sentence =
      "\"" + text.text + "\" needs " + std::to_string(text.percent) + " % of its frame";
  if (text.beyondMm > 0) {
    const double tenths = std::ceil(text.beyondMm * 10 - 1e-6) / 10;
    sentence += ", " + os::ShortDecimal(tenths, 1) + " mm too much";
  }
  return sentence + (text.squeezed ? ", and is squeezed" : "");
}

}  // namespace

std::string RowReport::Text() const {
  std::string text =
      "row " + std::to_string(row) + ": " + (placed ? "placed on page" : "not placed");
  if (placed && pages.size() > 1) text += "s";
  for (std::size_t i = 0; i < pages.size(); ++i)
    text += (i == 0 ? " " : ", ") + std::to_string(pages[i]);
  for (const OverflowedText& one : overflowed) text += "; " + Sentence(one);
  for (const std::string& heading : missingValues) text += "; no value for \"" + heading + "\"";
  for (const std::string& font : missingFonts) text += "; the font \"" + font + "\" can't be had";
  for (const std::string& note : notes) text += "; " + note;
  return text;
}

std::string RowReport::JsonLine() const {
  nlohmann::ordered_json line;
  line["event"] = "merge-row";
  line["row"] = row;
  line["placed"] = placed;
  line["bad"] = IsBad();
  line["pages"] = pages;
  line["overflowed"] = nlohmann::ordered_json::array();
  for (const OverflowedText& one : overflowed) {
    nlohmann::ordered_json text;
    text["text"] = one.text;
    text["beyond_mm"] = std::round(one.beyondMm * 100) / 100;
    text["percent"] = one.percent;
    text["squeezed"] = one.squeezed;
    line["overflowed"].push_back(std::move(text));
  }
  line["missing_values"] = missingValues;
  line["missing_fonts"] = missingFonts;
  line["notes"] = notes;
  return JsonText(line) + "\n";
}

std::vector<RowReport> BeginReports(const MergeTemplate& merge, const MergeTable& table,
                                    const std::vector<MergeRow>& rows) {
  std::vector<RowReport> reports;
  reports.reserve(rows.size());
  for (const MergeRow& row : rows) {
    RowReport& report = reports.emplace_back();
    report.row = row.number;
    for (const std::size_t column : merge.Columns()) {
      const std::string& value = row.Cell(column);
      if (value.empty()) report.missingValues.push_back(table.headings[column]);
      if (HasUnwritableCharacters(value))
        report.notes.push_back("the value of \"" + table.headings[column] +
                               "\" has control characters, which U+FFFD stands for");
    }
  }
  return reports;
}

bool PlaceRows(const document::Document& document, std::size_t platesARow,
               std::vector<RowReport*>& rows) {
  const std::vector<PlacedPane> panes = PanesOf(document);
  if (panes.size() != platesARow * rows.size()) return false;
  for (std::size_t i = 0; i < panes.size(); ++i) {
    RowReport& row = *rows[i / platesARow];
    row.placed = true;
    if (row.pages.empty() || row.pages.back() != panes[i].page) row.pages.push_back(panes[i].page);
  }
  return true;
}

void CheckTexts(const document::DocumentHost& host, std::size_t platesARow,
                const std::vector<RowReport*>& rows, sheet::WorkProgress& progress) {
  const document::Document& document = host.GetDocument();
  const std::vector<PlacedPane> panes = PanesOf(document);
  PaneFinder finder(panes);
  const auto& members = document.Members(host::DocumentRoot);
  for (std::size_t i = 0; i < members.size(); ++i) {
    const document::Object& object = *document.Find(members[i]);
    if (!IsText(object)) continue;
    const std::size_t pane = finder.Find(document, members[i]);
    if (pane < panes.size() && pane / platesARow < rows.size())
      CheckText(object, host.GetFonts(), *rows[pane / platesARow]);
    progress.Reach(i, members.size());
  }
}

void CheckTextsOfRow(const document::DocumentHost& host, RowReport& row) {
  const document::Document& document = host.GetDocument();
  for (const host::ObjectHandle member : document.Members(host::DocumentRoot)) {
    const document::Object& object = *document.Find(member);
    if (IsText(object)) CheckText(object, host.GetFonts(), row);
  }
}

Expected<std::vector<std::uint64_t>> BadRowsOf(const std::string& path) {
  const auto bytes = os::ReadWholeFile(os::FromNative(path), MaximumReport);
  if (!bytes) return bytes.Error();
  std::vector<std::uint64_t> rows;
  bool any = false;
  std::istringstream lines(*bytes);
  for (std::string line; std::getline(lines, line);) {
    const auto object = nlohmann::json::parse(line, nullptr, false);
    if (!object.is_object() || object.value("event", nlohmann::json()) != "merge-row") continue;
    const auto row = object.find("row");
    const auto bad = object.find("bad");
    if (row == object.end() || !row->is_number_unsigned() || bad == object.end() ||
        !bad->is_boolean())
      continue;
    any = true;
    if (bad->get<bool>()) rows.push_back(row->get<std::uint64_t>());
  }
  if (!any) return FailureOf(path + ": it is no report of `rastrel merge --json`");
  return rows;
}

}  // namespace rastrel::cli
