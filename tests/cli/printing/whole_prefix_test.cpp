#include "cli/printing/whole_prefix.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>

#include "rastrel/platform/os/system_calls.h"
#include "tests/support/library_fixture.h"

namespace rastrel::cli {
namespace {

using test::LibraryTest;

class WholePrefixTest : public LibraryTest {
 protected:
  // Status of Generate while the disk takes so many bytes.
  template <typename Ticket>
  unsigned Generate(std::size_t room) {
    static std::size_t left;
    left = room;
    Ticket ticket;
    ticket.m_JobFile.Directory = m_Scratch.Wide() + L"\\";
    ticket.m_JobFile.FileName = L"job.ps";
    const os::SystemCallsGuard guard;
    os::Calls().write = [](int, const void*, std::size_t count) -> ssize_t {
      if (left < count) {
        errno = ENOSPC;
        return -1;
      }
      left -= count;
      return static_cast<ssize_t>(count);
    };
    const std::unique_ptr<PSPrefix> prefix(ticket.GetPrefix());
    return prefix->Generate();
  }
  test::ScratchDirectory m_Scratch;
};

TEST_F(WholePrefixTest, fails_on_a_disk_that_does_not_take_all_of_it) {
  EXPECT_EQ(Generate<PrintTicket>(1'000'000), 0U);
  EXPECT_EQ(Generate<PrintTicket>(10), 1U);
  EXPECT_EQ(Generate<PreviewTicket>(1'000'000), 0U);
  EXPECT_EQ(Generate<PreviewTicket>(10), 1U);
}

}  // namespace
}  // namespace rastrel::cli
