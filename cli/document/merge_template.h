#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/document/merge_table.h"
#include "cli/document/template_fields.h"
#include "cli/document/template_format.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/xml/node.h"

namespace rastrel::cli {

/// A template whose texts have fields: `{Heading}` in the text of an element or in the value of an
/// attribute is replaced by the cell of that heading, and `{{` by a brace. It is cut into pieces
/// once, and then written with the values of any number of rows.
///
///     <ABB><ENGRAVINGTEMPLATE><PLATES/>      before, once
///     <PLATE>..{Name}..</PLATE>              the plates, a row on one line
///     <PLATE>..{Name}..</PLATE>
///     </ENGRAVINGTEMPLATE></ABB>             after, once
///
/// All plates of a template are repeated for each row, and those of one row come together. An
/// entry for a graphic (`graphic_location` of Crown Trophy, `TEMPLATEGRAPHIC` of cro) that has
/// fields is repeated as well, each different one once. Values are written as text: none becomes
/// markup.
class MergeTemplate {
 public:
  /// Cuts a template. Fails with the line in the template where a field has no end, its heading is
  /// not in the table, or it is where nothing is repeated; and if there is no plate or no
  /// field.
  [[nodiscard]] static Expected<MergeTemplate> Read(const XmlNode& root, TemplateFormat format,
                                                    const MergeTable& table);
  /// The fields of a template without a table, each once, in the order in which they come first.
  /// Fails as Read does, but for headings.
  [[nodiscard]] static Expected<std::vector<TemplateField>> FieldsOf(const XmlNode& root,
                                                                     TemplateFormat format);

  /// Whether the format has one plate or none, so that each row is a document of its own.
  [[nodiscard]] bool IsDocumentARow() const { return m_IsDocumentARow; }
  /// Plates that a row becomes.
  [[nodiscard]] std::size_t PlatesARow() const { return m_PlatesARow; }
  /// The table's columns that the fields name, each once, in the order of the columns.
  [[nodiscard]] const std::vector<std::size_t>& Columns() const { return m_Columns; }

  /// A document with the plates of these rows, UTF-8.
  struct Merged {
    std::string text;
    int firstLine = 1;  ///< the line of the first row; each row is on one line
  };
  [[nodiscard]] Merged Write(const std::vector<MergeRow>& rows) const;

 private:
  friend class TemplateCutter;

  // A text that stays, and the field after it.
  struct Piece {
    static constexpr std::size_t NoField = static_cast<std::size_t>(-1);
    std::string text;  // as it is written
    std::size_t column = NoField;
    bool hasReferences = false;  // the reader looks for character references in the value
  };
  using Pieces = std::vector<Piece>;
  struct Section {
    enum class Kind { Once, Rows, Different } kind = Kind::Once;
    Pieces pieces;
  };

  static void AppendPieces(std::string& target, const Pieces& pieces, const MergeRow& row);

  bool m_IsDocumentARow = false;
  std::size_t m_PlatesARow = 0;
  std::vector<std::size_t> m_Columns;
  std::vector<Section> m_Sections;
};

/// Whether a value has characters that no document of XML can have; each is written as U+FFFD.
[[nodiscard]] bool HasUnwritableCharacters(std::string_view value);

}  // namespace rastrel::cli
