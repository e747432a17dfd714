#include "cli/document/merge_template.h"

#include <algorithm>
#include <array>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "rastrel/platform/os/text.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/save.h"

namespace rastrel::cli {
namespace {

// The elements of a format that rows repeat, as the names below the root; empty for none.
struct RepeatRow {
  TemplateFormat format;
  std::array<std::wstring_view, 2> plate;
  std::array<std::wstring_view, 2> graphic;
  bool hasReferences;  // its reader replaces character references in texts of its own
};

constexpr std::array Repeats{
    RepeatRow{TemplateFormat::Abb, {L"ENGRAVINGTEMPLATE", L"PLATE"}, {}, false},
    RepeatRow{TemplateFormat::BrightStar, {}, {}, false},
    RepeatRow{TemplateFormat::Cro, {L"PLATES", L"PLATE"}, {L"TEMPLATEGRAPHIC"}, false},
    RepeatRow{TemplateFormat::Llx, {}, {}, false},
    RepeatRow{TemplateFormat::Cr2, {L"plates", L"plate"}, {L"graphics", L"graphic_location"}, true},
    RepeatRow{TemplateFormat::Zml, {L"plates", L"plate"}, {L"graphics", L"graphic_location"}, true},
};

std::string Shown(std::wstring_view name) { return "<" + os::Utf8FromWide(name) + ">"; }

std::string ListOf(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) {
    if (!name.empty()) list += (list.empty() ? "\"" : ", \"") + name + "\"";
  }
  return list.empty() ? "none" : list;
}

// The bytes at a place of UTF-8 that are a character which XML can't have; 0 if it can.
std::size_t UnwritableAt(std::string_view text, std::size_t place) {
  const auto byte = static_cast<unsigned char>(text[place]);
  if (byte < 0x20) return byte == '\t' || byte == '\n' || byte == '\r' ? 0 : 1;
  const std::string_view three = text.substr(place, 3);
  return three == "\xEF\xBF\xBE" || three == "\xEF\xBF\xBF" ? 3 : 0;
}

// A value so that XML reads it back, on one line.
void AppendValue(std::string& target, std::string_view value, bool hasReferences) {
  std::string clean;
  for (std::size_t i = 0; i < value.size();) {
    const std::size_t bad = UnwritableAt(value, i);
    if (bad > 0) {
      clean += "\xEF\xBF\xBD";
    } else {
      clean += value[i];
      if (hasReferences && value[i] == '&') clean += "amp;";
    }
    i += std::max<std::size_t>(bad, 1);
  }
  xml::AppendXmlText(target, clean, true);
}

}  // namespace

bool HasUnwritableCharacters(std::string_view value) {
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (UnwritableAt(value, i) > 0) return true;
  }
  return false;
}

// Takes a template piece by piece and sorts the pieces into sections.
class TemplateCutter : public xml::XmlPieces {
 public:
  // Without a table each field is a column of its own, and `Fields` has them.
  TemplateCutter(TemplateFormat format, const MergeTable* table, MergeTemplate& result)
      : m_Row(*std::ranges::find(Repeats, format, &RepeatRow::format)),
        m_Table(table),
        m_Result(result) {
    m_Result.m_IsDocumentARow = m_Row.plate[0].empty();
    Open(m_Result.m_IsDocumentARow ? MergeTemplate::Section::Kind::Rows
                                   : MergeTemplate::Section::Kind::Once);
    m_Target = &m_Result.m_Sections.back().pieces;
    if (m_Result.m_IsDocumentARow) m_Result.m_PlatesARow = 1;
  }

  bool Begin(const XmlNode& element) override {
    if (!m_State) return false;
    std::wstring name;
    NodeBaseName(element, name);
    m_Path.push_back({name, NodeLine(element)});
    if (IsAt(m_Row.plate)) BeginPlate();
    if (IsAt(m_Row.graphic)) BeginGraphic();
    return true;
  }

  void End(const XmlNode& /*element*/) override {
    if (IsAt(m_Row.plate)) m_Target = Outside();
    if (IsAt(m_Row.graphic)) EndGraphic();
    m_Path.pop_back();
  }

  void Markup(std::string_view bytes) override {
    // The name of an attribute comes by itself, between a blank and the sign of its value.
    m_Markup[0].swap(m_Markup[1]);
    m_Markup[1] = bytes;
    // Comments may have line ends, and a row is one line.
    std::string& text = Last();
    for (const char byte : bytes) text += byte == '\n' || byte == '\r' ? ' ' : byte;
  }

