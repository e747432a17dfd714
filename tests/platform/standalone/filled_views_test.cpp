#include "rastrel/platform/standalone/filled_views.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tests/support/scripted_views.h"

using namespace rastrel::host;
using rastrel::standalone::ControlStates;
using rastrel::standalone::FilledValue;
using rastrel::standalone::FilledViews;
using rastrel::test::ScriptedViews;

namespace {

enum Id { Width = 10, Cut, First, Second, Rgb };
constexpr std::array<DialogControl, 5> Controls{{
    {Width, ControlKind::DecimalEdit, L"", 0.1, 0},
    {Cut, ControlKind::CheckBox, L""},
    {First, ControlKind::Radio, L""},
    {Second, ControlKind::Radio, L""},
    {Rgb, ControlKind::ColorPicker, L""},
}};
constexpr DialogResource Resource{80, L"", Controls};
constexpr DialogResource OtherResource{81, L"", Controls};

// A dialog whose picker is enabled by its check box.
class FillDialog : public DialogLogic {
 public:
  explicit FillDialog(const DialogResource& resource = Resource) : m_Resource(resource) {}

  void Run(DialogViews& views) {
    const auto view = views.MakeView(*this);
    m_pView = view.get();
    view->SetValue(Width, 21.0);
    view->SetEnabled(Rgb, false);
    view->RunModal();
    for (const DialogControl& control : Controls) m_Values.push_back(view->GetValue(control.id));
  }

  const DialogResource& GetResource() const override { return m_Resource; }
  CWnd* GetParent() const override { return nullptr; }
  HANDLE GetPostedHandle() const override { return INVALID_HANDLE_VALUE; }
  std::size_t HandleMessages() override { return 0; }
  void Command(int control) override {
    m_Reports += "command " + std::to_string(control) + "; ";
    if (control == CancelCommand || !m_RefusesOk) m_Ended = true;
  }
  bool HasEnded() const override { return m_Ended; }
  bool MayEndByItself() const override { return false; }
  void ControlChanged(int control) override {
    m_Reports += "changed " + std::to_string(control) + "; ";
    if (control == Cut) m_pView->SetEnabled(Rgb, std::get<bool>(m_pView->GetValue(Cut)));
    if (control == m_EndsAt) m_Ended = true;
  }

  std::string m_Reports;
  std::vector<ControlValue> m_Values;
  bool m_RefusesOk = false;
  int m_EndsAt = 0;

 private:
  const DialogResource& m_Resource;
  DialogView* m_pView = nullptr;
  bool m_Ended = false;
};

constexpr PickedColor Orange{PickerType::Rgb, {255, 128, 0, 0}};

TEST(FilledViews, without_a_value_press_ok_on_the_dialog_s_own) {
  ScriptedViews others;
  FilledViews views(80, std::vector<FilledValue>(), others);
  FillDialog dialog;
  dialog.Run(views);
  EXPECT_EQ(dialog.m_Reports, "command 1; ");
  EXPECT_EQ(dialog.m_Values[0], ControlValue(21.0));
  EXPECT_EQ(views.GetRefused(), std::nullopt);
  EXPECT_TRUE(others.m_Told.empty());
}

TEST(FilledViews, enter_values_in_their_order_so_that_a_control_enables_the_next) {
  ScriptedViews others;
  FilledViews views(80, {{Cut, true}, {Rgb, Orange}, {Second, true}, {Width, 4.5}}, others);
  FillDialog dialog;
  dialog.Run(views);
  EXPECT_EQ(dialog.m_Reports, "changed 11; changed 14; changed 13; changed 10; command 1; ");
  EXPECT_EQ(dialog.m_Values,
            (std::vector<ControlValue>{4.5, true, false, true, ControlValue(Orange)}));
}

TEST(FilledViews, do_not_report_a_value_that_is_there_already) {
  ScriptedViews others;
  FilledViews views(80, {{Width, 21.0}, {Cut, false}}, others);
  FillDialog dialog;
  dialog.Run(views);
  EXPECT_EQ(dialog.m_Reports, "command 1; ");
}

TEST(FilledViews, cancel_a_dialog_that_can_not_take_a_value_and_say_which) {
  const std::vector<FilledValue> refused[] = {{{Rgb, Orange}},  // disabled
                                              {{Width, -0.1}},  // below the minimum
                                              {{Width, true}},  // of another type
                                              {{99, 1.0}},      // unknown
                                              {{Cut, true}, {Width, -1.0}, {First, true}}};
  for (const auto& values : refused) {
    ScriptedViews others;
    FilledViews views(80, values, others);
    FillDialog dialog;
    dialog.Run(views);
    EXPECT_TRUE(dialog.m_Reports.ends_with("command 2; ")) << dialog.m_Reports;
    EXPECT_EQ(dialog.m_Reports.find("changed 12"), std::string::npos) << "nothing after it";
    EXPECT_EQ(views.GetRefused(), values[values.size() == 3 ? 1 : 0].control);
  }
}

TEST(FilledViews, may_make_their_values_from_the_dialog_s_own) {
  ScriptedViews others;
  FilledViews views(
      80,
      [](const ControlStates& shown) {
        return std::vector<FilledValue>{{Width, std::get<double>(shown.GetValue(Width)) / 2}};
      },
      others);
  FillDialog dialog;
  dialog.Run(views);
  EXPECT_EQ(dialog.m_Values[0], ControlValue(10.5));
}

TEST(FilledViews, give_up_a_dialog_that_stays_up_after_ok) {
  ScriptedViews others;
  FilledViews views(80, std::vector<FilledValue>(), others);
  FillDialog dialog;
  dialog.m_RefusesOk = true;
  dialog.Run(views);
  EXPECT_EQ(dialog.m_Reports, "command 1; command 2; ");
}

TEST(FilledViews, enter_nothing_more_in_a_dialog_that_has_ended) {
  ScriptedViews others;
  FilledViews views(80, {{Cut, true}, {Width, 1.0}}, others);
  FillDialog dialog;
  dialog.m_EndsAt = Cut;
  dialog.Run(views);
  EXPECT_EQ(dialog.m_Reports, "changed 11; ");
}

TEST(FilledViews, leave_other_dialogs_and_messages_to_the_other_views) {
  ScriptedViews others;
  others.PressAt("run", CancelCommand);
  FilledViews views(80, {{Width, 1.0}}, others);
  FillDialog dialog(OtherResource);
  dialog.Run(views);
  views.ShowMessage(nullptr, L"text", L"title");
  EXPECT_EQ(dialog.m_Reports, "command 2; ");
  EXPECT_EQ(others.m_Told.front(), "make 81");
  EXPECT_EQ(others.m_Told.back(), "message title: text");
  EXPECT_TRUE(views.CanAsk());
  others.m_CanAsk = false;
  EXPECT_FALSE(views.CanAsk());
}

}  // namespace
