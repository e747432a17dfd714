// Crown Trophy templates of 10,000 plates, read into records and imported into the embedded
// document, against parsing their XML alone; and 1,000 plates that show one drawing, against one.

#include <fstream>
#include <memory>
#include <string>

#include "bench/import_document.h"
#include "bench/measure.h"
#include "bench/require.h"
#include "host/document/document.h"
#include "rastrel/imports/cr2/cr2_file_import.h"
#include "rastrel/imports/cr2/cr2_file_import_vers2.h"
#include "rastrel/imports/cr2/cr2_parse.h"
#include "rastrel/imports/cr2/zml_parse.h"
#include "rastrel/platform/os/path.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace {

using namespace rastrel;

constexpr std::size_t Plates = 10000;
constexpr std::size_t PlatesWithDrawing = 1000;

/// Plates with two blocks of colored text, as their writers make them. There are no graphics: they
/// have a comparison of their own.
void WriteTemplate(const std::string& path) {
  std::ofstream out(path, std::ios::binary);
  out << "<engraving_template><table_size width='24' height='12' margins='0.25'/>"
         "<template spacing='0.125' stroke='hairline'><placement width='3' height='2'/>"
         "<color target='stroke' format='RGB'><rgb red='255' green='0' blue='0'/></color>"
         "</template><plates>";
  for (std::size_t plate = 0; plate < Plates; ++plate) {
    out << "<plate><text_frame>"
           "<placement x='1.5' y='0.25' width='1.25' height='1.5' origin='top left'/>"
           "<font face='DejaVu Sans' style='Bold' size='0.25' line_height='1.2' "
           "justification='center'><color target='fill' format='CMYK'>"
           "<cmyk cyan='0' magenta='50' yellow='100' black='0'/></color><line>PUMP "
        << plate
        << "</line><line>MAIN SUPPLY</line></font>"
           "<font face='DejaVu Sans' size='0.2' line_height='1'><line>"
           "<span face='DejaVu Sans' size='0.2'>VALVE </span>"
           "<span face='DejaVu Sans' style='Oblique' size='0.2'>CLOSED</span></line></font>"
           "</text_frame></plate>";
  }
  out << "</plates></engraving_template>";
}

/// A crest of twelve leaves round a shield.
void WriteDrawing(const std::string& path) {
  std::ofstream out(path, std::ios::binary);
  out << "<svg xmlns='http://www.w3.org/2000/svg' width='96' height='96' viewBox='0 0 96 96'>"
         "<path d='M30 20h36v30c0 14-10 22-18 26c-8-4-18-12-18-26z' fill='#d4af37'/>";
  for (int leaf = 0; leaf < 12; ++leaf)
    out << "<path transform='rotate(" << leaf * 30
        << " 48 48)' d='M48 4c5 5 5 11 0 16c-5-5-5-11 0-16z' fill='#2e7d32'/>";
  out << "</svg>";
}

/// Plates of one size, each with the drawing.
void WritePlatesWithDrawing(const std::string& path, const std::string& drawing,
                            std::size_t plates) {
  std::ofstream out(path, std::ios::binary);
  out << "<engraving_template><table_size width='24' height='12' margins='0.25'/>"
         "<template spacing='0.125' stroke='hairline'><placement width='3' height='2'/></template>"
         "<graphics><graphic_location name='crest'><file>"
      << drawing << "</file></graphic_location></graphics><plates>";
  for (std::size_t plate = 0; plate < plates; ++plate)
    out << "<plate><graphic_frame><graphic>crest</graphic><placement x='1.5' y='0.25' width='1.25' "
           "height='1.5' origin='top left' constrained_proportions='true'/></graphic_frame>"
           "</plate>";
  out << "</plates></engraving_template>";
}

void ReadFirstGeneration(const std::wstring& path) {
  imports::Cr2Document document;
  bench::Require(imports::ParseCr2File(path.c_str(), document) && document.plates.size() == Plates,
                 "the plates were not read");
}

void ReadSecondGeneration(const std::wstring& path) {
  imports::Cr2Document document;
  imports::ZmlFile file;
  bench::Require(
      imports::ParseZmlFile(path.c_str(), document, file) && document.plates.size() == Plates,
      "the plates were not read");
}

template <class Importer>
void Import(const std::wstring& path) {
  const Importer importer(path.c_str(), nullptr);
}

void Compare(const std::wstring& path, const char* name, void (*read)(const std::wstring&),
             bool fillsDocument) {
  bench::CompareWithXml(name, path,
                        [&](const std::wstring& file, const document::Document& document) {
                          read(file);
                          bench::Require((document.ObjectCount() > Plates) == fillsDocument,
                                         "the document does not have the plates' texts");
                        });
}

/// The drawing on every plate of a template, against a template of one plate.
void CompareDrawings(const test::ScratchDirectory& folder) {
  WriteDrawing(folder.Path("crest.svg"));
  WritePlatesWithDrawing(folder.Path("many.cr2"), folder.Path("crest.svg"), PlatesWithDrawing);
  WritePlatesWithDrawing(folder.Path("one.cr2"), folder.Path("crest.svg"), 1);
  std::unique_ptr<bench::OpenDocument> document;
  const auto import = [&](const char* file, std::size_t plates) {
    Import<CCR2FileImport>(folder.Wide(file));
    bench::Require(document->Get().ObjectCount() > plates * 13,
                   "the drawing is not on every plate");
  };
  bench::Compare(
      {.name = "1,000 plates that show one SVG, imported",
       .peerName = "one such plate, its SVG read and placed once",
       .rounds = 9,
       .limit = 20.0,
       .clock = bench::Clock::Wall},
      [&] {
        document.reset();
        document = std::make_unique<bench::OpenDocument>();
      },
      [&] { import("many.cr2", PlatesWithDrawing); }, [&] { import("one.cr2", 1); });
}

}  // namespace

int main() {
  const test::ScratchDirectory folder;
  const test::EnvironmentGuard root("RASTREL_HOME", folder.Path("home"));
  WriteTemplate(folder.Path("plates.cr2"));
  WriteTemplate(folder.Path("plates.zml"));
  const std::wstring cr2 = folder.Wide("plates.cr2");
  const std::wstring zml = folder.Wide("plates.zml");
  Compare(cr2, "10,000 plates of a cr2 file, parsed", ReadFirstGeneration, false);
  Compare(zml, "10,000 plates of a zml file, parsed", ReadSecondGeneration, false);
  Compare(cr2, "10,000 plates of a cr2 file, imported", Import<CCR2FileImport>, true);
  Compare(zml, "10,000 plates of a zml file, imported", Import<CCR2FileImportVers2>, true);
  CompareDrawings(folder);
  return 0;
}
