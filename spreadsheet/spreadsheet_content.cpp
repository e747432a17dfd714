// Spreadsheet content as a document of its own, for the reader of the interface.

#include <string>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/xml/failure.h"
#include "spreadsheet/error.h"
#include "spreadsheet/open_document.h"
#include "spreadsheet/xml_reading.h"

namespace rastrel::spreadsheet {
namespace {

using xml::StreamChoice;

constexpr std::size_t PieceSize = 64 * 1024;

// Writes the contents that the import reads: elements by their places, texts of paragraphs, and the
// repeats of cells.
class ContentWriter : public GuardedHandler {
 public:
  ContentWriter(int only, const std::string& target)
      : m_Only(only), m_Target(target), m_File(os::CreateForWriting(os::FromNative(target))) {
    if (!m_File) throw Error(m_File.Error());
    m_Text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  }

  [[nodiscard]] bool FoundSpreadsheet() const { return m_FoundSpreadsheet; }

  StreamChoice Begin(std::wstring_view baseName, const XmlNode&, int depth) override {
    switch (depth) {
      case 0:
        if (baseName != L"document" && baseName != L"document-content") return StreamChoice::Skip;
        return Enter(
            "document-content xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:"
            "1.0\"");
      case 1: return baseName == L"body" ? Enter("body") : StreamChoice::Skip;
      case 2:
        if (baseName != L"spreadsheet") return StreamChoice::Skip;
        m_FoundSpreadsheet = true;
        return Enter("spreadsheet");
      case 3:
        if (baseName != L"table" || (++m_Tables != m_Only + 1 && m_Only >= 0))
          return StreamChoice::Skip;
        return Enter("table");
      default: return baseName == L"table-row" ? StreamChoice::Node : StreamChoice::Skip;
    }
  }

  void Node(const XmlNode& row) override {
    m_Text += "<table-row>";
    for (XmlNode cell = xml::FirstChild(row); cell; cell = xml::NextSibling(cell))
      if (xml::BaseName(cell) == L"table-cell") AddCell(cell);
    m_Text += "</table-row>\n";
    if (m_Text.size() > PieceSize) Guard([this] { Flush(); });
  }

  void End(std::wstring_view, int depth) override {
    constexpr const char* names[] = {"document-content", "body", "spreadsheet", "table"};
    m_Text += std::string("</") + names[depth] + ">\n";
  }

  void Flush() {
    if (const auto written = os::WriteAll(m_File->Get(), m_Text); !written)
      throw Error(FailureAt(m_Target, written.Error()));
    m_Text.clear();
  }

 private:
  StreamChoice Enter(const char* name) {
    m_Text += std::string("<") + name + ">";
    return StreamChoice::Enter;
  }

  void AddCell(const XmlNode& cell) {
    constexpr std::wstring_view repeats = L"table:number-columns-repeated";
    m_Text += "<table-cell";
    if (const auto value = xml::AttributeBytes(cell, repeats); !value.empty()) {
      m_Text += " table:number-columns-repeated=\"";
      AddEscaped(value);
      m_Text += '"';
    }
    m_Text += '>';
    for (XmlNode child = xml::FirstChild(cell); child; child = xml::NextSibling(child)) {
      if (xml::BaseName(child) != L"p") continue;
      m_Text += "<p>";
      AddEscaped(xml::RawTextBytes(child, m_Scratch));
      m_Text += "</p>";
    }
    m_Text += "</table-cell>";
  }

  void AddEscaped(std::string_view text) {
    for (const char letter : text) switch (letter) {
        case '&': m_Text += "&amp;"; break;
        case '<': m_Text += "&lt;"; break;
        case '>': m_Text += "&gt;"; break;
        case '"': m_Text += "&quot;"; break;
        case '\r': m_Text += "&#13;"; break;
        default: m_Text += letter;
      }
  }

  int m_Only;
  std::string m_Target;
  Expected<os::FileDescriptor> m_File;
  std::string m_Text;
  std::string m_Scratch;
  int m_Tables = 0;
  bool m_FoundSpreadsheet = false;
};

}  // namespace

Expected<void> WriteSpreadsheetContent(const XmlPlace& document, int only,
                                       const std::string& target) {
  return Caught([&] {
    static_cast<void>(xml::TakeXmlFailure());
    ContentWriter writer(only, target);
    if (!writer.ReadFrom(document.path)) RefuseDocument(document);
    if (!writer.FoundSpreadsheet()) RefuseOtherKind(document);
    writer.Flush();
  });
}

}  // namespace rastrel::spreadsheet
