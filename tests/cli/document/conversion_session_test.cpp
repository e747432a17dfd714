#include "cli/document/conversion_session.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "cli/console/exit_status.h"
#include "cli/installation/installation.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/file.h"
#include "tests/support/library_fixture.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::cli {
namespace {

class ConversionSessionTest : public test::LibraryTest {
 protected:
  ConversionSessionTest() {
    EXPECT_TRUE(MakeSureOfDataRoot());
    const std::wstring& program = CExePaths::Instance().m_QueueExe;
    if (!os::Exists(program)) {
      EXPECT_TRUE(os::ReplaceFile(program, "", os::Access::Private));
    }
    m_Place.Write("art.ps", "%!PS\nshowpage\n");
    m_Invocation.command = CommandId::Convert;
    m_Invocation.operand = m_Place.Path("art.ps");
    m_Invocation.hasOperand = true;
    m_Invocation.options[OptionId::ResultOutput] = m_Place.Path("art.png");
  }

  test::ScratchDirectory m_Place;
  Invocation m_Invocation;
};

TEST_F(ConversionSessionTest, its_host_is_in_force_for_its_life_alone) {
  const host::Host* own = nullptr;
  {
    ConversionSession session(m_Invocation);
    own = &session.Host();
    EXPECT_EQ(&host::GetHost(), own);
    EXPECT_EQ(&host::GetHost().GetDialogViews(), &session.Views());
  }
  EXPECT_NE(&host::GetHost(), own);
}

TEST_F(ConversionSessionTest, its_host_goes_with_a_conversion_that_fails) {
  const host::Host* own = nullptr;
  EXPECT_THROW(
      {
        ConversionSession session(m_Invocation);
        own = &session.Host();
        throw CommandError(ExitStatus::JobFailed, "the conversion failed");
      },
      CommandError);
  ASSERT_NE(own, nullptr);
  EXPECT_NE(&host::GetHost(), own);
}

TEST_F(ConversionSessionTest, a_session_that_does_not_begin_leaves_the_host_as_it_was) {
  const host::Host* before = &host::GetHost();
  m_Invocation.operand = m_Place.Path("missing.ps");
  EXPECT_THROW(ConversionSession{m_Invocation}, CommandError);
  EXPECT_EQ(&host::GetHost(), before);
}

TEST_F(ConversionSessionTest, its_directory_goes_with_it) {
  { ConversionSession session(m_Invocation); }
  EXPECT_TRUE(std::filesystem::is_empty(JobsDirectory()));
}

}  // namespace
}  // namespace rastrel::cli
