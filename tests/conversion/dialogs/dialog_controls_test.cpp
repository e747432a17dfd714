#include <gtest/gtest.h>

#include <array>

#include "rastrel/conversion/dialogs/dialog.h"
#include "tests/support/scripted_views.h"

using namespace rastrel::host;
using rastrel::test::ScriptedHost;
using Told = std::vector<std::string>;

namespace {

enum Id { Label = 10, Width, Count, Red, Blue, Cut, Name, Rgb, Cmyk, Bar };
constexpr std::array<DialogControl, 12> Controls{{
    {Label, ControlKind::Text, L""},
    {Width, ControlKind::DecimalEdit, L"", 0.1, 0},
    {Count, ControlKind::IntegerEdit, L"", 1, 1},
    {Red, ControlKind::Radio, L"(*v*)&Red"},
    {Blue, ControlKind::Radio, L"(*v*)&Blue"},
    {Cut, ControlKind::CheckBox, L"(*v*)&Cut"},
    {Name, ControlKind::ComboBox, L""},
    {Rgb, ControlKind::ColorPicker, L""},
    {Cmyk, ControlKind::ColorPicker, L"", 1, 0, PickerType::Cmyk},
    {Bar, ControlKind::Progress, L""},
    {OkCommand, ControlKind::Button, L"(*v*)OK"},
    {CancelCommand, ControlKind::Button, L"(*v*)Cancel"},
}};
constexpr DialogResource Resource{78, L"(*v*)Controls", Controls};

// Writes down what its view reports, and takes its values back on OK.
class ControlsDialog : public CDialog {
 public:
  ControlsDialog() : CDialog(Resource, nullptr) {}

  std::span<const Message> GetMessageMap() const override {
    const auto command = [](CDialog& dialog, std::uintptr_t control, std::intptr_t) {
      static_cast<ControlsDialog&>(dialog).m_Reports.push_back("command " +
                                                               std::to_string(control));
      return std::intptr_t{0};
    };
    static const std::array<Message, 5> Map{{
        {EditChangedMessage, 0,
         [](CDialog& dialog, std::uintptr_t control, std::intptr_t lParam) {
           static_cast<ControlsDialog&>(dialog).m_Reports.push_back(
               "changed " + std::to_string(control) + " " + std::to_string(lParam));
           return std::intptr_t{0};
         }},
        {CommandMessage, Red, command},
        {CommandMessage, Blue, command},
        {CommandMessage, Cut, command},
        {CommandMessage, Name, command},
    }};
    return Map;
  }
  void DoDataExchange(bool fromControls) override {
    if (fromControls) {
      m_Values.clear();
      for (const int control : {Width, Count, Red, Blue, Cut, Name, Rgb, Cmyk, Bar})
        m_Values.push_back(GetValue(control));
      return;
    }
    SetValue(Width, 10.5);
    SetValue(Count, 72.0);
    SetValue(Red, true);
    const std::array<std::wstring, 2> names{L"Gold", L"Silver"};
    SetItems(Name, names);
    SetValue(Name, std::wstring(L"Gold"));
    SetValue(Rgb, PickedColor{PickerType::Rgb, {255, 128, 0}});
    SetValue(Cmyk, PickedColor{PickerType::Cmyk, {0, 1, 0.5, 0}});
    SetEnabled(Rgb, false);
    SetVisible(Label, false);
  }
  void OnOK() override {
    DoDataExchange(true);
    m_Reports.emplace_back("ok");
    if (m_Agrees) CDialog::OnOK();
  }
  void OnCancel() override {
    m_Reports.emplace_back("cancel");
    CDialog::OnCancel();
  }

