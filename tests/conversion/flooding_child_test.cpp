// A queue program that writes more than there is memory for.

#include <gtest/gtest.h>

#include "rastrel/conversion/clq_ticket.h"
#include "rastrel/conversion/qrast.h"
#include "rastrel/job/exe_paths.h"
#include "tests/conversion/queue_fixture.h"
#include "tests/support/allocation_limit.h"

using rastrel::test::AllocationLimit;

namespace {

constexpr std::size_t Memory = std::size_t{1} << 20;

class FloodingChild : public rastrel::test::QueueTest {
 protected:
  ~FloodingChild() override { ExpectNothingLeft(); }
  void Convert() {
    CLQTicket ticket(CExePaths::Instance().m_QueueExe);
    const AllocationLimit limit(Memory);
    ASSERT_TRUE(ticket.Start(Root().Wide("job/sign.ps").c_str()));
    ticket.Join();
  }
};

// Nobody reads its standard output.
TEST_F(FloodingChild, on_its_standard_output_takes_no_memory_and_ends_by_itself) {
  Queue("yes | head -c 20000000\nexit 3\n");
  Convert();
  EXPECT_TRUE(HasLogged("Q exited with status 3|"));
  EXPECT_FALSE(HasLogged("[Print] Low on resources"));
}

TEST_F(FloodingChild, on_its_standard_error_is_ended) {
  Queue("yes | tr -d '\\n' >&2\n");
  Convert();
  EXPECT_TRUE(HasLogged("[Print] Low on resources"));
}

TEST_F(FloodingChild, that_measures_is_ended_and_has_measured_nothing) {
  Queue("yes | tr -d '\\n' >&2\n");
  PrintingThread::QRastPageInfo info;
  const AllocationLimit limit(Memory);
  EXPECT_EQ(PrintingThread::RunQRast(Root().Wide("job/sign.ps").c_str(), &info), 0);
}

}  // namespace
