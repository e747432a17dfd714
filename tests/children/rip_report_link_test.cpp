// A run that captures cut paths gives the prolog a second way to its error stream. Whoever opens
// that can read the reports, and the secret word in them, so it is gone before a job begins.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "rastrel/prefix/cutter.h"
#include "tests/children/rip_effects.h"

namespace rastrel::corerast::testing {
namespace {

// Puts a shell script in the interpreter's place. It is given the descriptors of one: 4 is the
// setup, 6 the job, 10 the directory with the link.
void WriteInterpreter(RipFixture& bench, const std::string& script) {
  const std::string path = bench.File("bin/gs", "#!/bin/sh\n" + script);
  chmod(path.c_str(), 0755);
  bench.Set("PATH", std::filesystem::path(path).parent_path().string() + ":/usr/bin:/bin");
}

constexpr const char* ReadSetup =
    "while read -r line; do case $line in\n"
    "*rip.word*) word=${line#*(}; word=${word%%)*} ;;\n"
    "*rip.errorfile*) file=${line#*(}; file=${file%%)*} ;;\n"
    "esac; done <&4\n";

TEST(ReportLink, is_gone_before_the_job_comes) {
  REQUIRE_GHOSTSCRIPT();
  RipFixture bench;
  WriteInterpreter(bench,
                   ReadSetup + std::string("[ -h \"$file\" ] && echo 'Error: there is one' >&2\n"
                                           "echo \"$word PROLOG \" >&2\n"
                                           "read -r line <&6\n"
                                           "[ -h \"$file\" ] && echo 'still there' >&2\n"
                                           "set -- /dev/fd/10/*\n"
                                           "echo \"$line ${1##*/}\" >&2\n"
                                           "exit 1\n"));
  const ProgramRun run = bench.Run({PrefixOf(bench, prefix::CutterSection(RedCut())),
                                    bench.File("job.ps", "%!PS first line\nshowpage\n")});
  EXPECT_NE(run.reports.find("there is one"), std::string::npos) << run.reports;
  EXPECT_EQ(run.reports.find("still there"), std::string::npos) << run.reports;
  EXPECT_NE(run.reports.find("%!PS first line *"), std::string::npos) << run.reports;
}

TEST(ReportLink, is_none_without_a_cut_color) {
  REQUIRE_GHOSTSCRIPT();
  RipFixture bench;
  WriteInterpreter(bench, ReadSetup + std::string("read -r line <&6\n"
                                                  "echo \"Error: $file $line\" >&2\nexit 1\n"));
  const ProgramRun run =
      bench.Run({bench.Prefix(), bench.File("job.ps", "%!PS first line\nshowpage\n")});
  EXPECT_NE(run.reports.find("%stderr %!PS first line"), std::string::npos) << run.reports;
}

}  // namespace
}  // namespace rastrel::corerast::testing
