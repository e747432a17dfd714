// One job on several cores: a PDF of many pages in several interpreters, and a heavy page painted
// by several threads, each against the same RIP with one. Every call is a whole process, and the
// wall clock counts; the processor time is printed as well, without a limit. The number of cores is
// the machine's; on one with a single core all ratios are 1.
#include <filesystem>
#include <string>
#include <vector>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/program.h"

namespace {

namespace bench = rastrel::bench;

struct Place {
  bench::DataRoot root;
  std::string rip = root.InstallChild("rip/corerast.exe");

  [[nodiscard]] std::string File(const std::string& name, const std::string& content) const {
    return root.File(name, content);
  }
  void RemovePages() const { std::filesystem::remove_all(root.Path("Queue/rip/System/c-out")); }
};

std::string Prefix(const std::string& mode) {
  return "\nserverdict begin 0 exitserver\n\n(%Lumiscript%pmodes/" + mode +
         ") SelectPrintMode\n\x04";
}

// Pages of text, areas, curves and a small picture.
std::string Pages(int count) {
  return "%!PS\n<< /PageSize [595 842] >> setpagedevice\n"
         "/Helvetica findfont 11 scalefont setfont\n1 1 " +
         std::to_string(count) +
         " { /p exch def\n"
         "0 1 50 { 40 exch 15 mul 800 exch sub moveto (Engraved plates in any size) show } for\n"
         "0 1 59 { /i exch def i 60 div p 20 div 0.4 setrgbcolor\n"
         "i 9 mul i 13 mul 700 mod 40 20 rectfill } for\n"
         "0 1 29 { /i exch def 0 i 30 div 1 setrgbcolor 2 setlinewidth i 10 mul 100 moveto\n"
         "200 i 20 mul 300 i 10 mul 500 700 curveto stroke } for\n"
         "gsave 100 300 translate 200 200 scale 64 64 8 [64 0 0 64 0 0]\n"
         "{ 192 string 0 1 191 { 1 index exch dup p add 255 and put } for } false 3 colorimage\n"
         "grestore showpage } for\n";
}

// 80 shadings and 2,000 discs.
std::string HeavyPage() {
  return "%!PS\n<< /PageSize [595 842] >> setpagedevice\n"
         "0 1 79 { /i exch def gsave i 10 mod 59 mul i 10 idiv 105 mul translate\n"
         "0 0 59 105 rectclip << /ShadingType 3 /ColorSpace /DeviceRGB\n"
         "/Coords [30 50 0 30 50 60] /Extend [true true] /Function << /FunctionType 2\n"
         "/Domain [0 1] /C0 [i 80 div 0 1] /C1 [1 i 80 div 0] /N 1 >> >> shfill grestore } for\n"
         "0 1 1999 { /i exch def i 2000 div 0.5 0.3 setrgbcolor\n"
         "i 17 mul 595 mod i 23 mul 842 mod 6 0 360 arc fill } for showpage\n";
}

void Compare(const Place& place, const bench::Comparison& comparison, const char* variable,
             const std::vector<std::string>& ours) {
  std::vector<std::string> peer = ours;
  peer.insert(peer.begin(), {"env", std::string(variable) + "=1"});
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

void ComparePdf(const Place& place, const std::string& mode, int pages, double limit) {
  const std::string source = place.File("pages.ps", Pages(pages));
  const std::string pdf = place.File("pages.pdf", "");
  bench::Run(
      {"gs", "-q", "-dBATCH", "-dNOPAUSE", "-dSAFER", "-sDEVICE=pdfwrite", "-o", pdf, source});
  Compare(place,
          {.name = "RIP, " + std::to_string(pages) + " pages of PDF, " + mode,
           .peerName = "one interpreter",
           .rounds = 9,
           .limit = limit},
          "RASTREL_RIP_PROCESSES", {place.rip, place.File("pages.psp", Prefix(mode + ".ps")), pdf});
}

void CompareThreads(const Place& place, const std::string& mode) {
  const std::string name = "RIP, a heavy A4 page of PostScript, " + mode;
  Compare(place, {.name = name, .peerName = "one thread", .rounds = 9, .limit = 0.8},
          "RASTREL_RIP_THREADS",
          {place.rip, place.File("heavy.psp", Prefix(mode + ".ps")),
           place.File("heavy.ps", HeavyPage())});
}

}  // namespace

int main() {
  const Place place;
  ComparePdf(place, "RGB/300 dpi", 20, 0.8);
  ComparePdf(place, "CMYK/300 dpi", 20, 0.8);
  ComparePdf(place, "RGB/300 dpi", 12, 1.0);  // the fewest that are divided
  CompareThreads(place, "RGB/600 dpi");
}