  std::vector<std::string> m_Reports;
  std::vector<ControlValue> m_Values;
  bool m_Agrees = true;
};

TEST(DialogControls, values_items_and_states_reach_the_view_in_their_order) {
  ScriptedHost host;
  host.m_Views.PressAt("run", OkCommand);
  ControlsDialog dialog;
  EXPECT_EQ(dialog.DoModal(), OkCommand);
  EXPECT_EQ(host.m_Views.m_Told,
            (Told{"make 78", "value 11 10.5", "value 12 72", "value 13 1",
                  "items 16 [Gold] [Silver]", "value 16 Gold", "value 17 rgb 255 128 0",
                  "value 18 cmyk 0 1 0.5 0", "enabled 17 0", "visible 10 0", "run", "end"}));
}

TEST(DialogControls, ok_takes_the_values_that_the_dialog_set_where_nobody_changed_them) {
  ScriptedHost host;
  host.m_Views.PressAt("run", OkCommand);
  ControlsDialog dialog;
  EXPECT_EQ(dialog.DoModal(), OkCommand);
  EXPECT_EQ(dialog.m_Values, (std::vector<ControlValue>{
                                 10.5, 72.0, true, false, false, std::wstring(L"Gold"),
                                 PickedColor{PickerType::Rgb, {255, 128, 0}},
                                 PickedColor{PickerType::Cmyk, {0, 1, 0.5, 0}}, std::monostate()}));
}

TEST(DialogControls, ok_takes_the_values_that_a_person_entered) {
  ScriptedHost host;
  host.m_Views.FillAt("run", Width, 2.25);
  host.m_Views.FillAt("run", Blue, true);
  host.m_Views.FillAt("run", Name, std::wstring(L"Silver"));
  host.m_Views.PressAt("run", OkCommand);
  ControlsDialog dialog;
  EXPECT_EQ(dialog.DoModal(), OkCommand);
  EXPECT_EQ(dialog.m_Values[0], ControlValue(2.25));
  EXPECT_EQ(dialog.m_Values[2], ControlValue(false)) << "red";
  EXPECT_EQ(dialog.m_Values[3], ControlValue(true)) << "blue";
  EXPECT_EQ(dialog.m_Values[5], ControlValue(std::wstring(L"Silver")));
}

TEST(DialogControls, edits_and_pickers_report_by_message_the_rest_by_command) {
  ScriptedHost host;
  host.m_Views.m_Actions.emplace_back("run", [](DialogLogic& logic) {
    for (const int control : {Width, Count, Red, Blue, Cut, Name, Rgb, Cmyk})
      logic.ControlChanged(control);
  });
  host.m_Views.PressAt("run", CancelCommand);
  ControlsDialog dialog;
  EXPECT_EQ(dialog.DoModal(), CancelCommand);
  EXPECT_EQ(dialog.m_Reports,
            (Told{"changed 11 0", "changed 12 0", "command 13", "command 14", "command 15",
                  "command 16", "changed 17 0", "changed 18 0", "cancel"}));
}

TEST(DialogControls, a_change_of_an_unknown_control_or_one_without_a_value_is_no_report) {
  ControlsDialog dialog;
  for (const int control : {-1, 0, 999, int{Label}, int{Bar}, OkCommand, CancelCommand})
    dialog.ControlChanged(control);
  EXPECT_TRUE(dialog.m_Reports.empty());
  EXPECT_FALSE(dialog.HasEnded());
}

TEST(DialogControls, a_dialog_that_has_ended_takes_no_change) {
  ControlsDialog dialog;
  dialog.EndDialog(OkCommand);
  dialog.ControlChanged(Width);
  dialog.ControlChanged(Red);
  EXPECT_TRUE(dialog.m_Reports.empty());
}

TEST(DialogControls, on_ok_may_keep_the_dialog_up) {
  ScriptedHost host;
  host.m_Views.PressAt("run", OkCommand);
  host.m_Views.PressAt("run", CancelCommand);
  ControlsDialog dialog;
  dialog.m_Agrees = false;
  EXPECT_EQ(dialog.DoModal(), CancelCommand);
  EXPECT_EQ(dialog.m_Reports, (Told{"ok", "cancel"}));
}

TEST(DialogControls, without_a_view_have_no_value) {
  ControlsDialog dialog;
  dialog.DoDataExchange(false);
  dialog.DoDataExchange(true);
  EXPECT_EQ(dialog.m_Values, std::vector<ControlValue>(9));
}

TEST(DialogControls, a_hidden_or_disabled_control_keeps_its_value) {
  ScriptedHost host;
  host.m_Views.PressAt("run", OkCommand);
  ControlsDialog dialog;
  EXPECT_EQ(dialog.DoModal(), OkCommand);
  EXPECT_EQ(dialog.m_Values[6], ControlValue(PickedColor{PickerType::Rgb, {255, 128, 0}}));
}

}  // namespace
