// A merge of 10,000 rows, from the table to a drawing of all pages, against importing the same
// 10,000 plates from one file and drawing them. The merge also reads the table and reports on each
// row.

#include <fstream>
#include <string>

#include "bench/measure.h"
#include "bench/program.h"
#include "rastrel/platform/os/path.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace {

using namespace rastrel;

constexpr int Rows = 10000;

std::string Plate(const std::string& name, const std::string& department) {
  return "<PLATE><COLOR>Gold</COLOR><WIDTH>3</WIDTH><HEIGHT>1</HEIGHT><TEXTCOLOR>Black</TEXTCOLOR>"
         "<TEXTFRAME>5</TEXTFRAME><TEXT line=\"1\" data=\"" +
         name +
         "\"><FONT name=\"DejaVuSans-Bold.ttf\" size=\"0.3\"/></TEXT><TEXT line=\"2\" data=\"" +
         department + "\"><FONT name=\"DejaVuSans.ttf\" size=\"0.18\"/></TEXT></PLATE>\n";
}

void Write(const std::string& folder) {
  std::ofstream table(folder + "/names.csv", std::ios::binary);
  std::ofstream plates(folder + "/plates.xml", std::ios::binary);
  const std::string before = "<ABB><ENGRAVINGTEMPLATE><PLATES/>\n";
  const std::string after = "</ENGRAVINGTEMPLATE></ABB>\n";
  table << "Name,Department\n";
  plates << before;
  for (int row = 0; row < Rows; ++row) {
    const std::string name = "Person " + std::to_string(row);
    const std::string department = "Department " + std::to_string(row % 13);
    table << name << ',' << department << '\n';
    plates << Plate(name, department);
  }
  plates << after;
  std::ofstream(folder + "/badge.xml", std::ios::binary)
      << before << Plate("{Name}", "{Department}") << after;
}

}  // namespace

int main() {
  const test::ScratchDirectory folder;
  const test::EnvironmentGuard root("RASTREL_HOME", folder.Path("home"));
  Write(folder.Path());
  const std::string command = std::string(RASTREL_BINARY_DIR) + "/libexec/rastrel/rastrel-document";
  bench::Compare(
      {.name = "10,000 rows merged and drawn",
       .peerName = "the same plates from one file, imported and drawn",
       .rounds = 7,
       .limit = 1.5},
      [] {},
      [&] {
        bench::Run({command, "merge", folder.Path("badge.xml"), "--data", folder.Path("names.csv"),
                    "-o", folder.Path("merged.pdf")});
      },
      [&] {
        bench::Run({command, "import", folder.Path("plates.xml"), "-o", folder.Path("plain.pdf")});
      });
  return 0;
}
