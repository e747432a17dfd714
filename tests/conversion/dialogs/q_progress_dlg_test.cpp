// The progress dialog with real children and scripted views.

#include "rastrel/conversion/dialogs/q_progress_dlg.h"

#include <gtest/gtest.h>

#include <csignal>

#include "rastrel/conversion/queue_supervisor.h"
#include "rastrel/platform/standalone/headless_views.h"
#include "tests/conversion/queue_fixture.h"
#include "tests/support/scripted_views.h"

using namespace rastrel::host;
using PrintingThread::CLQThread;
using rastrel::test::HasChildren;
using rastrel::test::Lines;
using rastrel::test::ScriptedHost;

namespace {

constexpr const char* Begun = "text 2021 Converting";

class ProgressDialog : public rastrel::test::QueueTest {
 protected:
  ~ProgressDialog() override { ExpectNothingLeft(); }

  /// Runs the dialog on the job file.
  int Run() {
    m_Mark = m_Library.LogMark();
    CQProgressDlg dialog(Root().Wide("job/sign.ps").c_str(), nullptr);
    const int result = dialog.DoModal();
    m_Cancelled = dialog.IsCancelled();
    EXPECT_FALSE(HasChildren()) << "the job is over when the dialog is";
    return result;
  }
  [[nodiscard]] Lines& Told() { return m_Host.m_Views.m_Told; }
  void CancelAt(const char* line, int control = CQProgressDlg::CancelButton) {
    m_Host.m_Views.PressAt(line, control);
  }

