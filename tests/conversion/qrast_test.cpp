#include "rastrel/conversion/qrast.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <functional>

#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/conversion/queue_fixture.h"
#include "tests/support/pipe_sizes.h"

namespace os = rastrel::os;
using PrintingThread::CQRast;
using PrintingThread::CQRastStderrParser;
using PrintingThread::QRastPageInfo;
using PrintingThread::RunQRast;
using rastrel::test::Hang;
using rastrel::test::Lines;

namespace {

class QRast : public rastrel::test::QueueTest {
 protected:
  ~QRast() override { ExpectNothingLeft(); }

  bool Run(const wchar_t* file = L"/jobs/sign.ps") {
    m_Mark = m_Library.LogMark();
    return RunQRast(file, &m_Info) != 0;
  }
  /// Hands lines to a parser that has no pipe.
  void Parse(const std::vector<std::wstring>& lines) {
    HANDLE pipe = INVALID_HANDLE_VALUE;
    CQRastStderrParser parser(&pipe, &m_Info);
    for (const std::wstring& line : lines) parser.ParseLine(line);
  }

  QRastPageInfo m_Info;
};

TEST_F(QRast, starts_with_nothing_known) {
  EXPECT_EQ(m_Info.name, L"");
  for (const std::int32_t number : {m_Info.bits, m_Info.npls, m_Info.xdpi, m_Info.ydpi, m_Info.mavl,
                                    m_Info.bmap[0], m_Info.bmap[3]})
    EXPECT_EQ(number, -1);
  for (const float number : {m_Info.bboxX, m_Info.bboxY, m_Info.bboxWidth, m_Info.bboxHeight})
    EXPECT_EQ(number, -1.0F);
}

TEST_F(QRast, takes_each_record) {
  Parse({L"QRAST:bmap 1 2 3 4", L"QRAST:mavl 7", L"QRAST:bbox 1.5 11 8.5 2.5", L"QRAST:ydpi 600",
         L"QRAST:xdpi 300", L"QRAST:npls 4", L"QRAST:bits 8", L"QRAST:name my page 1"});
  EXPECT_EQ(m_Info.name, L"my page 1");
  EXPECT_EQ(m_Info.bits, 8);
  EXPECT_EQ(m_Info.npls, 4);
  EXPECT_EQ(m_Info.xdpi, 300);
  EXPECT_EQ(m_Info.ydpi, 600);
  EXPECT_EQ(m_Info.mavl, 7);
  EXPECT_EQ(m_Info.bmap, (std::array<std::int32_t, 4>{1, 2, 3, 4}));
  EXPECT_EQ(m_Info.bboxX, 1.5F);
  EXPECT_EQ(m_Info.bboxHeight, 11.0F) << "the second number is the height";
  EXPECT_EQ(m_Info.bboxWidth, 8.5F);
  EXPECT_EQ(m_Info.bboxY, 2.5F) << "the fourth is the position";
}

TEST_F(QRast, stores_nothing_of_a_box_that_is_not_whole) {
  Parse({L"QRAST:bbox 1 2 3", L"QRAST:bmap 1 2 3 x"});
  EXPECT_EQ(m_Info.bboxX, -1.0F);
  EXPECT_EQ(m_Info.bboxHeight, -1.0F);
  EXPECT_EQ(m_Info.bmap[0], -1);
}

TEST_F(QRast, keeps_an_earlier_number_over_one_that_is_none) {
  Parse({L"QRAST:xdpi 300", L"QRAST:xdpi abc"});
  EXPECT_EQ(m_Info.xdpi, 300);
  Parse({L"QRAST:xdpi 0x258"});
  EXPECT_EQ(m_Info.xdpi, 600) << "a later record takes the place of an earlier one";
}

TEST_F(QRast, takes_an_empty_name) {
  Parse({L"QRAST:name first", L"QRAST:name "});
  EXPECT_EQ(m_Info.name, L"");
}

TEST_F(QRast, passes_over_lines_that_are_no_record) {
  Parse({L"xdpi 300", L" QRAST:xdpi 300", L"qrast:xdpi 300", L"QRAST: xdpi 300", L"QRAST:xdpi",
         L"QRAST:xdpi300", L"QRAST:Xdpi 300", L"QRAST:", L"QRAST", L"QRAST:scale 1"});
  EXPECT_EQ(m_Info.xdpi, -1);
}

TEST_F(QRast, logs_every_line_record_or_not) {
  m_Mark = m_Library.LogMark();
  Parse({L"", L"hello", L"QRAST:xdpi 300"});
  EXPECT_EQ(Logged(), (Lines{"hello", "QRAST:xdpi 300"}));
}

TEST_F(QRast, of_a_null_path_is_0_at_once) {
  Queue("touch \"$RASTREL_HOME/started\"\n");
  EXPECT_FALSE(Run(nullptr));
  EXPECT_FALSE(Root().Has("started"));
  EXPECT_EQ(Logged(), Lines());
}

TEST_F(QRast, without_the_program_is_0_at_once_and_makes_no_pipe) {
  const os::SystemCallsGuard guard;
  os::Calls().pipe2 = [](int*, int) {
    ADD_FAILURE() << "a pipe was made";
    return -1;
  };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Logged(), Lines{"[QRast] qrast executable missing."});
}