  void Text(std::string_view text, xml::XmlTextPlace place) override {
    if (!m_State) return;
    if (place == xml::XmlTextPlace::Namespace || IsDrawing())
      return xml::AppendXmlText(Last(), text, true);
    m_Attribute = place == xml::XmlTextPlace::Attribute ? m_Markup[0] : std::string();
    Split(text, place != xml::XmlTextPlace::Attribute);
  }

  [[nodiscard]] std::vector<TemplateField>& Fields() { return m_Fields; }

  [[nodiscard]] Expected<void> Finish() {
    if (!m_State) return m_State;
    if (!m_Missing.empty()) return MissingHeadings();
    if (m_Result.m_PlatesARow == 0)
      return FailureOf("there is no " + Shown(m_Row.plate[1]) + " in " + Shown(m_Row.plate[0]) +
                       " to repeat for each row");
    if (m_Columns.empty())
      return FailureOf("no text of the template has a field; a field is a heading in braces" +
                       (m_Table ? ". " + TableHeadings() : std::string()));
    m_Result.m_Columns.assign(m_Columns.begin(), m_Columns.end());
    return {};
  }

 private:
  using Piece = MergeTemplate::Piece;
  using Pieces = MergeTemplate::Pieces;
  using Kind = MergeTemplate::Section::Kind;
  struct Level {
    std::wstring name;
    int line;
  };

  [[nodiscard]] bool IsAt(const std::array<std::wstring_view, 2>& path) const {
    const std::size_t depth = path[0].empty() ? 0 : path[1].empty() ? 1 : 2;
    if (depth == 0 || m_Path.size() != depth + 1) return false;
    for (std::size_t i = 0; i < depth; ++i)
      if (m_Path[i + 1].name != path[i]) return false;
    return true;
  }

  // The drawing of a cut line may have braces of its own, in its style sheet.
  [[nodiscard]] bool IsDrawing() const {
    return std::ranges::any_of(m_Path, [](const Level& level) { return level.name == L"svg"; });
  }

  void Open(Kind kind) { m_Result.m_Sections.push_back({kind, {}}); }

  // The pieces of the text outside repeated elements, which goes on in a section of its own.
  Pieces* Outside() {
    if (m_Result.m_Sections.back().kind != Kind::Once) Open(Kind::Once);
    return &m_Result.m_Sections.back().pieces;
  }

  void BeginPlate() {
    if (m_Result.m_PlatesARow++ == 0) {
      Open(Kind::Rows);
      m_Rows = m_Result.m_Sections.size() - 1;
    }
    m_Target = &m_Result.m_Sections[m_Rows].pieces;
  }

  void BeginGraphic() {
    Open(Kind::Different);
    m_Target = &m_Result.m_Sections.back().pieces;
  }

  void EndGraphic() {
    const bool fields = std::ranges::any_of(
        *m_Target, [](const Piece& piece) { return piece.column != Piece::NoField; });
    if (!fields) m_Result.m_Sections.back().kind = Kind::Once;
    m_Target = Outside();
  }

  std::string& Last() {
    if (m_Target->empty() || m_Target->back().column != Piece::NoField) m_Target->emplace_back();
    return m_Target->back().text;
  }

  void Split(std::string_view text, bool content) {
    while (!text.empty()) {
      const std::size_t brace = text.find('{');
      xml::AppendXmlText(Last(), text.substr(0, brace), true);
      if (brace == text.npos) return;
      text.remove_prefix(brace + 1);
      if (text.starts_with('{')) {
        Last() += '{';
        text.remove_prefix(1);
        continue;
      }
      const std::size_t end = text.find('}');
      if (end == text.npos || text.substr(0, end).find('{') != text.npos)
        return Refuse("a field has no end: a brace by itself is written as {{");
      Field(std::string(text.substr(0, end)), content);
      text.remove_prefix(end + 1);
    }
  }

  void Field(std::string heading, bool content) {
    while (heading.starts_with(' ')) heading.erase(0, 1);
    while (heading.ends_with(' ')) heading.pop_back();
    NoteField(heading);
    if (heading.empty() && !m_Table) return Refuse("a field has no name: {}");
    const Expected<std::size_t> column =
        m_Table ? m_Table->ColumnOf(heading) : m_Places.at(heading);
    if (!column) {
      if (m_Missing.empty()) {
        m_Missing = Describe(column.Error());
        m_MissingLine = m_Path.back().line;
      }
      return;
    }
    const bool repeated = m_Result.m_IsDocumentARow || IsIn(m_Row.plate) || IsIn(m_Row.graphic);
    if (!repeated)
      return Refuse("the field {" + heading + "} is outside " + Shown(m_Row.plate[1]) +
                    ", which is repeated for each row");
    Last();
    m_Target->back().column = *column;
    m_Target->back().hasReferences = content && m_Row.hasReferences && IsInFont();
    m_Columns.insert(*column);
  }

