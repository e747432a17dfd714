// Crown Trophy templates of 10,000 plates, read into records and imported into the embedded
// document, against parsing their XML alone.

#include <fstream>
#include <memory>
#include <string>

#include "bench/measure.h"
#include "bench/require.h"
#include "host/document/document.h"
#include "host/document_host.h"
#include "rastrel/imports/cr2/cr2_file_import.h"
#include "rastrel/imports/cr2/cr2_file_import_vers2.h"
#include "rastrel/imports/cr2/cr2_parse.h"
#include "rastrel/imports/cr2/zml_parse.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/xml/layer.h"
#include "tests/support/scratch_directory.h"

namespace {

using namespace rastrel;

constexpr std::size_t Plates = 10000;

/// Plates with two blocks of colored text, as their writers make them. There are no graphics: each
/// of them asks for settings, which are files, and so measures the disk.
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

void Parse(const std::wstring& path) {
  bench::Require(static_cast<bool>(LoadXmlFile(path)), "the template was not parsed");
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

/// An empty document, installed as the host's.
class OpenDocument {
 public:
  OpenDocument() { host::SetHost(&m_Host); }
  ~OpenDocument() { host::SetHost(nullptr); }
  OpenDocument(const OpenDocument&) = delete;
  OpenDocument& operator=(const OpenDocument&) = delete;
  [[nodiscard]] std::size_t ObjectCount() const { return m_Host.GetDocument().ObjectCount(); }

 private:
  document::DocumentHost m_Host;
};

void Compare(const std::wstring& path, const char* name, void (*read)(const std::wstring&),
             bool fillsDocument) {
  std::unique_ptr<OpenDocument> document;
  bench::Compare(
      {.name = name,
       .peerName = "their XML alone",
       .rounds = 9,
       .limit = 5.0,
       .clock = bench::Clock::Processor},
      [&] {
        document.reset();
        document = std::make_unique<OpenDocument>();
      },
      [&] {
        read(path);
        bench::Require((document->ObjectCount() > Plates) == fillsDocument,
                       "the document does not have the plates' texts");
      },
      [&] { Parse(path); });
}

}  // namespace

int main() {
  const test::ScratchDirectory folder;
  WriteTemplate(folder.Path("plates.cr2"));
  WriteTemplate(folder.Path("plates.zml"));
  const std::wstring cr2 = folder.Wide("plates.cr2");
  const std::wstring zml = folder.Wide("plates.zml");
  Compare(cr2, "10,000 plates of a cr2 file, parsed", ReadFirstGeneration, false);
  Compare(zml, "10,000 plates of a zml file, parsed", ReadSecondGeneration, false);
  Compare(cr2, "10,000 plates of a cr2 file, imported", Import<CCR2FileImport>, true);
  Compare(zml, "10,000 plates of a zml file, imported", Import<CCR2FileImportVers2>, true);
  return 0;
}