TEST_F(QRast, hands_over_two_options_and_the_path_and_redirects_only_the_error_stream) {
  QueueChild("describe");
  Run(L"/jobs/my sign.ps");
  const std::string told = Root().Read("JobSpool.exe.told");
  EXPECT_NE(told.find("argument -q\nargument -ps\nargument /jobs/my sign.ps\n"), told.npos) << told;
  for (const int stream : {0, 1}) {
    const std::string own =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(stream));
    EXPECT_NE(told.find(std::to_string(stream) + " " + own + "\n"), told.npos) << told;
  }
  EXPECT_NE(told.find("\n2 pipe:"), told.npos) << told;
  EXPECT_NE(told.find("other descriptors 0"), told.npos) << told;
}

TEST_F(QRast, has_one_pipe_of_16384_bytes) {
  const os::SystemCallsGuard guard;
  Queue("exit 0\n");
  rastrel::test::RecordPipeSizes();
  EXPECT_TRUE(Run());
  EXPECT_EQ(rastrel::test::PipeSizes(), std::vector<int>{16384});
}

TEST_F(QRast, of_a_child_that_ends_with_1_has_its_box) {
  Queue("echo QRAST:bbox 0 792 612 0 >&2\nexit 1\n");
  EXPECT_TRUE(Run());
  EXPECT_EQ(m_Info.bboxX, 0.0F);
  EXPECT_EQ(m_Info.bboxHeight, 792.0F);
  EXPECT_EQ(m_Info.bboxWidth, 612.0F);
  EXPECT_EQ(m_Info.bboxY, 0.0F);
  EXPECT_TRUE(HasLogged("QRAST:bbox 0 792 612 0"));
  EXPECT_TRUE(HasLogged("[QRast]: Exe exited with status 1|"));
  EXPECT_EQ(Logged().size(), 3U) << "and \"Exe exited\"; the reader's line stands anywhere";
  EXPECT_TRUE(HasLogged("[QRast]: Exe exited"));
}

TEST_F(QRast, of_a_child_that_ends_with_2_failed_but_keeps_its_reports) {
  Queue("printf 'QRAST:xdpi 300\\r\\nQRAST:name A\\n' >&2\nexit 2\n");
  EXPECT_FALSE(Run());
  EXPECT_EQ(m_Info.xdpi, 300);
  EXPECT_EQ(m_Info.name, L"A");
  EXPECT_TRUE(HasLogged("[QRast]: Exe exited with status 2|"));
}

TEST_F(QRast, of_a_silent_child_is_a_success_without_a_box) {
  Queue("exit 0\n");
  EXPECT_TRUE(Run());
  EXPECT_EQ(m_Info.bboxX, -1.0F);
}

TEST_F(QRast, of_a_child_that_a_signal_ends_failed) {
  Queue("kill -SEGV $$\n");
  EXPECT_FALSE(Run());
  EXPECT_TRUE(HasLogged("[QRast]: Exe exited with status " + std::to_string(128 + SIGSEGV) + "|"));
}

