// The command's text of spreadsheets against the programs that people use for it, against inflating
// the package alone, and its memory against a tree of the same document. Every call is a whole
// process from its start to its end by the wall's clock: a user waits for the text, and start-up is
// a part of that.
#include <libxml/parser.h>
#include <zip.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/measure.h"
#include "bench/program.h"
#include "bench/require.h"
#include "tests/support/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
namespace bench = rastrel::bench;
using bench::Cost;

constexpr int Rows = 200000;
constexpr int Columns = 10;
constexpr int SmallRows = 50;
// Different texts of a document with so many rows.
int StringsOf(int rows) { return rows / 4; }
constexpr int Rounds = 3;

// Cells of the two documents, the same in both: texts, whole numbers, fractions, and a gap now and
// then.
class Cells {
 public:
  enum class Kind { Gap, Text, Whole, Fraction };
  struct Cell {
    Kind kind;
    int text;       // number of the text
    double number;  // else
  };
  explicit Cells(int rows) : m_Strings(static_cast<unsigned>(StringsOf(rows))) {}

  Cell Next(int column) {
    if (m_Random() % 20 == 0) return {Kind::Gap, 0, 0};
    if (column % 3 == 0) return {Kind::Text, static_cast<int>(m_Random() % m_Strings), 0};
    if (column % 3 == 1) return {Kind::Whole, 0, static_cast<double>(m_Random() % 100000)};
    return {Kind::Fraction, 0, static_cast<double>(m_Random() % 1000000007) / 1048576.0};
  }

 private:
  unsigned m_Strings;
  std::mt19937 m_Random{1};
};

std::string TextOf(int number) { return "Label " + std::to_string(number) + " of the list"; }

std::string Printed(double number) {
  char text[40];
  std::snprintf(text, sizeof(text), "%.15g", number);
  return text;
}

void WriteSheet(const std::string& path, int rows) {
  std::ofstream file(path, std::ios::binary);
  file << "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<worksheet "
          "xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"><sheetData>";
  Cells cells(rows);
  for (int row = 1; row <= rows; ++row) {
    file << "<row r=\"" << row << "\" spans=\"1:10\">";
    for (int column = 0; column < Columns; ++column) {
      const Cells::Cell cell = cells.Next(column);
      if (cell.kind == Cells::Kind::Gap) continue;
      file << "<c r=\"" << static_cast<char>('A' + column) << row;
      if (cell.kind == Cells::Kind::Text)
        file << "\" t=\"s\"><v>" << cell.text;
      else
        file << "\"><v>" << Printed(cell.number);
      file << "</v></c>";
    }
    file << "</row>";
  }
  file << "</sheetData></worksheet>";
}

void WriteContent(const std::string& path, int rows) {
  std::ofstream file(path, std::ios::binary);
  const std::string names = "urn:oasis:names:tc:opendocument:xmlns:";
  file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<office:document-content xmlns:office=\""
       << names << "office:1.0\" xmlns:table=\"" << names << "table:1.0\" xmlns:text=\"" << names
       << "text:1.0\" office:version=\"1.3\"><office:body><office:spreadsheet>"
          "<table:table table:name=\"S\"><table:table-column "
          "table:number-columns-repeated=\"10\"/>";
  Cells cells(rows);
  for (int row = 1; row <= rows; ++row) {
    file << "<table:table-row>";
    for (int column = 0; column < Columns; ++column) {
      const Cells::Cell cell = cells.Next(column);
      if (cell.kind == Cells::Kind::Gap) {
        file << "<table:table-cell/>";
        continue;
      }
      const std::string shown =
          cell.kind == Cells::Kind::Text ? TextOf(cell.text) : Printed(cell.number);
      file << "<table:table-cell office:value-type=";
      if (cell.kind == Cells::Kind::Text)
        file << "\"string\"";
      else
        file << "\"float\" office:value=\"" << shown << '"';
      file << "><text:p>" << shown << "</text:p></table:table-cell>";
    }
    file << "</table:table-row>";
  }
  file << "</table:table></office:spreadsheet></office:body></office:document-content>";
}

std::string SharedStrings(int rows) {
  std::string text = "<sst xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">";
  for (int number = 0; number < StringsOf(rows); ++number)
    text += "<si><t>" + TextOf(number) + "</t></si>";
  return text + "</sst>";
}

// Makes a package of parts: a file's path begins with a slash, anything else is the content itself.
void WriteZip(const std::string& path,
              const std::vector<std::pair<std::string, std::string>>& parts) {
  int error = 0;
  zip_t* const package = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
  bench::Require(package != nullptr, "no package can be made");
  for (const auto& [name, content] : parts) {
    zip_source_t* const source =
        content.starts_with('/') ? zip_source_file(package, content.c_str(), 0, -1)
                                 : zip_source_buffer(package, content.data(), content.size(), 0);
    bench::Require(zip_file_add(package, name.c_str(), source, ZIP_FL_ENC_UTF_8) >= 0,
                   "a part can't be added");
  }
  bench::Require(zip_close(package) == 0, "a package can't be written");
}

