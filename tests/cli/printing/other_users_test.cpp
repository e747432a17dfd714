// Jobs and pages on a machine with other users: who may read the files of a print, and which
// programs it runs.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/cli/command_runner.h"
#include "tests/support/umask_guard.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* Page =
    "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 60 40\n%%EndComments\n"
    "<< /PageSize [60 40] >> setpagedevice\n"
    "[/Separation (Gold) /DeviceCMYK {0 0 1 0}] setcolorspace 1 setcolor 10 10 20 20 rectfill\n"
    "showpage\n%%EOF\n";

class OtherUsers : public ::testing::Test {
 protected:
  void WriteJob(unsigned mode) const {
    m_Command.Place().Write("job.ps", Page);
    fs::permissions(m_Command.Place().Path("job.ps"), fs::perms(mode));
  }
  static unsigned ModeOf(const std::string& path) {
    return static_cast<unsigned>(fs::symlink_status(path).permissions());
  }
  void ExpectPrivateRoot() const {
    EXPECT_EQ(ModeOf(m_Command.Root()), 0700U);
    for (const auto& entry : fs::recursive_directory_iterator(m_Command.Root())) {
      // A warm interpreter that starts meanwhile makes and renames its own.
      if (!fs::exists(fs::symlink_status(entry.path()))) continue;
      // A link has no mode of its own.
      if (entry.is_symlink()) continue;
      // Finished files are the job's, wherever they lie.
      if (entry.path().parent_path() == m_Command.Root() + "/output") continue;
      const bool runs = entry.is_directory() || entry.path().extension() == ".exe" ||
                        entry.path().filename() == "rastrel-warm";
      EXPECT_EQ(ModeOf(entry.path()), runs ? 0700U : 0600U) << entry.path();
    }
  }

  CommandRunner m_Command{CommandRunner::Children::Real};
};

TEST_F(OtherUsers, can_not_read_the_pages_and_the_output_of_a_private_job) {
  for (const unsigned mask : {022U, 0U}) {
    const UmaskGuard guard(mask);
    WriteJob(0600);
    for (const char* mode : {"TIFF/tiff default.ps", "CMYK/300 dpi.ps"}) {
      const CommandResult result = m_Command.Run({"print", "job.ps", "--spool", "--mode", mode,
                                                  "--output", m_Command.Place().Path("out")});
      ASSERT_EQ(result.status, 0) << result.error;
      EXPECT_EQ(ModeOf(result.LastLine()), 0600U);
    }
    ExpectPrivateRoot();
  }
}

TEST_F(OtherUsers, read_the_output_of_a_job_that_they_may_read) {
  const struct {
    unsigned job, mask, output;
  } cases[] = {{0644, 022, 0644}, {0644, 0, 0644},   {0664, 0, 0664},  {0400, 022, 0600},
               {0444, 0, 0644},   {0666, 027, 0640}, {0755, 022, 0644}};
  for (const auto& one : cases) {
    const UmaskGuard guard(one.mask);
    WriteJob(one.job);
    const CommandResult result =
        m_Command.Run({"print", "job.ps", "--output", m_Command.Place().Path("out")});
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(ModeOf(result.LastLine()), one.output) << std::oct << one.job << " " << one.mask;
    fs::remove(m_Command.Place().Path("job.ps"));
  }
}

TEST_F(OtherUsers, read_a_reprint_as_the_first_print) {
  const UmaskGuard guard(0);
  WriteJob(0640);
  ASSERT_EQ(m_Command.Run({"print", "job.ps", "--spool"}).status, 0);
  const CommandResult result = m_Command.Run({"reprint", "job"});
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(ModeOf(result.LastLine()), 0640U);
  ExpectPrivateRoot();
}

TEST_F(OtherUsers, can_not_read_the_preview_and_the_conversion_of_a_private_job) {
  const UmaskGuard guard(0);
  WriteJob(0600);
  const CommandResult preview = m_Command.Run({"preview", "job.ps", "-o", "out.png"});
  ASSERT_EQ(preview.status, 0) << preview.error;
  EXPECT_EQ(ModeOf(m_Command.Place().Path("out.png")), 0600U);
  const CommandResult queue = m_Command.Run({"queue", "job.ps", "--output", "results"});
  ASSERT_EQ(queue.status, 0) << queue.error;
  int results = 0;
  for (const auto& entry : fs::recursive_directory_iterator(m_Command.Place().Path("results"))) {
    EXPECT_EQ(ModeOf(entry.path()) & 077U, 0U) << entry.path();
    ++results;
  }
  EXPECT_GT(results, 0) << queue.output;
}

TEST_F(OtherUsers, that_may_change_a_program_or_setting_keep_everything_from_running) {
  WriteJob(0600);
  ASSERT_EQ(m_Command.Run({"doctor"}).status, 0);
  m_Command.WriteRip("touch \"$RASTREL_HOME/ran\"; exit 1\n");
  for (const char* name :
       {"Queue/rip/corerast.exe", "Queue/rip/coreodalis.exe", "devices.txt", "Queue/rip", ""}) {
    const std::string path = *name != '\0' ? m_Command.Root() + "/" + name : m_Command.Root();
    const unsigned before = ModeOf(path);
    fs::permissions(path, fs::perms(before | 0002U));
    const std::string complaint = "trust '" + path + "': every user may write to it";
    const CommandResult result = m_Command.Run({"print", "job.ps"});
    EXPECT_EQ(result.status, 5) << path;
    EXPECT_NE(result.error.find(complaint), std::string::npos) << result.error;
    EXPECT_FALSE(fs::exists(m_Command.Root() + "/ran")) << path;
    const CommandResult doctor = m_Command.Run({"doctor"});
    EXPECT_EQ(doctor.status, 5) << path;
    EXPECT_NE(doctor.output.find("WRONG  trust: " + complaint), std::string::npos) << doctor.output;
    fs::permissions(path, fs::perms(before));
  }
}

TEST_F(OtherUsers, that_may_look_into_the_data_root_are_a_note_of_the_doctor) {
  fs::create_directory(m_Command.Root());
  fs::permissions(m_Command.Root(), fs::perms(0755));
  const CommandResult doctor = m_Command.Run({"doctor"});
  EXPECT_NE(doctor.output.find("note   trust: "), std::string::npos) << doctor.output;
  EXPECT_NE(doctor.output.find("chmod 700 '" + m_Command.Root() + "'"), std::string::npos);
}

}  // namespace
}  // namespace rastrel::test
