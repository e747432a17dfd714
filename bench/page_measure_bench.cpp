// Measuring a page by the queue program against bare Ghostscript's start and its box of the same
// file. Every call is a whole process from its start to its end with its reports read, and the wall
// clock counts, since a user waits for the page. Files: one mark, for the start alone; a page
// as a drawing program writes it; and those of the directory that RASTREL_BENCH_FILES names, if it
// does.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/program.h"

namespace {

namespace fs = std::filesystem;
namespace bench = rastrel::bench;

constexpr double Limit = 1.3;
constexpr int Rounds = 31;

// Runs a program to its end and reads its reports. They must hold that text.
void Run(std::vector<std::string> arguments, const std::string& wanted) {
  int ends[2];
  bench::Require(pipe2(ends, O_CLOEXEC) == 0, "no pipe");
  const bench::Process process(std::move(arguments), {.reports = ends[1]});
  close(ends[1]);
  std::string reports;
  std::vector<char> buffer(65536);
  for (ssize_t count = 0; (count = read(ends[0], buffer.data(), buffer.size())) > 0;) {
    reports.append(buffer.data(), static_cast<std::size_t>(count));
  }
  close(ends[0]);
  process.End(reports);
  if (reports.find(wanted) == reports.npos) bench::Fail("nothing was measured: " + reports);
}

// Areas, curves and text all over a page that never says how large it is.
std::string FullPage() {
  std::string job = "%!PS\n/Helvetica findfont 11 scalefont setfont\n";
  for (int row = 0; row < 60; ++row) {
    const std::string y = std::to_string(20 + row * 13);
    job += "0 setgray 30 " + y + " moveto (Engraved plates, brass and acrylic, in any size) show\n";
    for (int column = 0; column < 40; ++column) {
      job += "newpath " + std::to_string(300 + column * 7) + " " + y + " 3 0 360 arc fill\n";
    }
  }
  return job + "showpage\n";
}

void CompareFile(const std::string& program, const std::string& name, const std::string& file) {
  bench::Compare(
      {.name = "page measuring, " + name,
       .peerName = "bare Ghostscript's box",
       .rounds = Rounds,
       .limit = Limit},
      [] {},
      [&] {
        Run({program, "-q", "-ps", file}, "QRAST:bbox ");
      },
      [&] {
        Run({"gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=bbox", file},
            "%%HiResBoundingBox: ");
      });
}

}  // namespace

int main() {
  const bench::DataRoot root;
  const std::string program = root.InstallChild("JobSpool.exe");
  CompareFile(program, "one mark", root.File("mark.ps", "%!PS\n0 0 9 9 rectfill showpage\n"));
  CompareFile(program, "a full page", root.File("page.ps", FullPage()));
  const char* const more = std::getenv("RASTREL_BENCH_FILES");
  if (more == nullptr) return 0;
  std::vector<fs::path> files{fs::directory_iterator(more), {}};
  std::ranges::sort(files);
  for (const fs::path& file : files) CompareFile(program, file.filename(), file);
}
