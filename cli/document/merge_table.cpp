#include "cli/document/merge_table.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "cli/input/file_head.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "spreadsheet/separated_text.h"
#include "spreadsheet/source.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t HeadSize = 512;

std::string Trimmed(const std::string& text) {
  constexpr const char* whitespace = " \t\r\n";
  const std::size_t first = text.find_first_not_of(whitespace);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(whitespace) - first + 1);
}

// Takes the first row as headings and keeps the others.
class TableSink : public spreadsheet::RowSink {
 public:
  explicit TableSink(MergeTable& table) : m_Table(table) {}

  Expected<void> BeginSheet(const spreadsheet::SheetInfo& /*sheet*/,
                            std::size_t /*number*/) override {
    return {};
  }
  Expected<void> Row(std::uint64_t row, std::vector<std::string>& cells) override {
    if (m_Table.headings.empty())
      for (const std::string& cell : cells) m_Table.headings.push_back(Trimmed(cell));
    else
      m_Table.rows.push_back({row, std::move(cells)});
    return {};
  }

 private:
  MergeTable& m_Table;
};

bool IsNamedAsText(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension();
  std::ranges::transform(extension, extension.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return extension == ".csv" || extension == ".tsv" || extension == ".txt";
}

Expected<void> ReadText(const std::string& path, spreadsheet::RowSink& sink) {
  auto bytes = os::ReadWholeFile(os::FromNative(path), spreadsheet::MaximumSeparatedText);
  if (!bytes) return bytes.Error();
  const std::string text = spreadsheet::TextOfTable(*bytes);
  auto read = spreadsheet::ReadSeparatedText(text, spreadsheet::SeparatorOf(text), sink);
  if (!read) return FailureOf(path + ": " + Describe(read.Error()));
  return read;
}

// The place of the wanted sheet, or of the first that a person sees.
Expected<int> PlaceOf(const spreadsheet::Source& source, const std::string& wanted) {
  const auto sheets = SheetsOf(source);
  if (!sheets) return sheets.Error();
  if (!wanted.empty()) return PlaceOfSheet(*sheets, wanted);
  const auto shown = std::ranges::find_if(*sheets, [](const spreadsheet::SheetInfo& sheet) {
    return sheet.visibility == spreadsheet::Visibility::Visible && sheet.hasCells;
  });
  if (shown == sheets->end()) return FailureOf("it has no sheet that is shown");
  return static_cast<int>(shown - sheets->begin());
}

Expected<void> ReadSpreadsheet(const std::string& path, const std::string& wanted,
                               const sheet::Workspace& workspace, sheet::WorkProgress& progress,
                               spreadsheet::RowSink& sink) {
  const auto folder = workspace.MakeFolder("package");
  if (!folder) return folder.Error();
  auto source = spreadsheet::OpenSource(
      path, *folder, [&](std::uint64_t done, std::uint64_t whole) { progress.Reach(done, whole); });
  if (!source) return source.Error();
  const auto place = PlaceOf(*source, wanted);
  if (!place) return FailureOf(path + ": " + Describe(place.Error()));
  return ReadRows(*source, *place, sink);
}

}  // namespace

const std::string& MergeRow::Cell(std::size_t column) const {
  static const std::string none;
  return column < cells.size() ? cells[column] : none;
}

Expected<std::size_t> MergeTable::ColumnOf(const std::string& heading) const {
  const auto found = std::ranges::find(headings, heading);
  if (heading.empty() || found == headings.end())
    return FailureOf("the table has no heading \"" + heading + "\"");
  if (std::find(found + 1, headings.end(), heading) != headings.end())
    return FailureOf("the table has the heading \"" + heading + "\" more than once");
  return static_cast<std::size_t>(found - headings.begin());
}

Expected<MergeTable> ReadMergeTable(const std::string& path, const std::string& sheet,
                                    const sheet::Workspace& workspace,
                                    sheet::WorkProgress& progress) {
  progress.Enter("reading the table");
  MergeTable table;
  TableSink sink(table);
  const auto head = ReadFileHead(path, HeadSize);
  if (!head) return FailureOf(path + ": " + Describe(head.Error()));
  const bool spreadsheet =
      !IsNamedAsText(path) && (spreadsheet::IsContainer(*head) || MayBeXml(*head));
  auto read =
      spreadsheet ? ReadSpreadsheet(path, sheet, workspace, progress, sink) : ReadText(path, sink);
  if (!read) return read.Error();
  if (!spreadsheet && !sheet.empty())
    return FailureOf(path + ": a text has no sheets, so --sheet does not go with it");
  if (table.headings.empty())
    return FailureOf(path + ": the table is empty: its first row has to have the headings");
  if (table.rows.empty()) return FailureOf(path + ": the table has no row below its headings");
  return table;
}

}  // namespace rastrel::cli
