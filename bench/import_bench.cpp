// Imports of 10,000 plates, frames or records, against parsing their XML alone: plate XML and
// BrightStar templates from file to objects of the embedded document, CRO and LLX templates from
// file to records.

#include <fstream>
#include <string>

#include "bench/import_document.h"
#include "bench/measure.h"
#include "bench/require.h"
#include "host/document/document.h"
#include "rastrel/imports/bright_star_xml_import.h"
#include "rastrel/imports/cro_file_import.h"
#include "rastrel/imports/llx_file_import.h"
#include "rastrel/imports/xml_file_import.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/xml/layer.h"
#include "tests/support/scratch_directory.h"

namespace {

using namespace rastrel;

constexpr int Plates = 10000;

/// Plates with two lines of text and a hole, as their writers make them, of one size or of two in
/// turn.
void WritePlates(const std::string& path, int sizes) {
  std::ofstream out(path, std::ios::binary);
  out << "<?xml version=\"1.0\"?><ABB><ENGRAVINGTEMPLATE><PLATES/>";
  for (int plate = 0; plate < Plates; ++plate) {
    out << "<PLATE><COLOR>Red</COLOR><TOOLNAME>Cutter</TOOLNAME><WIDTH>3</WIDTH><HEIGHT>"
        << (plate % sizes == 0 ? "1.5" : "1") << "</HEIGHT><TEXTCOLOR>White</TEXTCOLOR>"
        << "<TEXTFRAME>5</TEXTFRAME><TEXT line=\"1\" data=\"PUMP " << plate
        << "\"><TOOLNAME>Engraver</TOOLNAME><FONT name=\"DejaVuSans.ttf\" size=\"0.25\"/></TEXT>"
        << "<TEXT line=\"2\" data=\"MAIN SUPPLY\"><FONT name=\"DejaVuSans.ttf\" size=\"0.2\"/>"
        << "</TEXT><DRILLPOINT><COLOR>Black</COLOR><XLOC>0.25</XLOC><YLOC>0.25</YLOC></DRILLPOINT>"
        << "</PLATE>";
  }
  out << "</ENGRAVINGTEMPLATE></ABB>";
}

void Parse(const std::wstring& path) {
  bench::Require(static_cast<bool>(LoadXmlFile(path)), "the plates were not parsed");
}

void CompareImport(const std::string& folder, int sizes, const char* name) {
  const std::string file = folder + "/plates.xml";
  WritePlates(file, sizes);
  bench::CompareWithXml(
      name, os::FromNative(file), [](const std::wstring& path, const document::Document& document) {
        bench::Require(
            CXMLFileImport(path.c_str()).ImportXMLFile() == 1 && document.HighestPage() > 0,
            "the plates were not imported");
      });
}

/// Text frames of one template, as its writers make them.
void WriteFrames(const std::string& path) {
  std::ofstream out(path, std::ios::binary);
  out << "<?xml "
         "version=\"1.0\"?><BRIGHTSTAR><ENGRAVINGTEMPLATE><WIDTH>24</WIDTH><HEIGHT>12</HEIGHT>"
      << "<ORIGIN>TOP LEFT</ORIGIN>";
  for (int frame = 0; frame < Plates; ++frame)
    out << "<TEXTFRAME UPPERXLOC=\"0.5\" UPPERYLOC=\"0.5\" LOWERXLOC=\"3.5\" LOWERYLOC=\"2\""
        << " compression=\"All Lines Equally\"><FONT name=\"DejaVuSans.ttf\" size=\"0.25\""
        << " justification=\"Center\"/><LINE>PUMP " << frame
        << "</LINE><LINE>MAIN SUPPLY</LINE></TEXTFRAME>";
  out << "</ENGRAVINGTEMPLATE></BRIGHTSTAR>";
}

/// Plates with two lines of text, a graphic and a line that differs.
void WriteCroPlates(const std::string& path) {
  std::ofstream out(path, std::ios::binary);
  out << "<?xml version=\"1.0\"?><ENGRAVINGTEMPLATE><TEMPLATESIZE><WIDTH>3</WIDTH><HEIGHT>1.5"
      << "</HEIGHT></TEMPLATESIZE><TEMPLATEGRAPHIC name=\"Logo\"><FILE>logo.svg</FILE>"
      << "</TEMPLATEGRAPHIC><PLATES>";
  for (int plate = 0; plate < Plates; ++plate)
    out << "<PLATE><TEXT>PUMP " << plate << "</TEXT><TEXT>MAIN SUPPLY</TEXT>"
        << "<TEMPLATETEXT line=\"2\"><FONT>DejaVu Sans</FONT><HEIGHT>0.2</HEIGHT></TEMPLATETEXT>"
        << "<GRAPHIC>Logo</GRAPHIC></PLATE>";
  out << "</PLATES></ENGRAVINGTEMPLATE>";
}

/// One plate with graphics and texts along circles, half of each.
void WriteLlxRecords(const std::string& path) {
  std::ofstream out(path, std::ios::binary);
  out << "<?xml version=\"1.0\"?><LLX><ENGRAVINGTEMPLATE><PLATE><WIDTH>4</WIDTH><HEIGHT>4</HEIGHT>";
  for (int record = 0; record < Plates / 2; ++record)
    out << "<GRAPHIC><FILE>logo.svg</FILE><ORIGIN>center</ORIGIN><X>0.5</X><Y>0.5</Y><WIDTH>1"
        << "</WIDTH><HEIGHT>1</HEIGHT><ROTATION>45</ROTATION></GRAPHIC><ARCTEXT><CENTERX>2"
        << "</CENTERX><CENTERY>2</CENTERY><RADIUS>1.5</RADIUS><HEIGHT>0.25</HEIGHT><FONT>DejaVu "
           "Sans"
        << "</FONT><JUSTIFY>center</JUSTIFY><TEXT>RIM " << record << "</TEXT></ARCTEXT>";
  out << "</PLATE></ENGRAVINGTEMPLATE></LLX>";
}

/// A file that `read` reads, against its XML.
template <typename Read>
void CompareReading(const std::string& file, const char* name, Read read) {
  const std::wstring path = os::FromNative(file);
  bench::Compare(
      {.name = name,
       .peerName = "their XML alone",
       .rounds = 9,
       .limit = 5.0,
       .clock = bench::Clock::Processor},
      [] {}, [&] { read(path); }, [&] { Parse(path); });
}

void CompareFrames(const std::string& folder) {
  const std::string file = folder + "/frames.xml";
  WriteFrames(file);
  bench::CompareWithXml("10,000 frames of a BrightStar template, imported", os::FromNative(file),
                        [](const std::wstring& path, const document::Document& document) {
                          bench::Require(CBrightStarXMLImport(path.c_str()).ImportXMLFile() == 1 &&
                                             document.HighestPage() > 0,
                                         "the frames were not imported");
                        });
}

void CompareRecords(const std::string& folder) {
  WriteCroPlates(folder + "/plates.cro");
  CompareReading(folder + "/plates.cro", "10,000 plates of a CRO template, as records",
                 [](const std::wstring& path) {
                   const CCROFileImport importer(path.c_str(), nullptr);
                   bench::Require(importer.m_PlateText.size() == Plates,
                                  "the CRO plates were not read");
                 });
  WriteLlxRecords(folder + "/records.llx");
  CompareReading(
      folder + "/records.llx", "10,000 graphics and texts of an LLX template, as records",
      [](const std::wstring& path) {
        const CLLXFileImport importer(path.c_str(), nullptr);
        bench::Require(importer.m_ArcTexts.size() == Plates / 2, "the LLX records were not read");
      });
}

}  // namespace

int main() {
  const test::ScratchDirectory folder;
  CompareImport(folder.Path(), 1, "10,000 plates of one size, imported");
  CompareImport(folder.Path(), 2, "10,000 plates of two sizes in turn, imported");
  CompareFrames(folder.Path());
  CompareRecords(folder.Path());
  return 0;
}
