// The progress dialog with real children and scripted views.

#include "rastrel/conversion/dialogs/q_progress_dlg.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <stdexcept>
#include <thread>

#include "rastrel/conversion/queue_supervisor.h"
#include "rastrel/platform/standalone/headless_views.h"
#include "tests/conversion/queue_fixture.h"
#include "tests/support/scripted_views.h"
#include "tests/support/wait_until.h"

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

// Views that do other than they should.

using Dialog = std::function<void(DialogLogic&)>;

// A view that acts by a script: when it is made, at each call, and in place of its loop.
class OddViews : public DialogViews {
 public:
  Dialog m_OnMake;
  Dialog m_OnRange;
  Dialog m_OnText;
  Dialog m_OnRun;

  std::unique_ptr<DialogView> MakeView(DialogLogic& dialog) override {
    Act(m_OnMake, dialog);
    return std::make_unique<View>(*this, dialog);
  }
  void ShowMessage(CWnd*, const std::wstring&, const std::wstring&) override {}

 private:
  class View : public DialogView {
   public:
    View(OddViews& views, DialogLogic& dialog) : m_Views(views), m_Dialog(dialog) {}
    void SetText(int, const std::wstring&) override { Act(m_Views.m_OnText, m_Dialog); }
    void SetRange(int, int, int) override { Act(m_Views.m_OnRange, m_Dialog); }
    void SetPosition(int, int) override {}
    void RunModal() override { Act(m_Views.m_OnRun, m_Dialog); }

   private:
    OddViews& m_Views;
    DialogLogic& m_Dialog;
  };
  static void Act(const Dialog& action, DialogLogic& dialog) {
    if (action) action(dialog);
  }
};

void Cancel(DialogLogic& dialog) { dialog.Command(CancelCommand); }
void Throw(DialogLogic& /*dialog*/) { throw std::runtime_error("no window"); }

class OddView : public rastrel::test::QueueTest {
 protected:
  class OddHost : public rastrel::standalone::StandaloneHost {
   public:
    OddHost() { SetHost(this); }
    ~OddHost() override { SetHost(nullptr); }
    DialogViews& GetDialogViews() override { return m_Views; }
    OddViews m_Views;
  };

  OddView() {
    // It ends by itself, so that a dialog that waits for it fails the test and does not hang it.
    Queue(": > \"$RASTREL_HOME/started\"\necho 'INFO: CONVERTING' >&2\nexec sleep 30\n");
    m_Host.m_Views.m_OnRun = [](DialogLogic& dialog) {
      while (!dialog.HasEnded()) dialog.HandleMessages();
    };
  }
  ~OddView() override { ExpectNothingLeft(); }
  OddViews& Views() { return m_Host.m_Views; }

  OddHost m_Host;
};

TEST_F(OddView, that_throws_or_returns_early_leaves_no_program_running) {
  for (const bool throws : {true, false}) {
    CQProgressDlg dialog(Root().Wide("job/sign.ps").c_str(), nullptr);
    Views().m_OnRun = [this, throws](DialogLogic& logic) {
      EXPECT_TRUE(rastrel::test::WaitUntil([this] { return Root().Has("started"); }));
      if (throws) Throw(logic);
    };
    if (throws) {
      EXPECT_THROW(dialog.DoModal(), std::runtime_error);
    } else {
      EXPECT_EQ(dialog.DoModal(), CancelCommand);
    }
    EXPECT_TRUE(dialog.HasEnded());
    EXPECT_TRUE(dialog.IsCancelled());
    EXPECT_FALSE(HasChildren()) << throws;
    std::filesystem::remove(Root().Path("started"));
  }
}

TEST_F(OddView, that_cancels_or_throws_while_it_is_prepared_starts_no_program) {
  for (Dialog OddViews::*const place : {&OddViews::m_OnMake, &OddViews::m_OnRange}) {
    for (const Dialog& act : {Dialog(Cancel), Dialog(Throw)}) {
      Views().*place = act;
      CQProgressDlg dialog(Root().Wide("job/sign.ps").c_str(), nullptr);
      try {
        EXPECT_EQ(dialog.DoModal(), CancelCommand);
        EXPECT_TRUE(dialog.IsCancelled());
      } catch (const std::runtime_error&) {
        EXPECT_TRUE(dialog.HasEnded());
      }
      EXPECT_FALSE(HasChildren());
      EXPECT_FALSE(Root().Has("started"));
      Views().*place = nullptr;
    }
  }
}

