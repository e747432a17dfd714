// Forty small EPS files in one call of the command, as many at a time as there are processors,
// against the same call that takes them one by one, and against a Ghostscript for each.

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/program.h"

namespace bench = rastrel::bench;

namespace {

constexpr int Files = 40;
// Two processors do it in half the time and what starting, waiting and writing take.
constexpr double LimitWithTwo = 0.7;

struct Subject {
  std::string name;
  std::vector<std::string> command;      // before the files
  std::vector<std::string> ghostscript;  // likewise
};

std::string SmallEps(int number) {
  return "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 200 100\n%%EndComments\n"
         "0.8 0.1 0.1 setrgbcolor " +
         std::to_string(10 + number) +
         " 10 80 60 rectfill\n0 setgray /Helvetica findfont 20 scalefont setfont\n"
         "20 40 moveto (Sign) show showpage\n";
}

std::vector<std::string> Joined(std::vector<std::string> words,
                                const std::vector<std::string>& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

}  // namespace

int main() {
  const bench::DataRoot root;
  std::vector<std::string> files;
  for (int number = 0; number < Files; ++number)
    files.push_back(root.File("sign" + std::to_string(number) + ".eps", SmallEps(number)));
  const std::string rastrel = std::string(RASTREL_BINARY_DIR) + "/bin/rastrel";
  const std::string pictures = root.Path("pictures/");
  const std::vector<std::string> quiet{"gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE"};
  const std::vector<Subject> subjects{
      {"pagesize", {"pagesize"}, Joined(quiet, {"-sDEVICE=bbox"})},
      {"preview",
       {"preview", "-o", pictures, "--force"},
       Joined(quiet, {"-sDEVICE=png16m", "-dEPSCrop", "-sOutputFile=" + root.Path("gs.png")})},
      {"inspect --painted",
       {"inspect", "--painted"},
       Joined(quiet, {"-sDEVICE=tiffsep", "-r72", "-sOutputFile=" + root.Path("gs%d.tif")})}};
  const double limit = std::thread::hardware_concurrency() > 1 ? LimitWithTwo : 0;
  for (const Subject& subject : subjects) {
    const auto all = Joined(Joined({rastrel}, subject.command), files);
    const auto oneByOne = Joined(all, {"--jobs", "1"});
    const std::string name = std::to_string(Files) + " EPS: " + subject.name;
    const auto ours = [&] { bench::Run(all); };
    bench::Compare(
        {.name = name, .peerName = "--jobs 1", .rounds = 5, .limit = limit}, [] {}, ours,
        [&] { bench::Run(oneByOne); });
    bench::Compare(
        {.name = name, .peerName = "one gs a file", .rounds = 5}, [] {}, ours,
        [&] {
          for (const std::string& file : files) bench::Run(Joined(subject.ghostscript, {file}));
        });
  }
}
