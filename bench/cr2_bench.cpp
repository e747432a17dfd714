// Crown Trophy templates of 10,000 plates, parsed into records, against parsing their XML alone.

#include <fstream>
#include <string>

#include "bench/measure.h"
#include "bench/require.h"
#include "host/document_host.h"
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

void Compare(const std::string& file, const char* name, void (*read)(const std::wstring&)) {
  WriteTemplate(file);
  const std::wstring path = os::FromNative(file);
  document::DocumentHost host;
  host::SetHost(&host);
  bench::Compare(
      {.name = name,
       .peerName = "their XML alone",
       .rounds = 9,
       .limit = 5.0,
       .clock = bench::Clock::Processor},
      [] {}, [&] { read(path); }, [&] { Parse(path); });
  host::SetHost(nullptr);
}

}  // namespace

int main() {
  const test::ScratchDirectory folder;
  Compare(folder.Path() + "/plates.cr2", "10,000 plates of a cr2 file, parsed",
          ReadFirstGeneration);
  Compare(folder.Path() + "/plates.zml", "10,000 plates of a zml file, parsed",
          ReadSecondGeneration);
  return 0;
}
