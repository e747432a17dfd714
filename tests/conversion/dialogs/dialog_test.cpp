#include "rastrel/conversion/dialogs/dialog.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/standalone/headless_views.h"
#include "tests/support/scripted_views.h"

using namespace rastrel::host;
using rastrel::test::ScriptedHost;
using Told = std::vector<std::string>;

namespace {

constexpr int Button = 5;
constexpr int Label = 6;
constexpr std::array<DialogControl, 2> Controls{
    {{Label, ControlKind::Text, L""}, {Button, ControlKind::Button, L"(*v*)Press"}}};
constexpr DialogResource Resource{77, L"(*v*)Trial", Controls};
constexpr unsigned Number = 0x8001;

class TrialDialog : public CDialog {
 public:
  TrialDialog() : CDialog(Resource, nullptr) {}
  std::span<const Message> GetMessageMap() const override {
    static constexpr std::array<Message, 2> Map{{
        {Number, 0,
         [](CDialog& dialog, std::uintptr_t wParam, std::intptr_t lParam) {
           static_cast<TrialDialog&>(dialog).m_Sum += static_cast<int>(wParam);
           return lParam + 1;
         }},
        {CommandMessage, Button,
         [](CDialog& dialog, std::uintptr_t, std::intptr_t) {
           dialog.EndDialog(42);
           return std::intptr_t{0};
         }},
    }};
    return Map;
  }
  bool OnInitDialog() override {
    TranslateDialog();
    SetText(Label, L"shown");
    if (m_EndsAtOnce) EndDialog(9);
    return CDialog::OnInitDialog();
  }
  bool MayEndByItself() const override { return m_MayEnd; }

  int m_Sum = 0;
  bool m_EndsAtOnce = false;
  bool m_MayEnd = false;
};

TEST(CDialog, returns_its_result_and_shows_its_texts_translated) {
  ScriptedHost host;
  host.m_Views.PressAt("run", Button);
  TrialDialog dialog;
  EXPECT_EQ(dialog.DoModal(), 42);
  EXPECT_EQ(host.m_Views.m_Told,
            (Told{"make 77", "text 0 Trial", "text 5 Press", "text 6 shown", "run", "end"}));
}

TEST(CDialog, ended_before_it_is_shown_is_not_shown) {
  ScriptedHost host;
  TrialDialog dialog;
  dialog.m_EndsAtOnce = true;
  EXPECT_EQ(dialog.DoModal(), 9);
  EXPECT_FALSE(host.m_Views.HasTold("run"));
}

TEST(CDialog, without_a_face_is_cancelled) {
  ScriptedHost host;
  host.m_Views.m_Refuses = true;
  TrialDialog dialog;
  EXPECT_EQ(dialog.DoModal(), CancelCommand);
  EXPECT_TRUE(host.m_Views.m_Told.empty());
}

TEST(CDialog, may_be_shown_again) {
  ScriptedHost host;
  TrialDialog dialog;
  host.m_Views.PressAt("run", Button);
  EXPECT_EQ(dialog.DoModal(), 42);
  host.m_Views.PressAt("run", CancelCommand);
  EXPECT_EQ(dialog.DoModal(), CancelCommand);
}

TEST(CDialog, ok_and_cancel_end_it_unless_its_map_says_otherwise) {
  ScriptedHost host;
  for (const int command : {OkCommand, CancelCommand}) {
    host.m_Views.m_Actions.clear();
    host.m_Views.PressAt("run", command);
    EXPECT_EQ(TrialDialog().DoModal(), command);
  }
}

TEST(CDialog, the_first_end_counts_and_a_dialog_that_has_ended_takes_no_command) {
  TrialDialog dialog;
  dialog.EndDialog(3);
  dialog.EndDialog(4);
  EXPECT_TRUE(dialog.HasEnded());
  ScriptedHost host;
  host.m_Views.m_Actions.emplace_back("run", [](DialogLogic& logic) {
    logic.Command(Button);
    logic.Command(CancelCommand);
  });
  EXPECT_EQ(TrialDialog().DoModal(), 42);
}

TEST(CDialog, a_message_that_is_sent_has_its_answer_and_an_unknown_one_0) {
  TrialDialog dialog;
  EXPECT_EQ(dialog.SendMessage(Number, 1, 6), 7);
  EXPECT_EQ(dialog.SendMessage(Number + 1, 1, 6), 0);
  EXPECT_EQ(dialog.SendMessage(CDialog::CommandMessage, 1234, 0), 0);
  EXPECT_FALSE(dialog.HasEnded());
}

TEST(CDialog, takes_a_bounded_number_of_posted_messages_at_a_time) {
  TrialDialog dialog;
  for (int count = 0; count < 65; ++count) dialog.PostMessage(Number, 1, 0);
  EXPECT_EQ(dialog.CountMessages(), 65U);
  EXPECT_EQ(dialog.HandleMessages(), 64U);
  EXPECT_EQ(dialog.HandleMessages(), 1U);
  EXPECT_EQ(dialog.HandleMessages(), 0U);
  EXPECT_EQ(dialog.m_Sum, 65);
}

TEST(HeadlessView, cancels_a_dialog_that_only_a_person_could_end) {
  TrialDialog dialog;
  EXPECT_EQ(dialog.DoModal(), CancelCommand) << "the default host shows nothing";
}

TEST(HeadlessView, takes_messages_posted_before_the_work_ended) {
  TrialDialog dialog;
  dialog.m_MayEnd = true;
  std::thread work([&dialog] {
    for (int count = 0; count < 1000; ++count) dialog.PostMessage(Number, 1, 0);
    dialog.PostMessage(CDialog::CommandMessage, Button, 0);
  });
  EXPECT_EQ(dialog.DoModal(), 42);
  EXPECT_EQ(dialog.m_Sum, 1000);
  work.join();
}

TEST(HeadlessView, goes_on_without_a_handle_to_wait_for) {
  const rastrel::os::SystemCallsGuard guard;
  rastrel::os::Calls().eventfd = [](unsigned, int) { return -1; };
  TrialDialog dialog;
  EXPECT_EQ(dialog.GetPostedHandle(), INVALID_HANDLE_VALUE);
  dialog.m_MayEnd = true;
  std::thread work([&dialog] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    dialog.PostMessage(CDialog::CommandMessage, Button, 0);
  });
  EXPECT_EQ(dialog.DoModal(), 42);
  work.join();
}

}  // namespace
