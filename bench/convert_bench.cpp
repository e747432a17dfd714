// A page of A4 at 300 dpi as a PNG: `rastrel convert` as a process, with its queue program, its
// plane reader and its own PNG, against Ghostscript writing the same pixels to one.

#include <string>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/program.h"

namespace bench = rastrel::bench;

int main() {
  const bench::DataRoot root;
  const std::string command = std::string(RASTREL_BINARY_DIR) + "/libexec/rastrel/rastrel-document";
  const std::string page = std::string(RASTREL_SOURCE_DIR) + "/examples/shopfront.ps";
  const std::string ours = root.Path("ours.png");
  const std::string peers = root.Path("peers.png");
  bench::Compare(
      {.name = "convert A4 at 300 dpi to PNG",
       .peerName = "gs -sDEVICE=png16m",
       .rounds = 7,
       .limit = 1.15},
      [] {},
      [&] {
        bench::Run({command, "convert", page, "--dpi", "300", "-o", ours});
      },
      [&] {
        bench::Run({"gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=png16m", "-r300",
                    "-sOutputFile=" + peers, page});
      });
}
