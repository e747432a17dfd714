// An import of 10,000 plates into the embedded document, file to objects, against parsing their XML
// alone.

#include <fstream>
#include <memory>
#include <string>

#include "bench/measure.h"
#include "bench/require.h"
#include "host/document/document.h"
#include "host/document_host.h"
#include "rastrel/imports/xml_file_import.h"
#include "rastrel/platform/host/host.h"
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

/// An empty document, installed as the host's.
class OpenDocument {
 public:
  OpenDocument() { host::SetHost(&m_Host); }
  ~OpenDocument() { host::SetHost(nullptr); }
  OpenDocument(const OpenDocument&) = delete;
  OpenDocument& operator=(const OpenDocument&) = delete;
  [[nodiscard]] bool IsEmpty() const { return m_Host.GetDocument().HighestPage() == 0; }

 private:
  document::DocumentHost m_Host;
};

void Import(const std::wstring& path, const OpenDocument& document) {
  bench::Require(CXMLFileImport(path.c_str()).ImportXMLFile() == 1 && !document.IsEmpty(),
                 "the plates were not imported");
}

void Parse(const std::wstring& path) {
  bench::Require(static_cast<bool>(LoadXmlFile(path)), "the plates were not parsed");
}

void CompareImport(const std::string& folder, int sizes, const char* name) {
  const std::string file = folder + "/plates.xml";
  WritePlates(file, sizes);
  const std::wstring path = os::FromNative(file);
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
      [&] { Import(path, *document); }, [&] { Parse(path); });
}

}  // namespace

int main() {
  const test::ScratchDirectory folder;
  CompareImport(folder.Path(), 1, "10,000 plates of one size, imported");
  CompareImport(folder.Path(), 2, "10,000 plates of two sizes in turn, imported");
  return 0;
}