TEST_F(QRast, reads_all_of_a_child_that_floods) {
  Queue(
      "i=0; while [ $i -lt 20000 ]; do echo \"line $i\"; i=$((i+1)); done >&2\n"
      "echo QRAST:xdpi 72 >&2\n");
  EXPECT_TRUE(Run());
  EXPECT_EQ(m_Info.xdpi, 72);
}

TEST_F(QRast, stopped_ends_a_child_that_hangs_and_failed) {
  Queue(Hang);
  CSemaphore stop(0, 1);
  std::thread person([&stop] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    stop.Unlock();
  });
  EXPECT_EQ(RunQRast(L"/jobs/sign.ps", &m_Info, &stop), 0);
  person.join();
}

// Failing system calls, and the log of each.

TEST_F(QRast, without_a_pipe_or_its_duplicate_says_so) {
  Queue("touch \"$RASTREL_HOME/started\"\n");
  const os::SystemCallsGuard guard;
  const os::SystemCalls machine = os::Calls();
  os::Calls().pipe2 = [](int*, int) { return errno = EMFILE, -1; };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Logged(), Lines{"[QRast]: Couldn't create pipes."});
  os::Calls() = machine;
  os::Calls().duplicate = [](int, int) { return errno = EMFILE, -1; };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Logged(), Lines{"[QRast]: Couldn't create pipes."});
  EXPECT_FALSE(Root().Has("started"));
}

TEST_F(QRast, that_does_not_start_says_so_twice) {
  Root().Write(QueueProgram, "#!/nowhere/sh\n");
  MakeExecutable(QueueProgram);
  EXPECT_FALSE(Run());
  EXPECT_TRUE(HasLogged("[QRast]: Didn't start the executable"));
  EXPECT_TRUE(HasLogged("[QRast]: Couldn't start executable"));
}

TEST_F(QRast, without_a_thread_for_the_parser_ends_the_child) {
  Queue(Hang);
  const os::SystemCallsGuard guard;
  // The first thread is the child's reaper's.
  static int threads;
  static auto* const create = os::Calls().thread_create;
  threads = 0;
  os::Calls().thread_create = [](pthread_t* thread, const pthread_attr_t* attributes,
                                 void* (*body)(void*), void* argument) {
    return ++threads == 2 ? EAGAIN : create(thread, attributes, body, argument);
  };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Logged(), Lines{"[QRast]: Couldn't create pipe parser."});
}

TEST_F(QRast, that_can_not_wait_ends_the_child_and_takes_it_for_a_success) {
  Queue(Hang);
  const os::SystemCallsGuard guard;
  rastrel::test::FailWaitsForChildren();
  EXPECT_TRUE(Run());
  EXPECT_EQ(Logged(), Lines{"[QRast]: WaitForMultipleObjects failed. Error: 12|"});
}

TEST_F(QRast, that_can_not_end_the_child_either_failed) {
  Queue("sleep 0.3\n");
  const os::SystemCallsGuard guard;
  rastrel::test::FailWaitsForChildren();
  os::Calls().pidfd_send_signal = [](int, int, siginfo_t*, unsigned) { return errno = EPERM, -1; };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Logged(), (Lines{"[QRast]: WaitForMultipleObjects failed. Error: 12|",
                             "[QRast]: Couldn't terminate exe: 1|"}));
  // The child is left to its end.
  rastrel::test::AwaitLeftChildren();
}

TEST_F(QRast, that_can_not_ask_for_the_exit_status_failed) {
  Queue("echo QRAST:xdpi 72 >&2\n");
  {
    const os::SystemCallsGuard guard;
    os::Calls().waitid = [](idtype_t, id_t, siginfo_t*, int) { return errno = ECHILD, -1; };
    EXPECT_FALSE(Run());
  }
  EXPECT_TRUE(HasLogged("[QRast]: GetExitCodeProcess failed on exe: 10|"));
  EXPECT_TRUE(HasLogged("[QRast]: Exe exited"));
  EXPECT_EQ(m_Info.xdpi, 72);
  rastrel::test::AwaitLeftChildren();
}

}  // namespace
