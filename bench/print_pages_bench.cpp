// `rastrel print` from a file to finished TIFF files, against the bare interpreter writing the same
// pages: whole processes, turn by turn, with the same compression on both sides. The documents are
// made here, each page of text, areas, curves and a picture.

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/program.h"
#include "bench/require.h"

namespace {

namespace bench = rastrel::bench;
namespace fs = std::filesystem;

constexpr const char* Command = RASTREL_BINARY_DIR "/bin/rastrel";
constexpr int Rounds = 7;
constexpr double LimitOfSize = 1.05;
constexpr double LimitOfMemory = 2;

/// Numbers that are the same in every run.
class Numbers {
 public:
  explicit Numbers(unsigned seed) : m_Random(seed) {}
  [[nodiscard]] std::string Below(unsigned limit) {
    return std::to_string(m_Random() % limit) + " ";
  }
  [[nodiscard]] std::string Share() {
    const std::string digits = std::to_string(100 + m_Random() % 100);
    return "0." + digits.substr(1) + " ";
  }

 private:
  std::mt19937 m_Random;
};

std::string Picture(Numbers& numbers) {
  std::string text =
      "gsave 300 100 translate 200 150 scale 100 75 8 [100 0 0 75 0 0] "
      "{currentfile 300 string readhexstring pop} false 3 colorimage\n";
  constexpr const char* digits = "0123456789abcdef";
  for (unsigned y = 0; y < 75; ++y) {
    const unsigned noise = static_cast<unsigned>(std::stoul(numbers.Below(16)));
    for (unsigned x = 0; x < 100; ++x) {
      for (const unsigned sample : {x * 2 + y, y * 3 + noise, x * y / 20}) {
        text += digits[sample >> 4 & 15];
        text += digits[sample & 15];
      }
    }
    text += '\n';
  }
  return text + "grestore\n";
}

std::string Page(Numbers& numbers, unsigned number) {
  std::string text =
      "%%Page: " + std::to_string(number) + " " + std::to_string(number) + "\nsave\n";
  for (int i = 0; i < 60; ++i) {
    text += numbers.Share() + numbers.Share() + numbers.Share() + "setrgbcolor " +
            numbers.Below(500) + numbers.Below(750) + numbers.Below(90) + numbers.Below(60) +
            "rectfill\n";
  }
  for (int i = 0; i < 30; ++i) {
    text += numbers.Share() + numbers.Share() + numbers.Share() + "setrgbcolor " +
            numbers.Below(6) + "setlinewidth newpath " + numbers.Below(570) + numbers.Below(800) +
            "moveto ";
    for (int point = 0; point < 6; ++point) text += numbers.Below(570);
    text += "curveto stroke\n";
  }
  text += "0 setgray /Helvetica findfont 10 scalefont setfont\n";
  for (int line = 0; line < 60; ++line) {
    text += "40 " + std::to_string(800 - 13 * line) + " moveto (Line " + std::to_string(line) +
            ": engraved plates, brass and acrylic, in any size, " + numbers.Below(1'000'000) +
            ") show\n";
  }
  return text + Picture(numbers) + "restore showpage\n";
}

std::string Document(unsigned pages) {
  Numbers numbers(3);
  std::string text = "%!PS-Adobe-3.0\n%%Pages: " + std::to_string(pages) +
                     "\n%%EndComments\n%%BeginProlog\n%%EndProlog\n%%BeginSetup\n"
                     "<< /PageSize [595 842] >> setpagedevice\n%%EndSetup\n";
  for (unsigned page = 1; page <= pages; ++page) text += Page(numbers, page);
  return text + "%%Trailer\n%%EOF\n";
}

/// A sheet of A1 in process inks with an area in a spot color.
std::string LargeSheet() {
  Numbers numbers(5);
  std::string text =
      "%!PS\n<< /PageSize [1684 2384] >> setpagedevice\n/Helvetica findfont 24 scalefont setfont\n";
  for (int i = 0; i < 300; ++i) {
    text += numbers.Share() + numbers.Share() + numbers.Share() + numbers.Share() +
            "setcmykcolor " + numbers.Below(1500) + numbers.Below(2200) + numbers.Below(250) +
            numbers.Below(150) + "rectfill\n";
  }
  for (int i = 0; i < 150; ++i) {
    text += numbers.Share() + numbers.Share() + numbers.Share() + "0 setcmykcolor " +
            numbers.Below(12) + "setlinewidth newpath " + numbers.Below(1600) +
            numbers.Below(2300) + "moveto ";
    for (int point = 0; point < 6; ++point) text += numbers.Below(1600);
    text += "curveto stroke\n";
  }
  text += "0 0 0 1 setcmykcolor\n";
  for (int line = 0; line < 80; ++line) {
    text += "60 " + std::to_string(2300 - 28 * line) +
            " moveto (Engraved plates, brass and acrylic, in any size and number) show\n";
  }
  return text +
         "[/Separation (Gold) /DeviceCMYK {dup 0.3 mul exch 0.8 mul 0 exch 0}] setcolorspace\n"
         "1 setcolor 300 300 600 900 rectfill\nshowpage\n";
}

/// One row: a document, how both print it, and the limits of the ratio.
struct Work {
  std::string name;
  std::string file;
  std::string mode;
  std::string device;                ///< of the interpreter
  std::vector<std::string> options;  ///< of ours
  std::string compression;
  double limit;
  /// Our files are on the disk when the command ends. Whether the peer's are to be too.
  bool peerFlushes = false;
  /// Whether an interpreter is kept ready, as one is for who prints again and again. Its time and
  /// memory are no child's of the command, so only without it all is counted.
  bool isWarm = true;
};

std::uintmax_t SizeIn(const fs::path& directory) {
  std::uintmax_t size = 0;
  for (const auto& entry : fs::directory_iterator(directory)) size += entry.file_size();
  return size;
}

class Measurement {
 public:
  Measurement(const bench::DataRoot& root, Work work)
      : m_Work(std::move(work)), m_Results(root.Path("results")) {
    m_Ours = {Command,     "print",     m_Work.file,        "--mode",
              m_Work.mode, "--printer", m_Work.compression, "--output",
              m_Results};
    m_Ours.insert(m_Ours.end(), m_Work.options.begin(), m_Work.options.end());
    m_Peer = {"gs",
              "-q",
              "-dSAFER",
              "-dBATCH",
              "-dNOPAUSE",
              "-r300",
              "-sDEVICE=" + m_Work.device,
              "-sCompression=" + m_Work.compression,
              "-sOutputFile=" + (m_Results / "p%d.tif").string(),
              m_Work.file};
    if (!m_Work.isWarm) m_Ours.insert(m_Ours.begin(), {"env", "RASTREL_WARM=0"});
    if (m_Work.peerFlushes) {
      m_Peer.insert(m_Peer.begin(),
                    {"sh", "-c", "\"$@\" && sync --data " + m_Results.string() + "/*", "flushed"});
    }
  }

