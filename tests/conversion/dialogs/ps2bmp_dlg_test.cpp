// The dialog of the conversion to a bitmap, with scripted views.

#include "rastrel/conversion/dialogs/ps2bmp_dlg.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cwctype>
#include <functional>
#include <limits>
#include <map>
#include <set>

#include "tests/support/checked_host.h"
#include "tests/support/scripted_views.h"

using namespace rastrel::host;
using rastrel::test::HostCalls;
using Told = std::vector<std::string>;

namespace {

using Dialog = CPS2BmpDlg;

/// A recording host whose dialogs are scripted.
class DialogHost : public rastrel::test::CheckedHost {
 public:
  DialogViews& GetDialogViews() override { return m_Views; }
  rastrel::test::ScriptedViews m_Views;
};

class BitmapDialog : public ::testing::Test {
 protected:
  using Action = std::function<void(DialogLogic&)>;

  BitmapDialog() {
    m_Params.width = 21;
    m_Params.height = 29.7;
    m_Host.MayStay(L"Preferences", L"PS CMYK Color");
  }

  /// Shows the dialog, acts once it is on show, and presses the control. Returns DoModal's result.
  int Run(const Action& act = {}, int control = OkCommand) {
    m_Host.m_Views.m_Told.clear();
    m_Host.m_Views.m_Actions.clear();
    if (act) m_Host.m_Views.m_Actions.emplace_back("run", act);
    m_Host.m_Views.PressAt("run", control);
    CPS2BmpDlg dialog(m_Params, m_Names, nullptr);
    const int result = dialog.DoModal();
    m_Answer = dialog.GetParams();
    return result;
  }
  /// As a person fills in a control.
  void Fill(DialogLogic& dialog, int control, const ControlValue& value) {
    m_Host.m_Views.Fill(dialog, control, value);
  }
  /// The lines of the views that begin so.
  [[nodiscard]] Told Lines(const std::string& beginning) const {
    Told found;
    for (const std::string& line : m_Host.m_Views.m_Told)
      if (line.starts_with(beginning)) found.push_back(line);
    return found;
  }
  /// The lines after "run" that begin so.
  [[nodiscard]] Told LinesOnShow(const std::string& beginning) const {
    const Told& told = m_Host.m_Views.m_Told;
    Told found;
    for (auto line = std::find(told.begin(), told.end(), "run"); line != told.end(); ++line)
      if (line->starts_with(beginning)) found.push_back(*line);
    return found;
  }