void WriteWorkbook(const std::string& path, const std::string& sheet, int rows) {
  const std::string office = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
  const std::string package = "http://schemas.openxmlformats.org/package/2006/";
  const std::string kind = "application/vnd.openxmlformats-officedocument.spreadsheetml.";
  const std::string relationships = "<Relationships xmlns=\"" + package + "relationships\">";
  const auto link = [&](const char* id, const char* type, const char* target) {
    return std::string("<Relationship Id=\"") + id + "\" Type=\"" + office + "/" + type +
           "\" Target=\"" + target + "\"/>";
  };
  const auto type = [&](const char* part, const char* name) {
    return std::string("<Override PartName=\"/xl/") + part + "\" ContentType=\"" + kind + name +
           "+xml\"/>";
  };
  WriteZip(
      path,
      {{"[Content_Types].xml",
        "<Types xmlns=\"" + package + "content-types\"><Default Extension=\"rels\" ContentType=\"" +
            "application/vnd.openxmlformats-package.relationships+xml\"/>" +
            type("workbook.xml", "sheet.main") + type("worksheets/sheet1.xml", "worksheet") +
            type("sharedStrings.xml", "sharedStrings") + "</Types>"},
       {"_rels/.rels",
        relationships + link("rId1", "officeDocument", "xl/workbook.xml") + "</Relationships>"},
       {"xl/workbook.xml",
        "<workbook xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" xmlns:r=\"" +
            office +
            "\"><sheets><sheet name=\"S\" sheetId=\"1\" r:id=\"rId1\"/></sheets></workbook>"},
       {"xl/_rels/workbook.xml.rels",
        relationships + link("rId1", "worksheet", "worksheets/sheet1.xml") +
            link("rId2", "sharedStrings", "sharedStrings.xml") + "</Relationships>"},
       {"xl/sharedStrings.xml", SharedStrings(rows)},
       {"xl/worksheets/sheet1.xml", sheet}});
}

void WriteOpenDocument(const std::string& path, const std::string& content) {
  const std::string type = "application/vnd.oasis.opendocument.spreadsheet";
  WriteZip(path, {{"mimetype", type},
                  {"META-INF/manifest.xml",
                   "<manifest:manifest xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:"
                   "manifest:1.0\" manifest:version=\"1.3\"><manifest:file-entry "
                   "manifest:full-path=\"/\" manifest:media-type=\"" +
                       type +
                       "\"/><manifest:file-entry manifest:full-path=\"content.xml\" "
                       "manifest:media-type=\"text/xml\"/></manifest:manifest>"},
                  {"content.xml", content}});
}

// The two modes in which this program is its own peer.

int InflateAll(const char* path) {
  zip_t* const package = zip_open(path, ZIP_RDONLY, nullptr);
  if (package == nullptr) return 1;
  std::vector<char> piece(std::size_t{64} << 10);
  for (zip_int64_t entry = 0; entry < zip_get_num_entries(package, 0); ++entry) {
    zip_file_t* const file = zip_fopen_index(package, static_cast<zip_uint64_t>(entry), 0);
    if (file == nullptr) return 1;
    zip_int64_t count = 1;
    while (count > 0) count = zip_fread(file, piece.data(), piece.size());
    if (count < 0 || zip_fclose(file) != 0) return 1;
  }
  zip_discard(package);
  return 0;
}

int LoadTree(const char* path) {
  return xmlReadFile(path, nullptr, XML_PARSE_NONET | XML_PARSE_HUGE) != nullptr ? 0 : 1;
}

struct Peer {
  std::string name;
  std::vector<std::string> arguments;
  double limit;
};

class Bench {
 public:
  explicit Bench(std::string self) : m_Self(std::move(self)) {
    ::setenv("RASTREL_HOME", Path("home").c_str(), 1);
    WriteSheet(Path("sheet.xml"), Rows);
    WriteSheet(Path("small.xml"), SmallRows);
    WriteContent(Path("content.xml"), Rows);
    WriteContent(Path("small-content.xml"), SmallRows);
    WriteWorkbook(Path("large.xlsx"), Path("sheet.xml"), Rows);
    WriteWorkbook(Path("small.xlsx"), Path("small.xml"), SmallRows);
    WriteOpenDocument(Path("large.ods"), Path("content.xml"));
    WriteOpenDocument(Path("small.ods"), Path("small-content.xml"));
    // Makes its profile, which no round is to pay for.
    (void)bench::Process(LibreOffice("small.xlsx")).EndIfInstalled();
  }

