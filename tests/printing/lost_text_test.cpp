// A child that writes more than there is memory for: its job fails, and the host lives.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/wait.h"
#include "rastrel/printing/pipe_reader.h"
#include "rastrel/printing/stderr_parser.h"
#include "tests/support/allocation_limit.h"
#include "tests/support/print_fixture.h"
#include "tests/support/wait_until.h"

namespace os = rastrel::os;
using rastrel::test::AllocationLimit;
using rastrel::test::HasChildren;
using rastrel::test::Lines;

namespace {

constexpr std::size_t Memory = std::size_t{1} << 20;

class LostText : public rastrel::test::PrintTest {
 protected:
  // Long lines: a line is kept until it ends.
  static constexpr const char* Flood = "yes \"$(printf '%1000s' x | tr ' ' x)\" | tr -d '\\n'";
};

TEST_F(LostText, of_a_rip_that_floods_its_output_ends_the_rip_and_fails_the_job) {
  Rip("exec yes begin\n");
  m_Mark = m_Library.LogMark();
  {
    const AllocationLimit limit(Memory);
    ASSERT_TRUE(m_Ticket.PrintJob());
    ASSERT_TRUE(m_Ticket.EndPrint());
  }
  EXPECT_TRUE(HasLogged("[Print] Low on resources"));
  EXPECT_EQ(m_Ticket.m_Told.Stages(), "started, ripping, ripped, completed");
  EXPECT_EQ(Errors(), Lines{"system: low resources"});
  EXPECT_EQ(End(), "holding: low resources");
  EXPECT_FALSE(HasChildren());
}

TEST_F(LostText, of_an_engine_that_floods_its_messages_ends_the_engine_and_fails_the_job) {
  GivePages();
  Engine(std::string(Flood) + " >&2\n");
  m_Mark = m_Library.LogMark();
  {
    // A line takes 4 MiB before it is cut.
    const AllocationLimit limit(Memory);
    ASSERT_TRUE(m_Ticket.PrintJob());
    ASSERT_TRUE(m_Ticket.EndPrint());
  }
  EXPECT_TRUE(HasLogged("[Print] Low on resources"));
  EXPECT_EQ(Errors(), Lines{"system: low resources"});
  EXPECT_EQ(End(), "holding: low resources");
  EXPECT_FALSE(HasChildren());
}

TEST_F(LostText, of_a_reader_is_dropped_and_ends_the_reading) {
  HANDLE read = INVALID_HANDLE_VALUE;
  HANDLE write = INVALID_HANDLE_VALUE;
  ASSERT_TRUE(os::CreatePipe(read, write, 0));
  CRipOutReader reader(&read);
  ASSERT_TRUE(reader.Start());
  EXPECT_FALSE(reader.HasLost());
  const std::string piece(1000, 'x');
  {
    const AllocationLimit limit(Memory);
    // The write end stays open: the reader does not wait for its end. It is never written to when
    // it is full, since nobody may read it any more.
    ASSERT_EQ(::fcntl(write, F_SETFL, O_NONBLOCK), 0);
    EXPECT_TRUE(rastrel::test::WaitUntil([&] {
      while (!reader.HasLost() && ::write(write, piece.data(), piece.size()) > 0) {
      }
      return reader.HasLost();
    }));
    reader.Wait();
  }
  os::CloseHandle(write);
  EXPECT_TRUE(reader.HasLost());
  EXPECT_EQ(reader.m_Text, L"");
  const HANDLE loss[] = {reader.GetLossHandle()};
  EXPECT_EQ(os::WaitForAny(loss), os::WaitSignaledBase);
  os::CloseHandle(read);
}

}  // namespace
