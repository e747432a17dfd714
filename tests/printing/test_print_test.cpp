#include "rastrel/printing/test_print.h"

#include <gtest/gtest.h>

#include "tests/support/print_fixture.h"

using rastrel::test::GoodRip;
using rastrel::test::Lines;

namespace {

class TestPage : public rastrel::test::PrintTest {
 protected:
  TestPage() { Root().Write("drive_c/tmp/testpage.ps", "%!PS\nshowpage\n"); }
  /// Runs TestPrint and returns its output on the standard error stream.
  bool PrintIt() {
    testing::internal::CaptureStderr();
    const bool started = TestPrint();
    m_Words = testing::internal::GetCapturedStderr();
    return started;
  }
  std::string m_Words;
};

TEST_F(TestPage, is_printed_by_both_children) {
  Rip("printf '%s' \"$5\" > \"$RASTREL_HOME/job.path\"\n" + std::string(GoodRip));
  EXPECT_TRUE(PrintIt());
  EXPECT_EQ(Root().Read("job.path"), "C:\\tmp\\testpage.ps");
  EXPECT_TRUE(Root().Has("engine.input"));
  EXPECT_FALSE(Root().Has("pages"));
  EXPECT_EQ(Tree("drive_c/tmp"), Lines{"testpage.ps"});
}

TEST_F(TestPage, writes_its_job_log_to_the_standard_error_stream) {
  EXPECT_TRUE(PrintIt());
  EXPECT_TRUE(m_Words.starts_with("START: Print Job Thread\r\n")) << m_Words;
  EXPECT_TRUE(m_Words.ends_with("Printing done\r\n(*v*)Processing Completed\r\n")) << m_Words;
}

TEST_F(TestPage, goes_to_its_printer_in_its_mode) {
  Rip("cp \"$RASTREL_HOME/drive_c/tmp/testpage.psp\" \"$RASTREL_HOME/prefix\"\n" +
      std::string(GoodRip));
  EXPECT_TRUE(PrintIt());
  const std::string prefix = Root().Read("prefix");
  for (const char* words : {"KVI Tiff Screen Preview", "TIFF", "tiff default.ps"})
    EXPECT_NE(prefix.find(words), std::string::npos) << words;
}

TEST_F(TestPage, that_fails_later_was_started_all_the_same) {
  Rip("exit 3\n");
  EXPECT_TRUE(PrintIt());
  EXPECT_NE(m_Words.find("Rip exited with status 3\r\n"), std::string::npos);
}

TEST_F(TestPage, without_a_rip_is_not_started) {
  std::filesystem::remove(Root().Path("Queue/rip/corerast.exe"));
  EXPECT_FALSE(PrintIt());
  EXPECT_EQ(m_Words, "START: Print Job Thread\r\n(*v*)RIP executable missing\r\n");
}

TEST_F(TestPage, takes_the_log_and_the_paths_down) {
  EXPECT_EQ(CExePaths::Instance().m_RipDir, m_Library.RipDirectory());
  EXPECT_TRUE(PrintIt());
  const rastrel::test::ScratchDirectory other;
  const rastrel::test::EnvironmentGuard home("RASTREL_HOME", other.Path());
  EXPECT_EQ(CExePaths::Instance().m_RipDir, other.Wide() + L"/Queue\\rip\\");
  CAppLog::Instance();
  EXPECT_TRUE(other.Has(rastrel::test::LibraryRoot::LogName()));
}

TEST_F(TestPage, takes_them_down_also_when_it_was_not_started) {
  std::filesystem::remove(Root().Path("Queue/rip/corerast.exe"));
  EXPECT_FALSE(PrintIt());
  const rastrel::test::ScratchDirectory other;
  const rastrel::test::EnvironmentGuard home("RASTREL_HOME", other.Path());
  EXPECT_EQ(CExePaths::Instance().m_RipDir, other.Wide() + L"/Queue\\rip\\");
}

}  // namespace
