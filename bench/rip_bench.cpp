// The RIP child against bare Ghostscript on the same page, and the cost of a cutter color. Every
// call is a whole process from its start to its end, and the wall clock counts: the two programs of
// the RIP work side by side, and a user waits for the page and not for processors. Their processor
// time is printed as well, without a limit.
#include <filesystem>
#include <string>
#include <vector>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/program.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/prefix/cutter.h"

namespace {

namespace bench = rastrel::bench;

constexpr int Strokes = 200000;

// The RIP, and a place for the jobs.
struct Place {
  bench::DataRoot root;
  std::string rip = root.InstallChild("rip/corerast.exe");

  [[nodiscard]] std::string File(const std::string& name, const std::string& content) const {
    return root.File(name, content);
  }
  void RemovePages() const { std::filesystem::remove_all(root.Path("Queue/rip/System/c-out")); }
};

std::string Prefix(const std::string& mode, const CJobData& settings) {
  return "\nserverdict begin 0 exitserver\n\n(%Lumiscript%pmodes/" + mode + ") SelectPrintMode\n" +
         "/SelectPrintMode load /$SelectPrintMode$ exch def\n/SelectPrintMode {pop} def\n" +
         rastrel::os::Utf8FromWide(rastrel::prefix::CutterSection(settings)) + "\x04";
}

// A full page: a background that shades off, areas, curves and text all over it, as a sign's proof
// has them.
std::string FullPage() {
  std::string job =
      "%!PS\n<< /PageSize [595 842] >> setpagedevice\n<< /ShadingType 2 /ColorSpace /DeviceRGB "
      "/Coords [0 0 595 842] /Function << /FunctionType 2 /Domain [0 1] /C0 [1 1 0.9] "
      "/C1 [0.6 0.8 1] /N 1 >> >> shfill\n/Helvetica findfont 11 scalefont setfont\n";
  for (int row = 0; row < 60; ++row) {
    const std::string y = std::to_string(20 + row * 13);
    job += std::to_string(row % 7) + " 7 div 0.4 0.2 setrgbcolor 30 " + y +
           " moveto (Engraved plates, brass and acrylic, in any size and number) show\n";
    for (int column = 0; column < 8; ++column) {
      const std::string x = std::to_string(360 + column * 27);
      job += "0." + std::to_string(column) + " 0.5 0.3 setrgbcolor newpath " + x + " " + y +
             " 11 0 360 arc fill\n";
    }
  }
  return job + "showpage\n";
}

// Each stroke is written out, as drawing programs do.
std::string StrokePage(const std::string& color) {
  std::string job =
      "%!PS\n<< /PageSize [595 842] >> setpagedevice\n" + color + " setrgbcolor 0.5 setlinewidth\n";
  for (int i = 0; i < Strokes; ++i) {
    job += std::to_string(i % 590) + " " + std::to_string(i % 830) + " moveto 5 5 rlineto stroke\n";
  }
  return job + "showpage\n";
}

// Measures both kinds of time of the same runs.
void Compare(const Place& place, const bench::Comparison& comparison,
             const std::vector<std::string>& ours, const std::vector<std::string>& peer) {
  std::vector<double> processor[2];
  const auto measured = [&](std::size_t side, const std::vector<std::string>& command) {
    return [&processor, side, &command] {
      processor[side].push_back(bench::Run(command).processorMilliseconds);
    };
  };
  bench::Compare(
      comparison, [&] { place.RemovePages(); }, measured(0, ours), measured(1, peer));
  bench::Print({comparison.name + ", processor time", bench::Median(processor[0]), "ms",
                comparison.peerName, bench::Median(processor[1])});
}

void ComparePage(const Place& place) {
  const std::string job = place.File("page.ps", FullPage());
  const std::string prefix = place.File("page.psp", Prefix("RGB/300 dpi.ps", {}));
  Compare(place,
          {.name = "RIP, an A4 page at 300 dpi",
           .peerName = "bare Ghostscript, the same device",
           .rounds = 15,
           .limit = 1.15},
          {place.rip, prefix, job},
          {"gs", "-q", "-dBATCH", "-dNOPAUSE", "-dSAFER", "-sDEVICE=ppmraw", "-r300",
           "-sOutputFile=" + place.File("page.ppm", ""), job});
}

// The parts of a captured stroke, measured by leaving them out in a bare interpreter:
// 0.4 us for reading it from the job, 0.6 for the match of its color (0.25 of it to ask for the
// color space), 0.8 for its matrix, line width and head, 0.4 for the path and its digits, and 0.65
// for reading and comparing the clip, which may have changed by any grestore: some 90 operators of
// 20 to 250 ns each. A painted one takes 0.55. So 4.5 times no cutter is the floor of a capture in
// PostScript, and the program that reads the paths adds the writing of their file.
void CompareCutter(const Place& place) {
  CJobData red;
  red.CutterEnabled = true;
  red.CutterColor = {255, 0, 0, 0};
  const std::string mode = "TIFF/tiff default.ps";
  const std::string none = place.File("none.psp", Prefix(mode, {}));
  const std::string cutter = place.File("cutter.psp", Prefix(mode, red));
  const std::string blue = place.File("blue.ps", StrokePage("0 0 1"));
  const std::string matching = place.File("red.ps", StrokePage("1 0 0"));
  Compare(place,
          {.name = "RIP, 200,000 strokes, none in the cutter's colour",
           .peerName = "no cutter",
           .rounds = 9,
           .limit = 3.0},
          {place.rip, cutter, blue}, {place.rip, none, blue});
  Compare(place,
          {.name = "RIP, 200,000 strokes, all in the cutter's colour",
           .peerName = "no cutter",
           .rounds = 9,
           .limit = 5.5},
          {place.rip, cutter, matching}, {place.rip, none, matching});
}

}  // namespace

int main() {
  const Place place;
  ComparePage(place);
  CompareCutter(place);
}
