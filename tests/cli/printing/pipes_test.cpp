// Jobs that come on standard input, and results that go to standard output.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>

#include "rastrel/platform/os/file_descriptor.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

constexpr const char* OnePage =
    "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 60 40\n%%EndComments\n"
    "<< /PageSize [60 40] >> setpagedevice\n1 0 0 setrgbcolor 10 10 20 20 rectfill showpage\n"
    "%%EOF\n";
constexpr const char* Notes = RASTREL_SOURCE_DIR "/examples/job-notes.xml";

class Pipes : public ::testing::Test {
 protected:
  Pipes() { m_Command.Place().Write("job.ps", OnePage); }
  void ExpectNothingLeft() const { EXPECT_EQ(m_Command.NamesIn("jobs"), Names()); }
  void ExpectNoPath(const CommandResult& result) const {
    const std::string jobs = m_Command.Root() + "/jobs";
    EXPECT_EQ((result.output + result.error).find(jobs), std::string::npos)
        << result.output << result.error;
  }

  CommandRunner m_Command{CommandRunner::Children::Real};
};

TEST_F(Pipes, print_takes_a_job_from_standard_input_and_names_it_so) {
  m_Command.SetInput(OnePage);
  const CommandResult result = m_Command.Run({"print", "-"});
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(fs::path(result.LastLine()).filename(), "standard input-1.tif");
  ExpectNoPath(result);
  ExpectNothingLeft();
}

TEST_F(Pipes, print_names_such_a_job_by_its_title) {
  m_Command.SetInput(OnePage);
  const CommandResult result = m_Command.Run({"print", "-", "--title", "shop 1.5"});
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(fs::path(result.LastLine()).filename(), "shop 1.5-1.tif");
}

TEST_F(Pipes, a_title_without_standard_input_and_a_second_one_are_wrong_use) {
  EXPECT_EQ(m_Command.Run({"print", "job.ps", "--title", "x"}).status, 2);
  m_Command.SetInput(OnePage);
  const CommandResult result = m_Command.Run({"print", "-", "-"});
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.error.find("standard input can be read only once"), std::string::npos);
}

TEST_F(Pipes, a_text_that_is_no_job_is_refused_by_its_name) {
  for (const char* bytes : {"", "hello\n"}) {
    m_Command.SetInput(bytes);
    for (const char* command : {"print", "pagesize", "queue", "notes", "sheet"}) {
      const CommandResult result = m_Command.Run({command, "-"});
      EXPECT_EQ(result.status, 3) << command << " " << result.error;
      EXPECT_NE(result.error.find("standard input"), std::string::npos) << result.error;
      ExpectNoPath(result);
      ExpectNothingLeft();
    }
  }
}

TEST_F(Pipes, readers_say_the_same_of_standard_input_as_of_the_file) {
  const auto read = [&](const Names& words, const std::string& file) {
    Names arguments = words;
    arguments.push_back(file);
    const CommandResult result = m_Command.Run(arguments);
    EXPECT_EQ(result.status, 0) << result.error;
    std::string text = result.output;
    for (std::size_t at = 0; file != "-" && (at = text.find(file)) != text.npos;)
      text.replace(at, file.size(), "standard input");
    return text;
  };
  m_Command.SetInput(OnePage);
  EXPECT_EQ(read({"inspect"}, "-"), read({"inspect"}, "job.ps"));
  EXPECT_EQ(read({"pagesize"}, "-"), read({"pagesize"}, "job.ps"));
  m_Command.SetInput(m_Command.Place().Read(Notes));
  EXPECT_EQ(read({"notes"}, "-"), read({"notes"}, Notes));
  const std::string sheet = RASTREL_SOURCE_DIR "/examples/price-list.fods";
  m_Command.SetInput(m_Command.Place().Read(sheet));
  EXPECT_EQ(read({"sheet"}, "-"), read({"sheet"}, sheet));
  ExpectNothingLeft();
}

TEST_F(Pipes, queue_converts_standard_input) {
  m_Command.SetInput(OnePage);
  const CommandResult result = m_Command.Run({"queue", "-", "--output", "made"});
  ASSERT_EQ(result.status, 0) << result.error;
  for (const std::string& line : result.Lines())
    EXPECT_TRUE(fs::exists(m_Command.Place().Path(line))) << line;
}

