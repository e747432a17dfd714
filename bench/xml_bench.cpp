// The XML layer on a large sheet: read as a stream of rows, and loaded as a whole, against the
// parser alone with functions that do nothing.

#include <libxml/parser.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "bench/measure.h"
#include "bench/program.h"
#include "bench/require.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/stream.h"
#include "rastrel/xml/walk.h"
#include "tests/support/scratch_directory.h"

namespace {

using namespace rastrel;
using xml::StreamChoice;

constexpr int Rows = 200000;
constexpr int Columns = 10;

// A sheet as spreadsheet programs write it: strings by index, and numbers.
void WriteSheet(const std::string& path, int rows) {
  std::ofstream out(path, std::ios::binary);
  out << R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
      << "\n"
      << R"(<worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">)"
      << R"(<dimension ref="A1:J200000"/><sheetData>)";
  for (int row = 1; row <= rows; ++row) {
    const std::string number = std::to_string(row);
    out << "<row r=\"" << number << "\" spans=\"1:10\" customFormat=\"false\" ht=\"12.8\">";
    for (int column = 0; column < Columns; ++column) {
      const char letter = static_cast<char>('A' + column);
      out << "<c r=\"" << letter << number << "\" s=\"0\"";
      if (column % 2 == 0)
        out << " t=\"s\"><v>" << (row * 7 + column) % 5000 << "</v></c>";
      else
        out << "><v>" << row << '.' << column << "25</v></c>";
    }
    out << "</row>";
  }
  out << "</sheetData></worksheet>";
}

// Reads every cell's attributes and value, as a reader of sheets does.
class Cells : public xml::XmlStreamHandler {
 public:
  StreamChoice Begin(std::wstring_view name, const XmlNode&, int depth) override {
    if (depth == 0 || (depth == 1 && name == L"sheetData")) return StreamChoice::Enter;
    return depth == 2 && name == L"row" ? StreamChoice::Node : StreamChoice::Skip;
  }
  void Node(const XmlNode& row) override {
    for (XmlNode cell = xml::FirstChild(row); cell; cell = xml::NextSibling(cell)) {
      if (!xml::IsNamed(cell, L"c")) continue;
      m_Sum += xml::AttributeBytes(cell, L"r").size();
      m_Sum += xml::AttributeBytes(cell, L"t").size();
      if (NodeText(FirstChildNamed(cell, L"v"), m_Text)) m_Sum += m_Text.size();
    }
  }
  void End(std::wstring_view, int) override {}
  [[nodiscard]] std::uint64_t Sum() const { return m_Sum; }

 private:
  std::uint64_t m_Sum = 0;
  std::wstring m_Text;
};

void StreamCells(const std::string& path) {
  Cells cells;
  bench::Require(xml::StreamXmlFile(os::FromNative(path), cells) && cells.Sum() > 0,
                 "the sheet was not read");
}

void LoadAll(const std::string& path) {
  bench::Require(static_cast<bool>(LoadXmlFile(os::FromNative(path))), "the sheet was not loaded");
}

void ParserAlone(const std::string& path) {
  static xmlSAXHandler handler = [] {
    xmlSAXHandler empty{};
    empty.initialized = XML_SAX2_MAGIC;
    empty.startElementNs = [](void*, const xmlChar*, const xmlChar*, const xmlChar*, int,
                              const xmlChar**, int, int, const xmlChar**) {};
    empty.endElementNs = [](void*, const xmlChar*, const xmlChar*, const xmlChar*) {};
    empty.characters = [](void*, const xmlChar*, int) {};
    empty.ignorableWhitespace = empty.characters;
    return empty;
  }();
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             std::fclose);
  xmlParserCtxt* const context = xmlCreatePushParserCtxt(&handler, nullptr, nullptr, 0, nullptr);
  std::string piece(std::size_t{64} << 10, '\0');
  for (std::size_t count = 1; count > 0;) {
    count = std::fread(piece.data(), 1, piece.size(), file.get());
    xmlParseChunk(context, piece.data(), static_cast<int>(count), count == 0 ? 1 : 0);
  }
  xmlFreeParserCtxt(context);
}

void WholeTree(const std::string& path) {
  xmlFreeDoc(xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_HUGE));
}

// Highest memory of a process that does nothing else, in MiB.
double PeakOf(void (*work)(const std::string&), const std::string& path) {
  return bench::Process([&] { work(path); }).End().peakMiB;
}

}  // namespace

int main() {
  const test::ScratchDirectory folder;
  const std::string sheet = folder.Path("sheet.xml");
  const std::string part = folder.Path("part.xml");
  WriteSheet(sheet, Rows);
  WriteSheet(part, Rows / 10);
  const auto nothing = [] {};
  bench::Compare(
      {.name = "XML, a sheet of 200,000 rows as a stream, every cell read",
       .peerName = "libxml2 SAX2 alone",
       .limit = 1.6,
       .clock = bench::Clock::Processor},
      nothing, [&] { StreamCells(sheet); }, [&] { ParserAlone(sheet); });
  bench::Compare(
      {.name = "XML, 20,000 rows loaded",
       .peerName = "libxml2 SAX2 alone",
       .limit = 2.3,
       .clock = bench::Clock::Processor},
      nothing, [&] { LoadAll(part); }, [&] { ParserAlone(part); });
  bench::Compare(
      {.name = "XML, 20,000 rows loaded, against the tree",
       .peerName = "libxml2 tree",
       .limit = 0.25,
       .clock = bench::Clock::Processor},
      nothing, [&] { LoadAll(part); }, [&] { WholeTree(part); });
  bench::Print({"XML, memory of the stream of 200,000 rows", PeakOf(StreamCells, sheet), "MiB",
                "libxml2 tree", PeakOf(WholeTree, sheet), 0.1});
  bench::Print({"XML, memory of 20,000 rows loaded", PeakOf(LoadAll, part), "MiB", "libxml2 tree",
                PeakOf(WholeTree, part), 0.3});
  return 0;
}
