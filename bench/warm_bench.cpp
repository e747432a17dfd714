// Many small EPS files, measured and previewed by one call of the command, against Ghostscript
// started once for each; and the first call of all, which finds no interpreter that is ready,
// against one start. The wall clock counts, since a user waits. The files differ, and hold
// text, curves, colors and a picture, as drawing programs write them.
//
// The median of the calls of many files is one that found an interpreter ready, which the call
// before it has left. The first call has its own row.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/program.h"
#include "bench/require.h"

namespace {

namespace fs = std::filesystem;
namespace bench = rastrel::bench;

constexpr int Files = 200;
constexpr int Rounds = 3;
constexpr int FirstRounds = 11;
constexpr double MeasureLimit = 0.15;
constexpr double PreviewLimit = 0.2;
constexpr double PaintedLimit = 0.2;
constexpr double FirstLimit = 1.2;
constexpr const char* Command = RASTREL_BINARY_DIR "/bin/rastrel";

std::string Eps(int number) {
  const std::string side = std::to_string(100 + number % 60);
  const std::string text = std::to_string(number);
  std::string eps = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 " + side + " " + side +
                    "\n%%EndComments\n/Helvetica findfont 14 scalefont setfont\n"
                    "5 10 moveto (Sign " +
                    text + ") show\n0.8 0.1 0.2 setrgbcolor 5 30 40 20 rectfill\n" +
                    "0.1 0.7 0 0.1 setcmykcolor 50 30 30 20 rectfill\n" +
                    "gsave 10 60 translate 30 30 scale 2 2 8 [2 0 0 2 0 0] "
                    "{<00FF8040 10203040 50607080>} false 3 colorimage grestore\n0 setgray\n";
  for (int i = 0; i < 20; ++i) {
    const std::string at = std::to_string(i * 4 + 5);
    eps += at + " 55 moveto " + at + " 75 60 40 95 " + std::to_string(60 + number % 30) +
           " curveto stroke\n";
  }
  return eps + "showpage\n%%EOF\n";
}

std::vector<std::string> MakeFiles(const bench::DataRoot& root) {
  std::vector<std::string> files;
  for (int i = 0; i < Files; ++i) {
    files.push_back(root.File("eps/sign" + std::to_string(i) + ".eps", Eps(i)));
  }
  return files;
}

void Call(std::vector<std::string> arguments, const std::vector<std::string>& files) {
  arguments.insert(arguments.begin(), Command);
  arguments.insert(arguments.end(), files.begin(), files.end());
  bench::Run(arguments);
}

void RunBare(const std::vector<std::string>& files, const std::string& device,
             const std::string& output) {
  for (const std::string& file : files) {
    bench::Run({"gs", "-q", "-dBATCH", "-dNOPAUSE", "-dSAFER", "-dEPSCrop", "-r72",
                "-sDEVICE=" + device, "-sOutputFile=" + output, file});
  }
}

}  // namespace

int main() {
  const bench::DataRoot root;
  const std::vector<std::string> files = MakeFiles(root);
  const std::vector<std::string> first{files.front()};
  const std::string warm = root.Path("warm");
  const std::string pictures = root.Path("pictures");
  const auto nothing = [] {};
  Call({"pagesize"}, first);  // lays the data root out

  // Without an interpreter that is ready, and without a note that one was wanted.
  bench::Compare(
      {.name = "the first small EPS measured",
       .peerName = "Ghostscript's box",
       .rounds = FirstRounds,
       .limit = FirstLimit},
      [&] {
        for (const auto& entry : fs::directory_iterator(warm)) {
          if (entry.path().extension() == ".wish") fs::remove(entry.path());
        }
      },
      [&] { Call({"pagesize"}, first); }, [&] { RunBare(first, "bbox", "/dev/null"); });
  bench::Compare(
      {.name = "200 small EPS measured in one call",
       .peerName = "Ghostscript's box, a start each",
       .rounds = Rounds,
       .limit = MeasureLimit},
      nothing, [&] { Call({"pagesize"}, files); }, [&] { RunBare(files, "bbox", "/dev/null"); });
  bench::Compare(
      {.name = "200 small EPS previewed in one call",
       .peerName = "Ghostscript's PNG, a start each",
       .rounds = Rounds,
       .limit = PreviewLimit},
      [&] {
        fs::remove_all(pictures);
        fs::create_directory(pictures);
      },
      [&] {
        Call({"preview", "-o", pictures + "/"}, files);
      },
      [&] { RunBare(files, "png16m", pictures + "/gs.png"); });
  bench::Compare(
      {.name = "200 small EPS inspected for painted spots in one call",
       .peerName = "Ghostscript's separations, a start each",
       .rounds = Rounds,
       .limit = PaintedLimit},
      nothing,
      [&] {
        Call({"inspect", "--painted"}, files);
      },
      [&] { RunBare(files, "tiffsep", pictures + "/p%d.tif"); });
}
