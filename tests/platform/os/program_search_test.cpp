#include "rastrel/platform/os/program_search.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::os {
namespace {

TEST(FindProgram, the_first_directory_with_a_program_counts) {
  const test::ScratchDirectory directory;
  for (const char* const name : {"a/tool", "b/tool", "c/tool"}) {
    directory.Write(name, "#!/bin/sh\n");
    chmod(directory.Path(name).c_str(), 0755);
  }
  chmod(directory.Path("a/tool").c_str(), 0644);  // no program
  const test::EnvironmentGuard path("PATH", "/nowhere::" + directory.Path("a") + ":" +
                                                directory.Path("b") + ":" + directory.Path("c"));
  EXPECT_EQ(FindProgram("tool"), directory.Path("b") + "/tool");
  EXPECT_EQ(FindProgram("other"), "");
}

TEST(FindProgram, a_directory_that_is_no_full_path_is_passed_over) {
  const test::EnvironmentGuard path("PATH", "bin:.:./bin:");
  EXPECT_EQ(FindProgram("sh"), "");
}

TEST(FindProgram, a_directory_of_that_name_is_no_program) {
  const test::ScratchDirectory directory;
  directory.Write("tool/file", "");
  const test::EnvironmentGuard path("PATH", directory.Path());
  EXPECT_EQ(FindProgram("tool"), "");
}

TEST(FindFileOnPath, finds_a_file_that_is_no_program_and_no_directory) {
  const test::ScratchDirectory directory;
  directory.Write("a/tool.dll/file", "");
  directory.Write("b/tool.dll", "");
  chmod(directory.Path("b/tool.dll").c_str(), 0644);
  const test::EnvironmentGuard path("PATH",
                                    "relative:" + directory.Path("a") + ":" + directory.Path("b"));
  EXPECT_EQ(FindFileOnPath("tool.dll"), directory.Path("b/tool.dll"));
  EXPECT_EQ(FindFileOnPath("other.dll"), "");
}

}  // namespace
}  // namespace rastrel::os
