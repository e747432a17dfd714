#include "cli/job/control_prompt.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

#include <array>
#include <cstdio>
#include <string>

#include "cli/console/stop_signals.h"
#include "cli/job/terminal_views.h"
#include "rastrel/conversion/dialogs/ps2bmp_dlg.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/standalone/standalone_host.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::cli {
namespace {

using namespace host;

enum Id { Size = 10, Label, Width, Count, Cut, Red, Ink, Rgb, Cmyk, NameLabel, Name, Hidden };
constexpr std::array<DialogControl, 14> Controls{{
    {Size, ControlKind::Text, L"(*v*)Big"},
    {Label, ControlKind::Text, L"(*v*)&Width (cm):"},
    {Width, ControlKind::DecimalEdit, L"", 0.1, 0},
    {Count, ControlKind::IntegerEdit, L"(*v*)&Resolution:", 1, 1},
    {Cut, ControlKind::CheckBox, L"(*v*)&Cut line"},
    {Red, ControlKind::Radio, L"(*v*)&Red"},
    {Ink, ControlKind::Radio, L"(*v*)&Ink"},
    {Rgb, ControlKind::ColorPicker, L""},
    {Cmyk, ControlKind::ColorPicker, L"", 1, 0, PickerType::Cmyk},
    {NameLabel, ControlKind::Text, L"(*v*)Name:"},
    {Name, ControlKind::ComboBox, L""},
    {Hidden, ControlKind::IntegerEdit, L"(*v*)Hidden", 1, 1},
    {OkCommand, ControlKind::Button, L"(*v*)OK"},
    {CancelCommand, ControlKind::Button, L"(*v*)Cancel"},
}};
constexpr DialogResource Resource{82, L"(*v*)Trial", Controls};

class AskedDialog : public DialogLogic {
 public:
  const DialogResource& GetResource() const override { return Resource; }
  CWnd* GetParent() const override { return nullptr; }
  HANDLE GetPostedHandle() const override { return INVALID_HANDLE_VALUE; }
  std::size_t HandleMessages() override { return 0; }
  void Command(int control) override { m_Result = control; }
  bool HasEnded() const override { return m_Result != 0; }
  bool MayEndByItself() const override { return false; }
  void ControlChanged(int control) override {
    m_Changes.push_back(control);
    if (control == Width) m_pView->SetText(Size, L"Bigger");
    if (control == Cut) m_pView->SetEnabled(Rgb, std::get<bool>(m_pView->GetValue(Cut)));
  }

  DialogView* m_pView = nullptr;
  std::vector<int> m_Changes;
  int m_Result = 0;
};

// The dialog after these lines were typed, and the text that a person saw.
class AskedAndAnswered {
 public:
  explicit AskedAndAnswered(const std::string& typed) {
    HANDLE input = INVALID_HANDLE_VALUE;
    HANDLE keyboard = INVALID_HANDLE_VALUE;
    EXPECT_TRUE(os::CreatePipe(input, keyboard, 65536));
    EXPECT_EQ(::write(static_cast<int>(keyboard), typed.data(), typed.size()),
              static_cast<ssize_t>(typed.size()));
    ::close(static_cast<int>(keyboard));
    ControlPrompt prompt(m_Dialog, input, INVALID_HANDLE_VALUE);
    m_Dialog.m_pView = &prompt;
    prompt.SetValue(Width, 10.5);
    prompt.SetValue(Count, 72.0);
    prompt.SetValue(Red, true);
    prompt.SetEnabled(Rgb, false);
    prompt.SetValue(Cmyk, PickedColor{PickerType::Cmyk, {0, 1, 0.505, 0}});
    const std::array<std::wstring, 2> names{L"Gold", L"\x1b[31mSilver\nq"};
    prompt.SetItems(Name, names);
    prompt.SetValue(Name, names[0]);
    prompt.SetVisible(Hidden, false);
    testing::internal::CaptureStderr();
    prompt.RunModal();
    m_Shown = testing::internal::GetCapturedStderr();
    m_Cancelled = prompt.IsCancelled();
    for (const int control : {Width, Count, Cut, Red, Ink, Rgb, Cmyk, Name})
      m_Values[control] = prompt.GetValue(control);
    ::close(static_cast<int>(input));
  }