  ScriptedHost m_Host;
  bool m_Cancelled = false;
};

TEST_F(ProgressDialog, shows_the_states_and_percentages_and_ends_well) {
  Queue(
      "say() { echo \"$1\" >&2; sleep 0.03; }\n"
      "say 'INFO: INITIALISING'; say 'INFO: INTERPRETING'; say 'PROGRESS: 40%'\n"
      "say 'INFO: CONVERTING'; say 'PROGRESS: 100%'; say 'INFO: FLUSHING'\n"
      "say 'INFO: CLQ_success'\n");
  EXPECT_EQ(Run(), OkCommand);
  EXPECT_FALSE(m_Cancelled);
  EXPECT_EQ(Told(), (Lines{"make 1003", "range 2022 0 100", "position 2022 0", "text 0 Processing",
                           "text 2005 Cancel", "run", "text 2021 Initializing",
                           "text 2021 Interpreting", "position 2022 40", "text 2021 Converting",
                           "position 2022 100", "text 2021 Flushing", "text 2021 Done", "end"}));
}

TEST_F(ProgressDialog, ends_with_cancel_and_no_text_on_a_failure) {
  Queue("echo 'INFO: CLQ_failure' >&2\n");
  EXPECT_EQ(Run(), CancelCommand);
  EXPECT_FALSE(m_Cancelled) << "nobody cancelled";
  EXPECT_EQ(Told().back(), "end");
  EXPECT_EQ(Told()[Told().size() - 2], "run") << "no text";
}

TEST_F(ProgressDialog, passes_over_states_that_it_does_not_show) {
  Queue(
      "for state in READY PRINTING SPOOLING VALID_RECOVERY UNDEFINED nothing; do\n"
      "  echo \"INFO: $state\" >&2; sleep 0.01\ndone\necho 'INFO: CLQ_success' >&2\n");
  EXPECT_EQ(Run(), OkCommand);
  EXPECT_EQ(Told()[Told().size() - 2], "text 2021 Done");
  EXPECT_EQ(Told()[Told().size() - 3], "run");
}

TEST_F(ProgressDialog, hears_a_child_that_reports_before_the_dialog_knows_that_it_started) {
  Queue("echo 'INFO: CLQ_success' >&2\n");
  for (int round = 0; round < 20; ++round) EXPECT_EQ(Run(), OkCommand);
}

TEST_F(ProgressDialog, without_the_program_says_so_and_stays_up_until_it_is_cancelled) {
  std::filesystem::remove(Root().Path(QueueProgram));
  int turns = 0;
  m_Host.m_Views.m_OnTurn = [&](DialogLogic& dialog) {
    EXPECT_FALSE(dialog.MayEndByItself());
    if (++turns == 10) dialog.Command(CQProgressDlg::CancelButton);
  };
  EXPECT_EQ(Run(), CancelCommand);
  EXPECT_TRUE(m_Cancelled);
  EXPECT_EQ(turns, 10);
  EXPECT_EQ(Told().front(), "message Separation: RIP executable missing");
}

TEST_F(ProgressDialog, of_a_missing_file_stays_up_until_it_is_cancelled) {
  Queue("echo 'INFO: CLQ_success' >&2\n");
  std::filesystem::remove(Root().Path("job/sign.ps"));
  CancelAt("run");
  EXPECT_EQ(Run(), CancelCommand);
}

TEST_F(ProgressDialog, stays_up_after_a_child_that_ended_without_a_word) {
  Queue("exit 0\n");
  int turns = 0;
  m_Host.m_Views.m_OnTurn = [&](DialogLogic& dialog) {
    if (!dialog.MayEndByItself() && ++turns == 10) dialog.Command(CQProgressDlg::CancelButton);
  };
  EXPECT_EQ(Run(), CancelCommand);
  EXPECT_TRUE(m_Cancelled);
  EXPECT_EQ(turns, 10);
}

TEST_F(ProgressDialog, stays_up_if_the_job_can_not_be_run) {
  Root().Write(QueueProgram, "#!/nowhere/sh\n");
  MakeExecutable(QueueProgram);
  int turns = 0;
  m_Host.m_Views.m_OnTurn = [&](DialogLogic& dialog) {
    if (!dialog.MayEndByItself() && ++turns == 5) dialog.Command(CQProgressDlg::CancelButton);
  };
  EXPECT_EQ(Run(), CancelCommand);
  EXPECT_TRUE(HasLogged("[CLQ]: Couldn't start rip"));
}

TEST_F(ProgressDialog, cancelled_ends_a_child_that_hangs) {
  Queue("echo 'INFO: CONVERTING' >&2\nexec sleep 1000\n");
  CancelAt(Begun);
  EXPECT_EQ(Run(), CancelCommand);
  EXPECT_TRUE(m_Cancelled);
  EXPECT_FALSE(HasLogged("Q exited with status 0|")) << "it did not end by itself";
}

TEST_F(ProgressDialog, is_cancelled_by_escape_and_the_close_button_too_and_by_enter_not) {
  Queue("echo 'INFO: CONVERTING' >&2\nexec sleep 1000\n");
  m_Host.m_Views.m_Actions.emplace_back(Begun, [](DialogLogic& dialog) {
    dialog.Command(OkCommand);
    EXPECT_FALSE(dialog.HasEnded());
    dialog.Command(CancelCommand);
    EXPECT_TRUE(dialog.HasEnded());
  });
  EXPECT_EQ(Run(), CancelCommand);
  EXPECT_TRUE(m_Cancelled);
}

TEST_F(ProgressDialog, cancelled_before_the_child_says_anything_ends) {
  Queue("exec sleep 1000\n");
  CancelAt("run");
  EXPECT_EQ(Run(), CancelCommand);
}

TEST_F(ProgressDialog, cancelled_ends_a_child_that_floods) {
  Queue(
      "echo 'INFO: CONVERTING' >&2\n"
      "while :; do echo 'PROGRESS: 5%'; echo 'INFO: FLUSHING'; done >&2\n");
  m_Host.m_Views.m_Actions.emplace_back("text 2021 Flushing", [](DialogLogic& dialog) {
    dialog.Command(CQProgressDlg::CancelButton);
  });
  EXPECT_EQ(Run(), CancelCommand);
  EXPECT_TRUE(m_Cancelled);
}

TEST_F(ProgressDialog, cancelled_ends_a_child_that_reported_success_and_hangs) {
  Queue("echo 'INFO: CLQ_success' >&2\nexec sleep 1000\n");
  CancelAt("text 2021 Done");
  EXPECT_EQ(Run(), CancelCommand);
  EXPECT_TRUE(m_Cancelled);
}

TEST_F(ProgressDialog, cancelled_ends_when_the_child_is_gone_and_others_hold_its_pipes) {
  CLQThread::s_GuardianTimeout = 100;
  Queue("sleep 1000 &\necho $! > \"$RASTREL_HOME/left\"\necho 'INFO: CONVERTING' >&2\nexit 1\n");
  CancelAt(Begun);
  EXPECT_EQ(Run(), CancelCommand);
  CLQThread::s_GuardianTimeout = CLQThread::GuardianTimeout;
  ::kill(std::stoi(Root().Read("left")), SIGKILL);
}

TEST_F(ProgressDialog, waits_with_its_end_for_the_child_to_end) {
  Queue("echo 'INFO: CLQ_success' >&2\nsleep 0.2\ntouch \"$RASTREL_HOME/done\"\n");
  EXPECT_EQ(Run(), OkCommand);
  EXPECT_TRUE(Root().Has("done"));
}

TEST_F(ProgressDialog, ends_by_the_first_result_that_was_reported) {
  Queue("echo 'INFO: CLQ_success' >&2\necho 'INFO: CLQ_failure' >&2\n");
  EXPECT_EQ(Run(), OkCommand);
}

TEST_F(ProgressDialog, destroyed_without_being_shown_leaves_nothing) {
  Queue("exec sleep 1000\n");
  const CQProgressDlg dialog(Root().Wide("job/sign.ps").c_str(), nullptr);
}

TEST_F(ProgressDialog, answers_its_two_other_messages_with_1) {
  CQProgressDlg dialog(L"", nullptr);
  EXPECT_EQ(dialog.SendMessage(0x8078, 0, 0), 1);
  EXPECT_EQ(dialog.SendMessage(0x8079, 7, 7), 1);
  EXPECT_FALSE(dialog.HasEnded());
}

TEST_F(ProgressDialog, numbers_its_messages_and_controls_as_its_callers_know_them) {
  EXPECT_EQ(CQProgressDlg::StateMessage, 0x807AU);
  EXPECT_EQ(CQProgressDlg::ProgressMessage, 0x807BU);
  EXPECT_EQ(CQProgressDlg::CancelButton, 2005);
  const CQProgressDlg dialog(L"", nullptr);
  EXPECT_EQ(dialog.GetResource().id, 1003);
}

TEST_F(ProgressDialog, keeps_a_flood_of_messages_small_and_still_hears_the_end) {
  Queue("exit 0\n");
  CQProgressDlg dialog(L"", nullptr);
  const std::size_t limit = CQProgressDlg::WaitingLimit;
  for (std::size_t count = 0; count < limit - 1; ++count)
    EXPECT_TRUE(dialog.PostMessage(CQProgressDlg::ProgressMessage, 4, 5));
  EXPECT_TRUE(dialog.PostMessage(CQProgressDlg::StateMessage, 4, JTI_CONVERTING));
  EXPECT_FALSE(dialog.PostMessage(CQProgressDlg::StateMessage, 4, JTI_CONVERTING));
  EXPECT_FALSE(dialog.PostMessage(CQProgressDlg::ProgressMessage, 4, 5));
  EXPECT_TRUE(dialog.PostMessage(CQProgressDlg::StateMessage, 4, JTI_CLQ_SUCCESS));
  EXPECT_TRUE(dialog.PostMessage(CQProgressDlg::WorkEndedMessage, 4, 0));
  EXPECT_TRUE(dialog.PostMessage(CDialog::CommandMessage, CancelCommand, 0));
  EXPECT_EQ(dialog.CountMessages(), limit + 3);
}

TEST_F(ProgressDialog, shows_texts_that_its_host_translates) {
  class German : public rastrel::standalone::StandaloneHost, Translation {
   public:
    explicit German(DialogViews& views) : m_Views(views) { SetHost(this); }
    Translation& GetTranslation() override { return *this; }
    DialogViews& GetDialogViews() override { return m_Views; }
    std::optional<std::wstring> Translate(const std::wstring& text) override {
      if (text == L"(*v*)Done") return L"Fertig";
      if (text == L"(*v*)Cancel") return L"Abbrechen";
      return std::nullopt;
    }

   private:
    DialogViews& m_Views;
  } german(m_Host.m_Views);
  Queue("echo 'INFO: CLQ_success' >&2\n");
  EXPECT_EQ(Run(), OkCommand);
  EXPECT_TRUE(m_Host.m_Views.HasTold("text 2005 Abbrechen"));
  EXPECT_TRUE(m_Host.m_Views.HasTold("text 2021 Fertig"));
}

// With nobody to watch.

class UnwatchedProgress : public rastrel::test::QueueTest {
 protected:
  ~UnwatchedProgress() override { ExpectNothingLeft(); }
  int Run() { return CQProgressDlg(Root().Wide("job/sign.ps").c_str(), nullptr).DoModal(); }
};

TEST_F(UnwatchedProgress, ends_as_the_child_reports) {
  Queue("echo 'INFO: CLQ_success' >&2\n");
  EXPECT_EQ(Run(), OkCommand);
  Queue("echo 'INFO: CLQ_failure' >&2\n");
  EXPECT_EQ(Run(), CancelCommand);
}

TEST_F(UnwatchedProgress, is_cancelled_once_nothing_can_end_it) {
  Queue("sleep 0.1\n");
  EXPECT_EQ(Run(), CancelCommand);
  std::filesystem::remove(Root().Path(QueueProgram));
  EXPECT_EQ(Run(), CancelCommand);
}

}  // namespace