  void Run() {
    // The first pays for the data root's layout and the cache of fonts.
    static_cast<void>(Once(m_Ours));
    static_cast<void>(Once(m_Peer));
    for (int round = 0; round < Rounds; ++round) {
      m_OurCosts.push_back(Once(m_Ours));
      m_OurSize = SizeIn(m_Results);
      m_PeerCosts.push_back(Once(m_Peer));
      m_PeerSize = SizeIn(m_Results);
    }
    Print("", m_Work.limit, "ms", [](const bench::Cost& cost) { return cost.milliseconds; });
    if (m_Work.isWarm) return;
    Print(", processor time", 0, "ms",
          [](const bench::Cost& cost) { return cost.processorMilliseconds; });
  }

  void PrintMemory() const {
    Print(", peak memory of the largest process", LimitOfMemory, "MiB",
          [](const bench::Cost& cost) { return cost.peakMiB; });
  }
  void PrintSize() const {
    bench::Print({Name(", size of the files"), static_cast<double>(m_OurSize) / 1e6, "MB",
                  PeerName(), static_cast<double>(m_PeerSize) / 1e6, LimitOfSize});
  }

 private:
  bench::Cost Once(const std::vector<std::string>& command) const {
    fs::remove_all(m_Results);
    fs::create_directories(m_Results);
    return bench::Run(command);
  }

  [[nodiscard]] std::string Name(const std::string& suffix) const {
    return m_Work.name + (m_Work.isWarm ? "" : ", nothing kept ready") + ", " + m_Work.compression +
           suffix;
  }
  [[nodiscard]] std::string PeerName() const {
    return "gs -sDEVICE=" + m_Work.device + (m_Work.peerFlushes ? ", flushed" : "");
  }