TEST_F(Pipes, print_writes_its_one_file_to_standard_output_and_no_message) {
  m_Command.SetInput(OnePage);
  const CommandResult result = m_Command.Run({"print", "-", "--output", "-"});
  ASSERT_EQ(result.status, 0) << result.error;
  ASSERT_EQ(m_Command.Run({"print", "job.ps", "--output", "out"}).status, 0);
  EXPECT_EQ(result.output.substr(0, 4), std::string("II*\0", 4));
  EXPECT_EQ(result.output.size(), fs::file_size(m_Command.Place().Path("out/job-1.tif")));
  ExpectNoPath(result);
  ExpectNothingLeft();
}

TEST_F(Pipes, standard_output_takes_one_file_alone) {
  m_Command.SetInput(std::string(OnePage) + OnePage);
  const CommandResult two = m_Command.Run({"print", "-", "--copies", "2", "--output", "-"});
  EXPECT_EQ(two.status, 1) << two.error;
  EXPECT_NE(two.error.find("files, and standard output takes one"), std::string::npos) << two.error;
  EXPECT_EQ(two.output, "");
  EXPECT_EQ(m_Command.Run({"print", "job.ps", "job.ps", "--output", "-"}).status, 2);
  EXPECT_EQ(m_Command.Run({"queue", "job.ps", "--output", "-"}).status, 2);
}

TEST_F(Pipes, preview_writes_a_png_picture_to_standard_output) {
  m_Command.SetInput(OnePage);
  const CommandResult result = m_Command.Run({"preview", "-", "-o", "-"});
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.output.substr(0, 8), "\x89PNG\r\n\x1A\n");
  EXPECT_TRUE(result.output.ends_with(std::string("IEND\xAE\x42\x60\x82")));
  ExpectNothingLeft();
}

TEST_F(Pipes, prefix_writes_its_bytes_to_standard_output) {
  const CommandResult result = m_Command.Run({"prefix", "job.ps", "-o", "-"});
  ASSERT_EQ(result.status, 0) << result.error;
  ASSERT_EQ(m_Command.Run({"prefix", "job.ps", "-o", "prefix.psp"}).status, 0);
  EXPECT_EQ(result.output.size(), m_Command.Place().Read("prefix.psp").size());
  EXPECT_TRUE(result.output.ends_with('\x04'));
}

TEST_F(Pipes, header_writes_a_copy_with_its_header_to_standard_output) {
  m_Command.SetInput(OnePage);
  const CommandResult result = m_Command.Run({"header", "-", "--dpi", "150", "--output", "-"});
  ASSERT_EQ(result.status, 0) << result.error;
  ASSERT_EQ(m_Command.Run({"header", "job.ps", "--dpi", "150", "--output", "copy.ps"}).status, 0);
  EXPECT_EQ(result.output, m_Command.Place().Read("copy.ps"));
  EXPECT_TRUE(result.output.ends_with(OnePage));
}

TEST_F(Pipes, a_terminal_gets_no_picture) {
  const os::FileDescriptor terminal(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  ASSERT_EQ(::grantpt(terminal.Get()), 0);
  ASSERT_EQ(::unlockpt(terminal.Get()), 0);
  const os::FileDescriptor end(::open(::ptsname(terminal.Get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
  m_Command.SetOutput(end.Get());
  for (const char* command : {"print", "preview", "prefix"}) {
    const CommandResult result = m_Command.Run({command, "job.ps", "--output", "-"});
    EXPECT_EQ(result.status, 2) << command;
    EXPECT_NE(result.error.find("standard output is a terminal"), std::string::npos)
        << result.error;
  }
}

TEST_F(Pipes, a_reader_that_is_gone_ends_the_command_without_a_failure) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  ::close(ends[0]);
  const os::FileDescriptor writing(ends[1]);
  m_Command.SetOutput(writing.Get());
  for (const char* command : {"print", "preview", "prefix"}) {
    const CommandResult result = m_Command.Run({command, "job.ps", "--output", "-"});
    EXPECT_EQ(result.status, 0) << command << result.error;
  }
  ExpectNothingLeft();
}

}  // namespace
}  // namespace rastrel::test