  AskedDialog m_Dialog;
  std::string m_Shown;
  std::map<int, ControlValue> m_Values;
  bool m_Cancelled = false;
};

TEST(ControlPrompt, empty_lines_keep_the_values_and_end_with_ok) {
  const AskedAndAnswered asked("\n\n\n\n \t\r\n\n");
  EXPECT_EQ(asked.m_Dialog.m_Result, OkCommand);
  EXPECT_TRUE(asked.m_Dialog.m_Changes.empty());
  EXPECT_EQ(asked.m_Shown,
            "Trial (Enter keeps the value in brackets, q cancels)\n"
            "Big\n"
            "Width (cm) [10.5]: Resolution [72]: Cut line, y or n [n]: "
            "  1: Red\n  2: Ink\nNumber [1]: "
            "Ink [cmyk:0%,100%,50.5%,0%]: "
            "  1: Gold\n  2: \\x1b[31mSilver\\x0aq\nName, its number [1]: ");
}

TEST(ControlPrompt, typed_values_reach_the_dialog_like_changes_in_a_window) {
  const AskedAndAnswered asked("2,25\n300\ny\n2\nrgb:255,0,50%\n0,100%,100%,255\n2\n");
  EXPECT_EQ(asked.m_Dialog.m_Result, OkCommand);
  EXPECT_EQ(asked.m_Dialog.m_Changes, (std::vector<int>{Width, Count, Cut, Ink, Rgb, Cmyk, Name}));
  EXPECT_EQ(asked.m_Values.at(Width), ControlValue(2.25));
  EXPECT_EQ(asked.m_Values.at(Count), ControlValue(300.0));
  EXPECT_EQ(asked.m_Values.at(Cut), ControlValue(true));
  EXPECT_EQ(asked.m_Values.at(Red), ControlValue(false));
  EXPECT_EQ(asked.m_Values.at(Rgb), ControlValue(PickedColor{PickerType::Rgb, {255, 0, 127.5}}));
  EXPECT_EQ(asked.m_Values.at(Cmyk), ControlValue(PickedColor{PickerType::Cmyk, {0, 1, 1, 1}}));
  EXPECT_EQ(asked.m_Values.at(Name), ControlValue(std::wstring(L"\x1b[31mSilver\nq")));
}

TEST(ControlPrompt, a_control_that_an_answer_enables_is_asked_for) {
  EXPECT_EQ(AskedAndAnswered("").m_Shown.find("Red [rgb:"), std::string::npos);
  const AskedAndAnswered asked("\n\ny\n\n\n\n\n");
  EXPECT_NE(asked.m_Shown.find("Red [rgb:0,0,0]: "), std::string::npos) << asked.m_Shown;
  EXPECT_EQ(asked.m_Shown.find("Hidden"), std::string::npos);
}

TEST(ControlPrompt, a_text_that_an_answer_changes_is_shown_again) {
  EXPECT_NE(AskedAndAnswered("3\n").m_Shown.find("[10.5]: Bigger\n"), std::string::npos);
}

TEST(ControlPrompt, an_invalid_answer_is_asked_again) {
  const AskedAndAnswered asked(
      "-1\nx\n1e3\n4\n0\n1.5\n5\nmaybe\nn\n3\n0\n1.5\n2\ncmyk:1,2,3\n"
      "rgb:0,0,0\ncmyk:0,0,0,256\n0,0,0,0\n3\n2\n");
  EXPECT_EQ(asked.m_Dialog.m_Result, OkCommand) << asked.m_Shown;
  EXPECT_EQ(asked.m_Values.at(Width), ControlValue(4.0));
  EXPECT_EQ(asked.m_Values.at(Count), ControlValue(5.0));
  EXPECT_EQ(asked.m_Values.at(Ink), ControlValue(true));
  EXPECT_EQ(asked.m_Values.at(Cmyk), ControlValue(PickedColor{PickerType::Cmyk, {}}));
  for (const char* const hint :
       {"a number from 0 on, please\n", "a whole number from 1 on, please\n", "y or n, please\n",
        "a number from 1 to 2, please\n", "cmyk:C,M,Y,K with parts"})
    EXPECT_NE(asked.m_Shown.find(hint), std::string::npos) << hint;
}

TEST(ControlPrompt, q_and_the_end_of_the_input_cancel) {
  for (const char* const typed : {"q\n", "\nQ\n", "", "\n12", "5\n"}) {
    const AskedAndAnswered asked(typed);
    EXPECT_EQ(asked.m_Dialog.m_Result, CancelCommand) << typed;
    EXPECT_TRUE(asked.m_Cancelled);
  }
}

TEST(ControlPrompt, a_line_that_no_person_types_cancels) {
  EXPECT_EQ(AskedAndAnswered(std::string(4000, '1') + "\n\n\n\n\n\n").m_Dialog.m_Result,
            CancelCommand)
      << "the number is no width, and then the input ends";
  EXPECT_EQ(AskedAndAnswered(std::string(20000, '1')).m_Dialog.m_Result, CancelCommand);
}

TEST(ControlPrompt, a_dialog_without_controls_to_fill_in_has_none) {
  EXPECT_TRUE(HasInputControls(AskedDialog()));
}

// The dialog of a conversion in a process with a terminal of its own.
class OnTerminal : public ::testing::Test {
 protected:
  ~OnTerminal() override {
    if (m_Id > 0) ::kill(m_Id, SIGKILL), ::waitpid(m_Id, nullptr, 0);
    if (m_Keyboard >= 0) ::close(m_Keyboard);
  }

