// `rastrel separate` against Ghostscript's own separation device on the same page and resolution.
// Every call is a whole process from its start to its end, with its results written, and the wall
// clock counts; the processor time is printed as well, without a limit. Both write their planes
// uncompressed.
#include <filesystem>
#include <string>
#include <vector>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/program.h"

namespace {

namespace bench = rastrel::bench;

constexpr const char* Command = RASTREL_BINARY_DIR "/libexec/rastrel/rastrel-document";
constexpr int Rounds = 9;
constexpr double Limit = 1.1;

// A full page in process inks: a background that shades off, areas, curves and text all over it,
// and an area of a spot color.
std::string FullPage() {
  std::string job =
      "%!PS\n<< /PageSize [595 842] >> setpagedevice\n<< /ShadingType 2 /ColorSpace /DeviceCMYK "
      "/Coords [0 0 595 842] /Function << /FunctionType 2 /Domain [0 1] /C0 [0 0 0.3 0] "
      "/C1 [0.5 0.1 0 0] /N 1 >> >> shfill\n/Helvetica findfont 11 scalefont setfont\n";
  for (int row = 0; row < 60; ++row) {
    const std::string y = std::to_string(20 + row * 13);
    job += std::to_string(row % 7) + " 7 div 0.4 0.2 0 setcmykcolor 30 " + y +
           " moveto (Engraved plates, brass and acrylic, in any size and number) show\n";
    for (int column = 0; column < 8; ++column) {
      const std::string x = std::to_string(360 + column * 27);
      job += "0." + std::to_string(column) + " 0.5 0.3 0 setcmykcolor newpath " + x + " " + y +
             " 11 0 360 arc fill\n";
    }
  }
  return job +
         "[/Separation (Gold) /DeviceCMYK {dup 0.3 mul exch 0.8 mul 0 exch 0}] setcolorspace\n"
         "1 setcolor 100 100 200 300 rectfill\nshowpage\n";
}

}  // namespace

int main() {
  namespace fs = std::filesystem;
  const bench::DataRoot root;
  const std::string job = root.File("page.ps", FullPage());
  const fs::path results = root.Path("results");
  const std::vector<std::string> ours{Command, "separate", job, "-o", results / "ours"};
  const std::vector<std::string> peer{"gs",
                                      "-q",
                                      "-dSAFER",
                                      "-dBATCH",
                                      "-dNOPAUSE",
                                      "-r300",
                                      "-sDEVICE=tiffsep",
                                      "-sCompression=none",
                                      "-o",
                                      results / "p%d.tif",
                                      job};
  std::vector<double> processor[2];
  const auto measured = [&](std::size_t side, const std::vector<std::string>& command) {
    return [&processor, side, &command] {
      processor[side].push_back(bench::Run(command).processorMilliseconds);
    };
  };
  const bench::Comparison comparison{.name = "separate, an A4 page at 300 dpi",
                                     .peerName = "Ghostscript's separation device",
                                     .rounds = Rounds,
                                     .limit = Limit};
  const auto before = [&] {
    fs::remove_all(results);
    fs::create_directories(results);
  };
  before();
  bench::Run(ours);  // lays the data root out
  bench::Compare(comparison, before, measured(0, ours), measured(1, peer));
  bench::Print({comparison.name + ", processor time", bench::Median(processor[0]), "ms",
                comparison.peerName, bench::Median(processor[1])});
}