  // Ours and all peers in turn, a line a peer. Small documents have no limits: they show how long
  // the programs take to start.
  void Measure(const std::string& what, const std::string& file) {
    std::vector<Cost> ours;
    std::map<std::string, std::vector<Cost>> theirs;
    const std::vector<Peer> peers = PeersFor(file);
    for (int round = 0; round < Rounds; ++round) {
      ours.push_back(bench::Run({m_Command, "sheet", Path(file), "-o", Path("ours.tsv")}));
      for (const Peer& peer : peers)
        if (const auto cost = bench::Process(peer.arguments).EndIfInstalled())
          theirs[peer.name].push_back(*cost);
    }
    const bool isSmall = file.starts_with("small");
    for (const Peer& peer : peers) {
      const std::vector<Cost>& costs = theirs[peer.name];
      if (costs.empty()) continue;  // not installed
      Tell(what + " to text", "ms", peer.name, MedianOf(ours, &Cost::milliseconds),
           MedianOf(costs, &Cost::milliseconds), isSmall ? 0 : peer.limit);
      if (isSmall) continue;
      Tell(what + " to text, processor time", "ms", peer.name,
           MedianOf(ours, &Cost::processorMilliseconds),
           MedianOf(costs, &Cost::processorMilliseconds), 0);
      Tell(what + " to text, cells a second", "million", peer.name,
           MillionCells / MedianOf(ours, &Cost::milliseconds) * 1e3,
           MillionCells / MedianOf(costs, &Cost::milliseconds) * 1e3, 0);
    }
    m_Peaks[file] = MedianOf(ours, &Cost::peakMiB);
  }

  // The memory of that, against a tree of the document.
  void MeasureMemory(const std::string& what, const std::string& file,
                     const std::string& document) {
    Tell(what + " to text, peak memory", "MiB", "tree of the document", m_Peaks[file],
         bench::Run({m_Self, "--tree", Path(document)}).peakMiB, 0.10);
  }

 private:
  static constexpr double MillionCells = Rows * Columns / 1e6;

  static double MedianOf(const std::vector<Cost>& costs, double Cost::*member) {
    std::vector<double> values;
    for (const Cost& cost : costs) values.push_back(cost.*member);
    return bench::Median(values);
  }

  static void Tell(const std::string& name, const char* unit, const std::string& peer, double ours,
                   double theirs, double limit) {
    bench::Print({name, ours, unit, peer, theirs, limit});
  }

  [[nodiscard]] std::string Path(const std::string& name) const { return m_Folder.Path(name); }

  [[nodiscard]] std::vector<std::string> LibreOffice(const std::string& file) const {
    return {"soffice",      "-env:UserInstallation=file://" + Path("profile"),
            "--headless",   "--convert-to",
            "csv",          "--outdir",
            Path("office"), Path(file)};
  }

  [[nodiscard]] std::vector<Peer> PeersFor(const std::string& file) const {
    std::vector<Peer> peers = {{"LibreOffice", LibreOffice(file), 0.15}};
    if (file.ends_with(".xlsx"))
      peers.push_back({"xlsx2csv", {"xlsx2csv", Path(file), Path("theirs.csv")}, 0.12});
    peers.push_back({"ssconvert", {"ssconvert", Path(file), Path("theirs.csv")}, 0.10});
    if (file.starts_with("large"))
      peers.push_back({"inflating alone", {m_Self, "--inflate", Path(file)}, 5.0});
    return peers;
  }

  std::string m_Self;
  std::map<std::string, double> m_Peaks;
  std::string m_Command = fs::path(m_Self).parent_path().parent_path() / "bin/rastrel";
  rastrel::test::ScratchDirectory m_Folder;
};

}  // namespace

int main(int count, char** arguments) {
  if (count == 3 && std::string(arguments[1]) == "--inflate") return InflateAll(arguments[2]);
  if (count == 3 && std::string(arguments[1]) == "--tree") return LoadTree(arguments[2]);
  Bench bench(fs::read_symlink("/proc/self/exe"));
  bench.Measure("Excel, 200,000 rows by 10", "large.xlsx");
  bench.MeasureMemory("Excel, 200,000 rows by 10", "large.xlsx", "sheet.xml");
  bench.Measure("OpenOffice, 200,000 rows by 10", "large.ods");
  bench.MeasureMemory("OpenOffice, 200,000 rows by 10", "large.ods", "content.xml");
  bench.Measure("Excel, 50 rows by 10", "small.xlsx");
  bench.Measure("OpenOffice, 50 rows by 10", "small.ods");
  return 0;
}
