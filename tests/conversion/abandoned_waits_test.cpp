// This system's waits abandon nothing; the supervisors' reaction to it is called by hand.

#include <gtest/gtest.h>

#include "rastrel/conversion/clq_ticket.h"
#include "rastrel/conversion/qrast.h"
#include "rastrel/conversion/queue_supervisor.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/wait.h"
#include "tests/conversion/queue_fixture.h"
#include "tests/support/private_member.h"

using PrintingThread::CBBasePrintingThread;
using PrintingThread::CCPHelper;
using PrintingThread::CLQThread;
using PrintingThread::CQRast;
using rastrel::test::Lines;

namespace rastrel::test {

struct SemaphoreAbandoned {
  using Type = void (*)(CBBasePrintingThread&);
  friend Type PrivateMember(SemaphoreAbandoned);
};
template struct Reveal<SemaphoreAbandoned, &printing::ChildSupervisor::OnAbortAbandoned>;
struct ProcessAbandoned {
  using Type = void (*)(CBBasePrintingThread&);
  friend Type PrivateMember(ProcessAbandoned);
};
template struct Reveal<ProcessAbandoned, &printing::ChildSupervisor::OnProcessAbandoned>;

namespace {

class AbandonedWait : public QueueTest {
 protected:
  ~AbandonedWait() override { ExpectNothingLeft(); }
};

TEST_F(AbandonedWait, on_the_queues_semaphore_is_logged) {
  CLQTicket ticket(L"");
  CLQThread supervisor({.ticket = &ticket, .semaphore = nullptr, .abort = nullptr, .giveUp = -1},
                       std::make_unique<CCPHelper>(L"none"), L"file");
  m_Mark = m_Library.LogMark();
  PrivateMember(SemaphoreAbandoned())(supervisor);
  EXPECT_EQ(Logged(), Lines{"[CLQ]: Abort semaphore abandoned!"});
}

TEST_F(AbandonedWait, on_the_queue_program_is_logged_and_its_end_is_taken) {
  Queue("exit 0\n");
  auto process = std::make_unique<CCPHelper>(CExePaths::Instance().m_QueueExe);
  CCPHelper& started = *process;
  ASSERT_TRUE(started.Start());
  const HANDLE ended[] = {started.m_hProcess};
  ASSERT_EQ(os::WaitForAny(ended), os::WaitSignaledBase);
  CLQTicket ticket(L"");
  CLQThread supervisor({.ticket = &ticket, .semaphore = nullptr, .abort = nullptr, .giveUp = -1},
                       std::move(process), L"file");
  m_Mark = m_Library.LogMark();
  PrivateMember(ProcessAbandoned())(supervisor);
  EXPECT_EQ(Logged(),
            (Lines{"[CLQ]: Wait abandoned on Q!", "Q exited with status 0|", "[CLQ]: Q exited"}));
  EXPECT_EQ(started.m_hProcess, INVALID_HANDLE_VALUE);
}

TEST_F(AbandonedWait, on_the_measuring_program_is_logged) {
  PrintingThread::QRastPageInfo info;
  CQRast supervisor(L"file", &info);
  m_Mark = m_Library.LogMark();
  PrivateMember(ProcessAbandoned())(supervisor);
  EXPECT_EQ(Logged(), Lines{"[QRast]: Wait abandoned on exe!"});
}

}  // namespace
}  // namespace rastrel::test