  void Start() {
    int terminal = -1;
    ASSERT_EQ(::openpty(&m_Keyboard, &terminal, nullptr, nullptr, nullptr), 0);
    m_Id = ::fork();
    ASSERT_GE(m_Id, 0);
    if (m_Id == 0) {
      ::close(m_Keyboard);
      ::login_tty(terminal);
      Ask();
      ::_exit(0);
    }
    ::close(terminal);
  }

  static void Ask() {
    TerminalViews views(false);
    const auto signals = TakeStopSignals([&views](int) { views.RequestStop(); });
    ViewsHost host(views);
    PS2BmpParams params;
    params.width = params.height = 10;
    params.cut.resolution = 254;
    CPS2BmpDlg dialog(params, {L"Gold"}, nullptr);
    const int result = dialog.DoModal();
    const PS2BmpParams& taken = dialog.GetParams();
    std::wstring name;
    static_cast<void>(taken.cut.color.GetColorName(name));
    std::printf("result %d cancelled %d: %g x %g at %d, cut %d kind %d %s.\n", result,
                views.IsCancelled() ? 1 : 0, taken.width, taken.height, taken.cut.resolution,
                taken.cut.enabled, taken.cut.colorKind, os::Utf8FromWide(name).c_str());
    std::fflush(stdout);
  }

  void WaitFor(const std::string& text) {
    for (int round = 0; round < 600; ++round) {
      if (m_Shown.find(text) != std::string::npos) return;
      pollfd entry{.fd = m_Keyboard, .events = POLLIN, .revents = 0};
      if (::poll(&entry, 1, 100) <= 0) continue;
      char bytes[4096];
      const ssize_t count = ::read(m_Keyboard, bytes, sizeof bytes);
      if (count <= 0) break;
      m_Shown.append(bytes, static_cast<std::size_t>(count));
    }
    ADD_FAILURE() << "'" << text << "' never came: " << m_Shown;
  }

  // Waits for a question, and answers it.
  void Answer(const std::string& question, const std::string& typed) {
    WaitFor(question);
    m_Shown.clear();
    EXPECT_EQ(::write(m_Keyboard, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
  }

  test::ScratchDirectory m_Home;
  test::EnvironmentGuard m_Guard{"RASTREL_HOME", m_Home.Path()};
  pid_t m_Id = -1;
  int m_Keyboard = -1;
  std::string m_Shown;
};

using ControlPromptOnTerminal = OnTerminal;

TEST_F(ControlPromptOnTerminal, a_conversion_is_asked_for_line_by_line) {
  Start();
  Answer("Height (cm) [10]: ", "\n");
  Answer("Width (cm) [10]: ", "20\n");
  Answer("Resolution (dpi) [254]: ", "127\n");
  WaitFor("1.4 MB");  // 1000 by 500 pixels of 3 bytes
  Answer("Cut line, y or n [n]: ", "y\n");
  Answer("Number [1]: ", "3\n");
  Answer("its number [1]: ", "\n");
  WaitFor("result 1 cancelled 0: 20 x 10 at 127, cut 1 kind 2 Gold.");
}

TEST_F(ControlPromptOnTerminal, ctrl_c_cancels) {
  Start();
  Answer("Height (cm) [10]: ", "\n");
  Answer("Width (cm) [10]: ", "\x03");
  WaitFor("result 2 cancelled 1: 10 x 10");
}

TEST_F(ControlPromptOnTerminal, the_end_of_the_input_cancels) {
  Start();
  Answer("Height (cm) [10]: ", "\x04");
  WaitFor("result 2 cancelled 1: 10 x 10");
}

}  // namespace
}  // namespace rastrel::cli
