#pragma once

#include <string>
#include <vector>

#include "tests/spreadsheet/zip_bytes.h"

/// Packages of spreadsheets, put together by hand.
namespace rastrel::test {

inline constexpr const char* MainNames =
    "xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
    "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\"";
inline constexpr const char* RelationshipNames =
    "xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\"";
inline constexpr const char* OfficeType =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/";

/// A workbook whose parts a test may change before it is packed.
struct WorkbookFiles {
  struct Sheet {
    std::string name;
    std::string rows;          ///< content of sheetData
    std::string attributes{};  ///< more of the workbook's element
    std::string target{};      ///< in place of the real one
    std::string kind = "worksheet";
  };
  std::vector<Sheet> sheets;
  std::string strings{};  ///< content of sst; no part if empty
  std::string styles{};   ///< content of styleSheet; no part if empty
  std::string workbookExtra{};
  std::string workbookType =
      "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml";
  std::string workbookPart = "xl/workbook.xml";
  bool deflated = true;

  [[nodiscard]] std::vector<ZipEntry> Entries() const {
    std::vector<ZipEntry> entries;
    const auto add = [&](const std::string& name, const std::string& content) {
      entries.push_back({name, "<?xml version=\"1.0\"?>\n" + content, deflated});
    };
    add("[Content_Types].xml",
        "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
        "<Default Extension=\"xml\" ContentType=\"application/xml\"/><Override PartName=\"/" +
            workbookPart + "\" ContentType=\"" + workbookType + "\"/></Types>");
    add("_rels/.rels", Relationships(Relationship("m", "officeDocument", workbookPart)));
    std::string list;
    std::string links;
    for (std::size_t index = 0; index < sheets.size(); ++index) {
      const Sheet& sheet = sheets[index];
      const std::string id = "r" + std::to_string(index + 1);
      const std::string file = "tables/t" + std::to_string(index + 1) + ".xml";
      list += "<sheet name=\"" + sheet.name + "\" sheetId=\"1\" r:id=\"" + id + "\" " +
              sheet.attributes + "/>";
      links += Relationship(id, sheet.kind, sheet.target.empty() ? file : sheet.target);
      add("xl/" + file, std::string("<worksheet ") + MainNames + "><sheetData>" + sheet.rows +
                            "</sheetData></worksheet>");
    }
    if (!strings.empty()) {
      links += Relationship("s", "sharedStrings", "texts.xml");
      add("xl/texts.xml", std::string("<sst ") + MainNames + ">" + strings + "</sst>");
    }
    if (!styles.empty()) {
      links += Relationship("f", "styles", "forms.xml");
      add("xl/forms.xml", std::string("<styleSheet ") + MainNames + ">" + styles + "</styleSheet>");
    }
    add(workbookPart, std::string("<workbook ") + MainNames + ">" + workbookExtra + "<sheets>" +
                          list + "</sheets></workbook>");
    const std::size_t slash = workbookPart.rfind('/') + 1;
    add(workbookPart.substr(0, slash) + "_rels/" + workbookPart.substr(slash) + ".rels",
        Relationships(links));
    return entries;
  }
  [[nodiscard]] std::string Bytes() const { return ZipBytes(Entries()).Make(); }

  static std::string Relationship(const std::string& id, const std::string& kind,
                                  const std::string& target) {
    return "<Relationship Id=\"" + id + "\" Type=\"" + OfficeType + kind + "\" Target=\"" + target +
           "\"/>";
  }
  static std::string Relationships(const std::string& content) {
    return std::string("<Relationships ") + RelationshipNames + ">" + content + "</Relationships>";
  }
};

/// A cell with a number, or of another type.
inline std::string Cell(const std::string& reference, const std::string& value,
                        const std::string& type = "n", int style = 0) {
  return "<c r=\"" + reference + "\" t=\"" + type + "\" s=\"" + std::to_string(style) + "\"><v>" +
         value + "</v></c>";
}
inline std::string Row(int number, const std::string& cells) {
  return "<row r=\"" + std::to_string(number) + "\">" + cells + "</row>";
}

inline constexpr const char* DocumentNames =
    "xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\" "
    "xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\" "
    "xmlns:style=\"urn:oasis:names:tc:opendocument:xmlns:style:1.0\" "
    "xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\"";

/// A document of tables; the root is `document` or `document-content`.
inline std::string OpenDocument(const std::string& tables,
                                const std::string& root = "document-content",
                                const std::string& styles = {}) {
  return "<?xml version=\"1.0\"?>\n<office:" + root + " " + DocumentNames + ">" + styles +
         "<office:body><office:spreadsheet>" + tables +
         "</office:spreadsheet></office:body></office:" + root + ">";
}
inline std::string Table(const std::string& name, const std::string& rows) {
  return "<table:table table:name=\"" + name + "\">" + rows + "</table:table>";
}
inline std::string TableRow(const std::string& cells, const std::string& attributes = {}) {
  return "<table:table-row " + attributes + ">" + cells + "</table:table-row>";
}
inline std::string TableCell(const std::string& text, const std::string& attributes = {}) {
  return "<table:table-cell " + attributes + "><text:p>" + text + "</text:p></table:table-cell>";
}
inline std::string OpenDocumentPackage(const std::string& content,
                                       const std::string& manifest = {}) {
  return ZipBytes({{"mimetype", "application/vnd.oasis.opendocument.spreadsheet"},
                   {"META-INF/manifest.xml", manifest.empty() ? "<m/>" : manifest},
                   {"content.xml", content, true}})
      .Make();
}

}  // namespace rastrel::test
