// A data root on a disk that is full.

#include <gtest/gtest.h>

#include <cerrno>

#include "cli/installation/installation.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::cli {
namespace {

using test::EnvironmentGuard;
using test::ScratchDirectory;

class FullDisk : public ::testing::Test {
 protected:
  FullDisk() {
    m_Shipped.Write("share/rastrel/rip/System/pmodes/TIFF/tiff default.ps", "mode");
    m_Shipped.Write("share/rastrel/devices.txt", "devices");
    m_Shipped.Write("libexec/rastrel/corerast.exe", "rip");
    os::Calls().copy_range = [](int, off64_t*, int, off64_t*, std::size_t, unsigned) -> ssize_t {
      errno = ENOSPC;
      return -1;
    };
    os::Calls().write = [](int, const void*, std::size_t) -> ssize_t {
      errno = ENOSPC;
      return -1;
    };
  }
  ScratchDirectory m_Scratch;
  ScratchDirectory m_Shipped;
  EnvironmentGuard m_Home{"RASTREL_HOME", m_Scratch.Path("root")};
  EnvironmentGuard m_Resources{"RASTREL_RESOURCES", m_Shipped.Path()};
  os::SystemCallsGuard m_Calls;
};

TEST_F(FullDisk, is_the_reason_that_nothing_can_be_printed) {
  const auto root = MakeSureOfDataRoot();
  ASSERT_FALSE(root);
  const std::string message = Describe(root.Error());
  EXPECT_TRUE(message.starts_with("the data root can't be laid out: ")) << message;
  EXPECT_NE(message.find(m_Scratch.Path("root/")), std::string::npos) << message;
  EXPECT_NE(message.find("No space left on device"), std::string::npos) << message;
  const auto layout = CheckLayout();
  ASSERT_FALSE(layout);
  EXPECT_EQ(Describe(layout.Error()), message);
}

}  // namespace
}  // namespace rastrel::cli