  DialogHost m_Host;
  PS2BmpParams m_Params;
  std::vector<CString> m_Names;
  PS2BmpParams m_Answer;
};

PickedColor Rgb(double red, double green, double blue) {
  return {.type = PickerType::Rgb, .components = {red, green, blue, 0}};
}

PickedColor Cmyk(double cyan, double magenta, double yellow, double black) {
  return {.type = PickerType::Cmyk, .components = {cyan, magenta, yellow, black}};
}

const Told ColorsOff{"enabled 2013 0", "enabled 2014 0", "enabled 2015 0", "enabled 2016 0",
                     "enabled 2017 0", "enabled 2018 0", "enabled 2024 0"};
Told ColorsOn(const std::string& rgb, const std::string& cmyk, const std::string& names) {
  return {"enabled 2013 1",      "enabled 2014 1",       "enabled 2015 1",       "enabled 2016 1",
          "enabled 2017 " + rgb, "enabled 2018 " + cmyk, "enabled 2024 " + names};
}

TEST_F(BitmapDialog, has_the_controls_by_their_identifiers_steps_minimums_and_picker_types) {
  const CPS2BmpDlg dialog(m_Params, m_Names, nullptr);
  const DialogResource& resource = dialog.GetResource();
  EXPECT_EQ(resource.id, 1000);
  const auto find = [&](int id) {
    for (const DialogControl& control : resource.controls)
      if (control.id == id) return control;
    ADD_FAILURE() << "no control " << id;
    return DialogControl{};
  };
  for (const int edit : {2000, 2001}) {
    EXPECT_EQ(find(edit).kind, ControlKind::DecimalEdit);
    EXPECT_EQ(find(edit).step, 0.1);
    EXPECT_EQ(find(edit).minimum, 0);
  }
  EXPECT_EQ(find(2002).kind, ControlKind::IntegerEdit);
  EXPECT_EQ(find(2002).step, 1.0);
  EXPECT_EQ(find(2002).minimum, 1);
  for (const int text : {2003, 2006, 2007, 2008, 2011, 2013, 2020})
    EXPECT_EQ(find(text).kind, ControlKind::Text) << text;
  for (const int radio : {2014, 2015, 2016}) EXPECT_EQ(find(radio).kind, ControlKind::Radio);
  EXPECT_EQ(find(2017).kind, ControlKind::ColorPicker);
  EXPECT_EQ(static_cast<int>(find(2017).pickerType), 2);
  EXPECT_EQ(find(2018).kind, ControlKind::ColorPicker);
  EXPECT_EQ(static_cast<int>(find(2018).pickerType), 7);
  EXPECT_EQ(find(2023).kind, ControlKind::CheckBox);
  EXPECT_EQ(find(2024).kind, ControlKind::ComboBox);
  EXPECT_EQ(find(1).kind, ControlKind::Button);
  EXPECT_EQ(find(2).kind, ControlKind::Button);
  EXPECT_EQ(resource.controls.size(), 19U);
}

TEST_F(BitmapDialog, has_each_label_in_front_of_its_edit_and_the_radio_buttons_in_a_row) {
  const CPS2BmpDlg dialog(m_Params, m_Names, nullptr);
  std::vector<int> order;
  for (const DialogControl& control : dialog.GetResource().controls) order.push_back(control.id);
  EXPECT_EQ(order, (std::vector<int>{2011, 2006, 2000, 2007, 2001, 2008, 2002, 2003, 2023, 2020,
                                     2013, 2014, 2015, 2016, 2017, 2018, 2024, 1, 2}));
}

TEST_F(BitmapDialog, gives_no_letter_to_two_controls) {
  const CPS2BmpDlg dialog(m_Params, m_Names, nullptr);
  std::set<wchar_t> letters;
  for (const DialogControl& control : dialog.GetResource().controls) {
    const std::wstring text = control.text;
    const std::size_t mark = text.find(L'&');
    if (mark == std::wstring::npos) continue;
    EXPECT_TRUE(letters.insert(static_cast<wchar_t>(std::towlower(text.at(mark + 1)))).second);
  }
  EXPECT_EQ(letters.size(), 7U);
}

TEST_F(BitmapDialog, begins_with_its_values_and_translates_its_texts_last) {
  m_Params.cut.resolution = 254;
  EXPECT_EQ(Run(), OkCommand);
  // 29.7 by 21 cm at 254 dpi are 2970 by 2100 pixels of 3 bytes: 18,711,000 bytes.
  EXPECT_EQ(m_Host.m_Views.m_Told, (Told{"make 1000",
                                         "value 2000 29.7",
                                         "value 2001 21",
                                         "value 2002 254",
                                         "text 2003 17.8 MB",
                                         "value 2017 rgb 0 0 0",
                                         "value 2018 cmyk 1 1 1 1",
                                         "value 2023 0",
                                         "visible 2024 0",
                                         "visible 2016 0",
                                         "value 2014 1",
                                         "enabled 2013 0",
                                         "enabled 2014 0",
                                         "enabled 2015 0",
                                         "enabled 2016 0",
                                         "enabled 2017 0",
                                         "enabled 2018 0",
                                         "enabled 2024 0",
                                         "text 0 Convert to Bitmap",
                                         "text 2011 Size of the bitmap",
                                         "text 2006 &Height (cm):",
                                         "text 2007 &Width (cm):",
                                         "text 2008 &Resolution (dpi):",
                                         "text 2023 Cut &line",
                                         "text 2020 Paths in this colour become cut lines.",
                                         "text 2013 Colour of the cut line",
                                         "text 2014 RG&B",
                                         "text 2015 &CMYK",
                                         "text 2016 &Named colour",
                                         "text 2017 RGB colour",
                                         "text 2018 CMYK colour",
                                         "text 1 OK",
                                         "text 2 Cancel",
                                         "run",
                                         "end"}));
  EXPECT_EQ(m_Answer.mode, 2);
  EXPECT_EQ(m_Answer.height, 29.7);
  EXPECT_EQ(m_Answer.width, 21);
  EXPECT_EQ(m_Answer.cut.resolution, 254);
  EXPECT_EQ(m_Answer.cut.enabled, 0);
}

TEST_F(BitmapDialog, hides_the_sizes_of_a_file_without_bounds) {
  m_Params.hasBounds = 0;
  Run();
  EXPECT_EQ(Lines("visible"),
            (Told{"visible 2006 0", "visible 2000 0", "visible 2007 0", "visible 2001 0",
                  "visible 2003 0", "visible 2024 0", "visible 2016 0"}));
}

TEST_F(BitmapDialog, shows_and_takes_lengths_in_the_units_of_the_host) {
  struct Case {
    int unit;
    const char* height;
    const char* label;
  };
  for (const Case& one : {Case{0, "value 2000 25.4", "text 2006 &Height (cm):"},
                          Case{1, "value 2000 254", "text 2006 &Height (mm):"},
                          Case{2, "value 2000 10", "text 2006 &Height (in):"},
                          Case{3, "value 2000 25.4", "text 2006 &Height (cm):"},
                          Case{-1, "value 2000 25.4", "text 2006 &Height (cm):"}}) {
    m_Host.m_Calls.Always("GetCurrentUnits", one.unit);
    m_Params.height = 25.4;
    Run([&](DialogLogic& dialog) { Fill(dialog, Dialog::WidthEdit, 2.0); });
    EXPECT_EQ(Lines("value 2000"), Told{one.height});
    EXPECT_EQ(Lines("text 2006"), Told{one.label});
    const double centimetres = one.unit == 1 ? 0.2 : one.unit == 2 ? 5.08 : 2.0;
    EXPECT_DOUBLE_EQ(m_Answer.width, centimetres) << one.unit;
  }
}

TEST_F(BitmapDialog, follows_each_change_of_an_edit_with_the_size) {
  m_Params.cut.resolution = 254;
  m_Params.height = m_Params.width = 10;
  Run([&](DialogLogic& dialog) {
    Fill(dialog, Dialog::HeightEdit, 20.0);
    Fill(dialog, Dialog::WidthEdit, 0.25);
    Fill(dialog, Dialog::ResolutionEdit, 127.0);
  });
  EXPECT_EQ(Lines("text 2003"),
            (Told{"text 2003 2.9 MB",      // 1000 x 1000 x 3
                  "text 2003 5.7 MB",      // 1000 x 2000 x 3
                  "text 2003 146.5 KB",    // 25 x 2000 x 3 are 150,000
                  "text 2003 36.6 KB"}));  // 12.5 x 1000 x 3 are 37,500
}

TEST_F(BitmapDialog, writes_the_size_only_when_its_text_changes) {
  m_Params.cut.resolution = 254;
  m_Params.height = m_Params.width = 10;
  Run([&](DialogLogic& dialog) {
    Fill(dialog, Dialog::HeightEdit, 10.001);
    Fill(dialog, Dialog::HeightEdit, 10.0);
  });
  EXPECT_EQ(Lines("text 2003"), Told{"text 2003 2.9 MB"});
}

TEST_F(BitmapDialog, stores_a_change_of_the_three_edits_alone) {
  m_Params.cut.resolution = 254;
  CPS2BmpDlg dialog(m_Params, m_Names, nullptr);
  m_Host.m_Views.PressAt("run", CancelCommand);
  m_Host.m_Views.m_Actions.insert(m_Host.m_Views.m_Actions.begin(),
                                  {"run", [&](DialogLogic& shown) {
                                     Fill(shown, Dialog::HeightEdit, 5.0);
                                     for (const std::uintptr_t other : {1999U, 2003U, 2017U, 0U})
                                       dialog.SendMessage(0x7E8, other, 0);
                                   }});
  dialog.DoModal();
  EXPECT_EQ(dialog.GetParams().height, 5.0);
  EXPECT_EQ(dialog.GetParams().width, 21);
  EXPECT_EQ(dialog.GetParams().cut.resolution, 254);
}

TEST_F(BitmapDialog, has_no_named_colors_without_names_and_falls_back_to_rgb) {
  m_Params.cut.colorKind = CutColorNamed;
  m_Params.cut.enabled = 1;
  Run();
  EXPECT_EQ(Lines("visible"), (Told{"visible 2024 0", "visible 2016 0"}));
  EXPECT_EQ(Lines("items"), Told());
  EXPECT_EQ(Lines("value 2014"), Told{"value 2014 1"});
  EXPECT_EQ(Lines("enabled"), ColorsOn("1", "0", "0"));
  EXPECT_EQ(m_Answer.cut.colorKind, CutColorRgb);
}

TEST_F(BitmapDialog, offers_the_names_in_order_and_the_first_chosen) {
  m_Names = {L"Kiss Cut", L"Die", L"Die"};
  Run();
  EXPECT_EQ(Lines("items"), Told{"items 2024 [Kiss Cut] [Die] [Die]"});
  EXPECT_EQ(Lines("value 2024"), Told{"value 2024 Kiss Cut"});
  EXPECT_EQ(Lines("visible"), Told());
}

TEST_F(BitmapDialog, enables_the_one_control_of_the_kind_of_color) {
  m_Names = {L"Die"};
  m_Params.cut.enabled = 1;
  Run([&](DialogLogic& dialog) {
    Fill(dialog, Dialog::CmykRadio, true);
    Fill(dialog, Dialog::NamedRadio, true);
    Fill(dialog, Dialog::RgbRadio, true);
  });
  Told expected = ColorsOn("1", "0", "0");
  for (const Told& step :
       {ColorsOn("0", "1", "0"), ColorsOn("0", "0", "1"), ColorsOn("1", "0", "0")})
    expected.insert(expected.end(), step.begin(), step.end());
  EXPECT_EQ(Lines("enabled"), expected);
  EXPECT_EQ(m_Answer.cut.colorKind, CutColorRgb);
}

TEST_F(BitmapDialog, begins_with_the_kind_of_color_that_it_was_given) {
  m_Names = {L"Die"};
  m_Params.cut.enabled = 1;
  m_Params.cut.colorKind = CutColorCmyk;
  Run();
  EXPECT_EQ(Lines("value 2015"), Told{"value 2015 1"});
  EXPECT_EQ(Lines("enabled"), ColorsOn("0", "1", "0"));
  m_Params.cut.colorKind = CutColorNamed;
  Run();
  EXPECT_EQ(Lines("value 2016"), Told{"value 2016 1"});
  EXPECT_EQ(Lines("enabled"), ColorsOn("0", "0", "1"));
}

TEST_F(BitmapDialog, checks_no_button_for_a_kind_that_it_does_not_know) {
  m_Params.cut.enabled = 1;
  for (const int kind : {-1, 3, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    m_Params.cut.colorKind = kind;
    Run();
    for (const char* radio : {"value 2014", "value 2015", "value 2016"})
      EXPECT_EQ(Lines(radio), Told()) << kind;
    EXPECT_EQ(Lines("enabled"), ColorsOn("0", "0", "0"));
  }
}

TEST_F(BitmapDialog, disables_all_colors_without_a_cut_line) {
  m_Names = {L"Die"};
  Run([&](DialogLogic& dialog) {
    Fill(dialog, Dialog::CutLineCheckBox, true);
    Fill(dialog, Dialog::NamedRadio, true);
    Fill(dialog, Dialog::CutLineCheckBox, false);
    Fill(dialog, Dialog::CutLineCheckBox, true);
  });
  Told expected = ColorsOff;
  for (const Told& step :
       {ColorsOn("1", "0", "0"), ColorsOn("0", "0", "1"), ColorsOff, ColorsOn("0", "0", "1")})
    expected.insert(expected.end(), step.begin(), step.end());
  EXPECT_EQ(Lines("enabled"), expected);
  EXPECT_EQ(m_Answer.cut.enabled, 1);
  EXPECT_EQ(m_Answer.cut.colorKind, CutColorNamed);
  Run([&](DialogLogic& dialog) {
    Fill(dialog, Dialog::CutLineCheckBox, true);
    Fill(dialog, Dialog::CutLineCheckBox, false);
  });
  EXPECT_EQ(m_Answer.cut.enabled, 0);
}

TEST_F(BitmapDialog, begins_checked_when_a_cut_line_is_wanted) {
  m_Params.cut.enabled = 7;
  Run();
  EXPECT_EQ(Lines("value 2023"), Told{"value 2023 1"});
  EXPECT_EQ(m_Answer.cut.enabled, 7) << "nobody touched it";
}

TEST_F(BitmapDialog, passes_over_the_button_that_another_one_cleared) {
  m_Params.cut.enabled = 1;
  Run([&](DialogLogic& dialog) {
    Fill(dialog, Dialog::CmykRadio, true);
    dialog.ControlChanged(Dialog::RgbRadio);  // which is clear by now
  });
  EXPECT_EQ(m_Answer.cut.colorKind, CutColorCmyk);
}

TEST_F(BitmapDialog, takes_an_rgb_color_from_its_picker_and_keeps_no_setting) {
  m_Params.cut.enabled = 1;
  Run([&](DialogLogic& dialog) { Fill(dialog, Dialog::RgbPicker, Rgb(255, 128, 0)); });
  EXPECT_EQ(m_Answer.cut.color.GetColorSpace(), COLORSPACE_RGB);
  EXPECT_EQ(m_Answer.cut.color.GetComponents(), (std::array<double, 4>{255, 128, 0, 0}));
  EXPECT_TRUE(m_Answer.cut.IsColorMatchKVI(L"RGB: 1.000  0.502  0.000"));
  EXPECT_EQ(m_Host.m_Calls.Count("Write"), 0U);
}

TEST_F(BitmapDialog, takes_a_cmyk_color_and_keeps_it_for_the_next_time) {
  m_Params.cut.enabled = 1;
  Run([&](DialogLogic& dialog) {
    Fill(dialog, Dialog::CmykRadio, true);
    Fill(dialog, Dialog::CmykPicker, Cmyk(0, 1, 0.5, 0.25));
  });
  EXPECT_EQ(m_Answer.cut.color.GetColorSpace(), COLORSPACE_CMYK);
  EXPECT_TRUE(m_Answer.cut.IsColorMatchKVI(L"CMYK: 0.0000  1.0000  0.5000  0.2500"));
  EXPECT_EQ(m_Host.m_Calls.Of({"Write"}),
            (HostCalls::Lines{"Write(\"Preferences\", \"PS CMYK Color\", "
                              "\"0.000000, 1.000000, 0.500000, 0.250000,\")"}));
  Run();
  EXPECT_EQ(Lines("value 2018"), Told{"value 2018 cmyk 0 1 0.5 0.25"});
}

TEST_F(BitmapDialog, begins_with_all_inks_where_the_setting_has_fewer_than_four_numbers) {
  for (const wchar_t* kept :
       {L"", L"0.5", L"0.5, 0.5, 0.5", L"0.5, 0.5, 0.5, x", L"0.5 0.5 0.5 0.5"}) {
    m_Host.m_Settings[{L"Preferences", L"PS CMYK Color"}] = kept;
    Run();
    EXPECT_EQ(Lines("value 2018"), Told{"value 2018 cmyk 1 1 1 1"}) << kept;
  }
  m_Host.m_Settings[{L"Preferences", L"PS CMYK Color"}] = L"0.5, 0.25, 0, 1";
  Run();
  EXPECT_EQ(Lines("value 2018"), Told{"value 2018 cmyk 0.5 0.25 0 1"});
}

TEST_F(BitmapDialog, shows_the_nearest_inks_for_a_setting_out_of_range) {
  m_Host.m_Settings[{L"Preferences", L"PS CMYK Color"}] = L"-1, 50, nan, inf";
  Run();
  EXPECT_EQ(Lines("value 2018"), Told{"value 2018 cmyk 0 1 0 1"});
}

TEST_F(BitmapDialog, takes_the_text_of_the_combo_box_as_the_color_s_name) {
  m_Names = {L"Kiss Cut", L"Die"};
  m_Params.cut.enabled = 1;
  Run([&](DialogLogic& dialog) {
    Fill(dialog, Dialog::NamedRadio, true);
    Fill(dialog, Dialog::ColorNames, std::wstring(L"Die"));
  });
  EXPECT_EQ(m_Answer.cut.colorKind, CutColorNamed);
  EXPECT_TRUE(m_Answer.cut.IsColorMatchKVI(L"Die"));
  EXPECT_EQ(m_Host.m_Calls.Count("Write"), 0U);
}

TEST_F(BitmapDialog, returns_cancel_and_keeps_no_setting_when_it_is_given_up) {
  const auto act = [&](DialogLogic& dialog) {
    Fill(dialog, Dialog::CutLineCheckBox, true);
    Fill(dialog, Dialog::CmykRadio, true);
  };
  EXPECT_EQ(Run(act, CancelCommand), CancelCommand);
  EXPECT_EQ(m_Host.m_Calls.Count("Write"), 0U);
}

TEST_F(BitmapDialog, can_be_shown_again) {
  m_Host.m_Views.PressAt("run", OkCommand);
  CPS2BmpDlg dialog(m_Params, m_Names, nullptr);
  EXPECT_EQ(dialog.DoModal(), OkCommand);
  m_Host.m_Views.m_Told.clear();
  m_Host.m_Views.PressAt("run", CancelCommand);
  EXPECT_EQ(dialog.DoModal(), CancelCommand);
  EXPECT_EQ(Lines("text 2003").size(), 1U) << "the new view has the size, too";
}

/// A view that has these values, whatever the dialog sets, and presses OK.
class AnyValues : public DialogViews {
 public:
  std::map<int, ControlValue> m_Values;
  std::vector<int> m_Changed;  ///< controls that are reported before OK
  bool m_BeforeInit = false;   ///< OK is pressed while the view is made

  std::unique_ptr<DialogView> MakeView(DialogLogic& dialog) override {
    if (m_BeforeInit) dialog.Command(OkCommand);
    return std::make_unique<View>(*this, dialog);
  }
  void ShowMessage(CWnd*, const std::wstring&, const std::wstring&) override {}

 private:
  class View : public DialogView {
   public:
    View(AnyValues& views, DialogLogic& dialog) : m_Views(views), m_Dialog(dialog) {}
    void SetText(int, const std::wstring&) override {}
    void SetRange(int, int, int) override {}
    void SetPosition(int, int) override {}
    void RunModal() override {
      for (const int control : m_Views.m_Changed) m_Dialog.ControlChanged(control);
      m_Dialog.Command(OkCommand);
    }
    ControlValue GetValue(int control) override {
      const auto found = m_Views.m_Values.find(control);
      return found == m_Views.m_Values.end() ? ControlValue() : found->second;
    }

   private:
    AnyValues& m_Views;
    DialogLogic& m_Dialog;
  };
};

class AnyValuesHost : public rastrel::test::RecordingHost {
 public:
  DialogViews& GetDialogViews() override { return m_Views; }
  AnyValues m_Views;
};

PS2BmpParams AnswerOf(AnyValuesHost& host, const PS2BmpParams& params = {}) {
  for (const int control : {2000, 2001, 2002, 2014, 2015, 2016, 2017, 2018, 2023, 2024})
    host.m_Views.m_Changed.push_back(control);
  CPS2BmpDlg dialog(params, {L"Die"}, nullptr);
  EXPECT_EQ(dialog.DoModal(), OkCommand);
  return dialog.GetParams();
}

TEST(BitmapDialogValues, keep_what_they_were_with_a_view_that_has_none) {
  AnyValuesHost host;
  PS2BmpParams params;
  params.height = 3;
  params.width = 4;
  params.cut.resolution = 300;
  host.m_Views.m_Changed = {2000, 2001, 2002, 2023};
  CPS2BmpDlg dialog(params, {}, nullptr);
  EXPECT_EQ(dialog.DoModal(), OkCommand);
  EXPECT_EQ(dialog.GetParams().height, 3);
  EXPECT_EQ(dialog.GetParams().width, 4);
  EXPECT_EQ(dialog.GetParams().cut.resolution, 300);
  EXPECT_EQ(dialog.GetParams().cut.enabled, 0);
  EXPECT_EQ(dialog.GetParams().cut.color, params.cut.color);
}

TEST(BitmapDialogValues, that_no_edit_allows_change_nothing) {
  for (const double value : {-1.0, -1e300, std::nan(""), std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity()}) {
    AnyValuesHost host;
    for (const int edit : {2000, 2001, 2002}) host.m_Views.m_Values[edit] = value;
    PS2BmpParams params;
    params.height = 3;
    params.width = 4;
    const PS2BmpParams answer = AnswerOf(host, params);
    EXPECT_EQ(answer.height, 3) << value;
    EXPECT_EQ(answer.width, 4) << value;
    EXPECT_EQ(answer.cut.resolution, 72) << value;
  }
}

TEST(BitmapDialogValues, have_the_limits_of_their_edits) {
  for (const auto& [typed, resolution] :
       {std::pair(0.0, 72), std::pair(0.999, 72), std::pair(1.0, 1), std::pair(1.999, 1),
        std::pair(2.0, 2), std::pair(2147483646.0, 2147483646), std::pair(2147483647.0, 2147483647),
        std::pair(2147483648.0, 2147483647), std::pair(1e300, 2147483647)}) {
    AnyValuesHost host;
    host.m_Views.m_Values[2002] = typed;
    EXPECT_EQ(AnswerOf(host).cut.resolution, resolution) << typed;
  }
  for (const double length : {0.0, 0.001, 1e300}) {
    AnyValuesHost host;
    host.m_Views.m_Values[2000] = length;
    EXPECT_EQ(AnswerOf(host).height, length);
  }
}

TEST(BitmapDialogValues, of_another_type_change_nothing) {
  AnyValuesHost host;
  for (const int edit : {2000, 2001, 2002}) host.m_Views.m_Values[edit] = std::wstring(L"5");
  host.m_Views.m_Values[2023] = 1.0;
  host.m_Views.m_Values[2014] = true;
  host.m_Views.m_Values[2015] = false;
  host.m_Views.m_Values[2016] = false;
  host.m_Views.m_Values[2017] = Cmyk(1, 0, 0, 0);
  const PS2BmpParams answer = AnswerOf(host);
  EXPECT_EQ(answer.height, 0);
  EXPECT_EQ(answer.cut.resolution, 72);
  EXPECT_EQ(answer.cut.enabled, 0);
  EXPECT_EQ(answer.cut.color, PS2BmpParams().cut.color);
}

TEST(BitmapDialogValues, of_a_picker_are_brought_into_its_range) {
  AnyValuesHost host;
  host.m_Views.m_Values[2014] = true;
  host.m_Views.m_Values[2015] = false;
  host.m_Views.m_Values[2016] = false;
  host.m_Views.m_Values[2017] = Rgb(-5, 300, std::nan(""));
  EXPECT_EQ(AnswerOf(host).cut.color.GetComponents(), (std::array<double, 4>{0, 255, 0, 0}));
}

TEST(BitmapDialogValues, of_a_dialog_that_is_answered_before_it_is_ready_keep_their_mode) {
  AnyValuesHost host;
  host.m_Views.m_BeforeInit = true;
  PS2BmpParams params;
  params.mode = 1;
  CPS2BmpDlg dialog(params, {}, nullptr);
  EXPECT_EQ(dialog.DoModal(), OkCommand);
  EXPECT_EQ(dialog.GetParams().mode, 1);
}

}  // namespace