  void NoteField(const std::string& heading) {
    std::vector<std::wstring_view> path;
    for (const Level& level : m_Path) path.push_back(level.name);
    const FieldPlace place = PlaceOfField(m_Row.format, path, m_Attribute);
    const auto [known, isNew] = m_Places.emplace(heading, m_Fields.size());
    if (isNew)
      m_Fields.push_back({heading, place.kind, place.maximum});
    else
      JoinPlace(m_Fields[known->second], place);
  }

  [[nodiscard]] bool IsIn(const std::array<std::wstring_view, 2>& path) const {
    const std::size_t depth = path[0].empty() ? 0 : path[1].empty() ? 1 : 2;
    if (depth == 0 || m_Path.size() <= depth) return false;
    for (std::size_t i = 0; i < depth; ++i)
      if (m_Path[i + 1].name != path[i]) return false;
    return true;
  }

  [[nodiscard]] bool IsInFont() const {
    return std::ranges::any_of(m_Path, [](const Level& level) { return level.name == L"font"; });
  }

  void Refuse(std::string why) {
    if (!m_State) return;
    Failure failure = FailureOf(std::move(why));
    failure.line = m_Path.back().line;
    m_State = std::move(failure);
  }

  [[nodiscard]] std::string TableHeadings() const {
    return "The table has the headings " + ListOf(m_Table->headings);
  }

  [[nodiscard]] Failure MissingHeadings() const {
    std::vector<std::string> fields;
    for (const TemplateField& field : m_Fields) fields.push_back(field.heading);
    Failure failure = FailureOf(m_Missing + ". " + TableHeadings() +
                                "; the template has the fields " + ListOf(fields));
    failure.line = m_MissingLine;
    return failure;
  }

  const RepeatRow& m_Row;
  const MergeTable* m_Table;
  MergeTemplate& m_Result;
  std::vector<Level> m_Path;
  Pieces* m_Target = nullptr;
  std::size_t m_Rows = 0;  // the section of the plates
  std::set<std::size_t> m_Columns;
  std::vector<TemplateField> m_Fields;                    // each once
  std::unordered_map<std::string, std::size_t> m_Places;  // of these, by their headings
  std::array<std::string, 2> m_Markup;  // the last pieces of the document's own text
  std::string m_Attribute;              // whose value is at hand; empty for text
  std::string m_Missing;                // why the first field that has no column has none
  int m_MissingLine = 0;
  Expected<void> m_State;
};

Expected<MergeTemplate> MergeTemplate::Read(const XmlNode& root, TemplateFormat format,
                                            const MergeTable& table) {
  MergeTemplate result;
  TemplateCutter cutter(format, &table, result);
  xml::WriteXml(root, cutter);
  if (auto cut = cutter.Finish(); !cut) return cut.Error();
  return result;
}

Expected<std::vector<TemplateField>> MergeTemplate::FieldsOf(const XmlNode& root,
                                                             TemplateFormat format) {
  MergeTemplate result;
  TemplateCutter cutter(format, nullptr, result);
  xml::WriteXml(root, cutter);
  if (auto cut = cutter.Finish(); !cut) return cut.Error();
  return std::move(cutter.Fields());
}

void MergeTemplate::AppendPieces(std::string& target, const Pieces& pieces, const MergeRow& row) {
  for (const Piece& piece : pieces) {
    target += piece.text;
    if (piece.column != Piece::NoField)
      AppendValue(target, row.Cell(piece.column), piece.hasReferences);
  }
}

MergeTemplate::Merged MergeTemplate::Write(const std::vector<MergeRow>& rows) const {
  Merged merged;
  for (const Section& section : m_Sections) {
    switch (section.kind) {
      case Section::Kind::Once: AppendPieces(merged.text, section.pieces, {}); break;
      case Section::Kind::Rows:
        if (!m_IsDocumentARow) {
          merged.text += '\n';
          merged.firstLine = 1 + static_cast<int>(std::ranges::count(merged.text, '\n'));
        }
        for (const MergeRow& row : rows) {
          AppendPieces(merged.text, section.pieces, row);
          merged.text += '\n';
        }
        break;
      case Section::Kind::Different: {
        std::unordered_set<std::string> written;
        for (const MergeRow& row : rows) {
          std::string entry;
          AppendPieces(entry, section.pieces, row);
          if (written.insert(entry).second) merged.text += entry;
        }
        break;
      }
    }
  }
  return merged;
}

}  // namespace rastrel::cli