TEST_F(OddView, that_cancels_or_throws_after_the_start_leaves_no_program_running) {
  for (const Dialog& act : {Dialog(Cancel), Dialog(Throw)}) {
    Views().m_OnText = act;
    CQProgressDlg dialog(Root().Wide("job/sign.ps").c_str(), nullptr);
    try {
      EXPECT_EQ(dialog.DoModal(), CancelCommand);
    } catch (const std::runtime_error&) {
      EXPECT_TRUE(dialog.HasEnded());
    }
    EXPECT_TRUE(dialog.IsCancelled());
    EXPECT_FALSE(HasChildren());
  }
}

TEST_F(OddView, that_ends_the_dialog_past_its_job_leaves_no_program_running) {
  CQProgressDlg dialog(Root().Wide("job/sign.ps").c_str(), nullptr);
  Views().m_OnRun = [&dialog](DialogLogic&) { dialog.EndDialog(OkCommand); };
  EXPECT_EQ(dialog.DoModal(), OkCommand);
  EXPECT_TRUE(dialog.IsCancelled());
  EXPECT_FALSE(HasChildren());
}

TEST_F(OddView, shown_again_after_a_cancel_the_dialog_knows_nothing_of_the_first_time) {
  CQProgressDlg dialog(Root().Wide("job/sign.ps").c_str(), nullptr);
  const Dialog run = Views().m_OnRun;
  Views().m_OnRun = [](DialogLogic& logic) {
    // One message is handled; another is left.
    static_cast<CQProgressDlg&>(logic).PostMessage(CQProgressDlg::StateMessage, 4, JTI_CLQ_FAILURE);
    logic.HandleMessages();
    static_cast<CQProgressDlg&>(logic).PostMessage(CQProgressDlg::StateMessage, 4, JTI_CLQ_FAILURE);
    logic.Command(CancelCommand);
  };
  EXPECT_EQ(dialog.DoModal(), CancelCommand);
  EXPECT_TRUE(dialog.IsCancelled());
  EXPECT_EQ(dialog.CountMessages(), 0U);
  // The program must not be killed by the abort of the first time.
  Queue("sleep 0.1\n: > \"$RASTREL_HOME/whole\"\necho 'INFO: CLQ_success' >&2\n");
  Views().m_OnRun = run;
  EXPECT_EQ(dialog.DoModal(), OkCommand);
  EXPECT_FALSE(dialog.IsCancelled());
  EXPECT_TRUE(Root().Has("whole"));
}

// A view that never sleeps asks between the job's end and the message of it.

class GapDialog : public CQProgressDlg {
 public:
  using CQProgressDlg::CQProgressDlg;

  bool PostMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override {
    if (message == WorkEndedMessage) {
      // The job has ended. The gap lasts until the view has asked a few times, or has given up.
      const int asked = m_Asked;
      EXPECT_TRUE(rastrel::test::WaitUntil([&] { return m_Asked >= asked + 100 || m_GivenUp; }));
    }
    return CQProgressDlg::PostMessage(message, wParam, lParam);
  }
  bool MayEndByItself() const override {
    ++m_Asked;
    return CQProgressDlg::MayEndByItself();
  }

  mutable std::atomic<int> m_Asked = 0;
  std::atomic<bool> m_GivenUp = false;
};

TEST_F(OddView, that_never_sleeps_does_not_cancel_a_job_that_has_just_succeeded) {
  // The success is handled before the job ends, so that nothing is in the queue in the gap.
  Queue(
      "echo 'INFO: CLQ_success' >&2\n"
      "until [ -e \"$RASTREL_HOME/handled\" ]; do sleep 0.01; done\n");
  GapDialog dialog(Root().Wide("job/sign.ps").c_str(), nullptr);
  Views().m_OnRun = [this, &dialog](DialogLogic& logic) {
    while (!logic.HasEnded()) {
      const bool mayEnd = logic.MayEndByItself();
      const bool handled = logic.HandleMessages() > 0;
      if (handled) Root().Write("handled", "");
      if (handled || mayEnd) continue;
      dialog.m_GivenUp = true;
      logic.Command(CancelCommand);
    }
  };
  EXPECT_EQ(dialog.DoModal(), OkCommand);
  EXPECT_FALSE(dialog.IsCancelled());
}

TEST_F(OddView, that_never_sleeps_is_not_left_waiting_for_an_end_that_could_not_be_posted) {
  class LosingDialog : public CQProgressDlg {
   public:
    using CQProgressDlg::CQProgressDlg;
    bool PostMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override {
      return message != WorkEndedMessage && CQProgressDlg::PostMessage(message, wParam, lParam);
    }
  };
  Queue("echo 'INFO: CLQ_success' >&2\n");
  LosingDialog dialog(Root().Wide("job/sign.ps").c_str(), nullptr);
  Views().m_OnRun = [](DialogLogic& logic) { rastrel::standalone::HeadlessView(logic).RunModal(); };
  EXPECT_EQ(dialog.DoModal(), CancelCommand);
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