  template <typename Part>
  void Print(const std::string& suffix, double limit, const std::string& unit, Part part) const {
    std::vector<double> ours;
    std::vector<double> peer;
    for (const bench::Cost& cost : m_OurCosts) ours.push_back(part(cost));
    for (const bench::Cost& cost : m_PeerCosts) peer.push_back(part(cost));
    bench::Print({Name(suffix), bench::Median(ours), unit, PeerName(), bench::Median(peer), limit});
  }

  Work m_Work;
  fs::path m_Results;
  std::vector<std::string> m_Ours;
  std::vector<std::string> m_Peer;
  std::vector<bench::Cost> m_OurCosts;
  std::vector<bench::Cost> m_PeerCosts;
  std::uintmax_t m_OurSize = 0;
  std::uintmax_t m_PeerSize = 0;
};

/// A printer for each compression, by its name.
std::string Devices() {
  std::string text;
  for (const std::string compression : {"lzw", "none"}) {
    text += "[" + compression + "]\nkind = file\nformat = tiff\ncompression = " + compression +
            "\npattern = {output}/{job}-{page}.tif\n";
  }
  return text;
}

std::string PdfOf(const bench::DataRoot& root, const std::string& postScript) {
  std::string pdf = root.Path("pages.pdf");
  bench::Run({"gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=pdfwrite",
              "-sOutputFile=" + pdf, postScript});
  return pdf;
}

/// Whether the command makes the pages of PostScript in several interpreters.
bool HasParallelPages(const bench::DataRoot& root) {
  const std::string help = root.File("help", "");
  const int file = ::open(help.c_str(), O_WRONLY | O_CLOEXEC);
  bench::Run({Command, "print", "--help"}, {.output = file});
  ::close(file);
  return root.Read("help").find("--parallel-pages") != std::string::npos;
}

}  // namespace

// With an argument only the works whose name or compression holds it.
int main(int count, char** arguments) {
  const std::string wanted = count > 1 ? arguments[1] : "";
  const bench::DataRoot root;
  static_cast<void>(root.File("devices.txt", Devices()));
  const std::string pages = root.File("pages.ps", Document(20));
  const std::string page = root.File("page.ps", Document(1));
  const std::string sheet = root.File("sheet.ps", LargeSheet());
  const std::string pdf = PdfOf(root, pages);
  const std::string rgb = "RGB/300 dpi";
  std::vector<Work> works = {
      {"print 20 pages of PDF", pdf, rgb, "tiff24nc", {}, "lzw", 0.6},
      {"print 20 pages of PDF", pdf, rgb, "tiff24nc", {}, "none", 0.8},
      {"print 20 pages of PostScript", pages, rgb, "tiff24nc", {}, "lzw", 0.8},
      {"print 20 pages of PostScript", pages, rgb, "tiff24nc", {}, "none", 1.15},
      {"print 1 page A4", page, rgb, "tiff24nc", {}, "lzw", 0.9},
      {"print 1 page A4", page, rgb, "tiff24nc", {}, "none", 1.3},
      {"print A1 in CMYK with a spot", sheet, "CMYK/300 dpi", "tiffsep", {}, "lzw", 1.1},
  };
  for (const Work& work : std::vector(works)) {
    if (work.compression != "none") continue;
    works.push_back(work);
    works.back().peerFlushes = true;
  }
  if (HasParallelPages(root)) {
    const std::string name = "print 20 pages of PostScript, --parallel-pages";
    for (const auto& [compression, limit] : {std::pair{"lzw", 0.65}, std::pair{"none", 0.9}}) {
      works.push_back({name, pages, rgb, "tiff24nc", {"--parallel-pages"}, compression, limit});
    }
  }
  // The cost of a first print. The limits are for who prints again; LZW keeps them in either case.
  for (const Work& work : std::vector(works)) {
    if (work.peerFlushes) continue;
    works.push_back(work);
    works.back().isWarm = false;
    if (work.compression == "none") works.back().limit = 0;
  }
  for (const Work& work : works) {
    if ((work.name + ", " + work.compression).find(wanted) == std::string::npos) continue;
    Measurement measurement(root, work);
    measurement.Run();
    if (work.isWarm) measurement.PrintSize();
    if (!work.isWarm && (work.file == pdf || work.file == pages)) measurement.PrintMemory();
  }
}
