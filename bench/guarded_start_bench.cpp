// The interpreter's guardian, limits and walls against Ghostscript started bare with the same
// arguments, on work that is all start: a placed EPS of one mark as PDF, which is a short task of
// this process, and a page of one mark, which is a run of the RIP. Processor time counts, that of
// all processes together, since other programs on the machine disturb it least. The limits are 1.1
// of what bare starts of these took before there were walls.
#include <filesystem>
#include <string>
#include <vector>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/program.h"
#include "bench/require.h"
#include "interpreter/interpreter.h"

namespace {

namespace bench = rastrel::bench;

constexpr int Turns = 31;
constexpr double TaskLimit = 1.15;
constexpr double RunLimit = 1.37;

std::string Page() {
  return "%!PS\n<< /PageSize [99 99] >> setpagedevice 9 9 50 50 rectfill showpage\n";
}

void CompareTask(const bench::DataRoot& root) {
  const std::string eps =
      "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 99 99\n%%EndComments\n"
      "9 9 50 50 rectfill\n%%EOF\n";
  const std::string file = root.File("mark.eps", eps);
  const std::vector<std::string> bare{"gs",
                                      "-q",
                                      "-dBATCH",
                                      "-dNOPAUSE",
                                      "-dSAFER",
                                      "-K1048576",
                                      "-sDEVICE=pdfwrite",
                                      "-sstdout=%stderr",
                                      "-sOutputFile=/dev/null",
                                      "-dEPSCrop",
                                      "-f",
                                      file};
  bench::CompareBest(
      "guarded start, a short task", {.count = Turns, .clock = bench::Clock::ProcessorOfChildren},
      [&] { bench::Require(bool(rastrel::interpreter::PdfFromEps(eps)), "no PDF was made"); },
      {{.name = "bare Ghostscript, the same arguments",
        .work = [&] { bench::Run(bare); },
        .limit = TaskLimit}});
}

void CompareRun(const bench::DataRoot& root) {
  const std::string rip = root.InstallChild("rip/corerast.exe");
  const std::string job = root.File("mark.ps", Page());
  const std::vector<std::string> bare{
      "gs",      "-q",        "-dBATCH",         "-dNOPAUSE",
      "-dSAFER", "-K1048576", "-sDEVICE=ppmraw", "-sOutputFile=/dev/null",
      job};
  bench::CompareBest(
      "guarded start, the shortest run",
      {.count = Turns,
       .clock = bench::Clock::ProcessorOfChildren,
       .before = [&] { std::filesystem::remove_all(root.Path("Queue/rip/System/c-out")); }},
      [&] {
        bench::Run({rip, job});
      },
      {{.name = "bare Ghostscript, the same device",
        .work = [&] { bench::Run(bare); },
        .limit = RunLimit}});
}

}  // namespace

int main() {
  const bench::DataRoot root;
  CompareTask(root);
  CompareRun(root);
}
