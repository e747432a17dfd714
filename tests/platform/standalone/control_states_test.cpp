#include "rastrel/platform/standalone/control_states.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

using namespace rastrel::host;
using rastrel::standalone::ControlState;
using rastrel::standalone::ControlStates;

namespace {

enum Id { Label = 10, Width, Count, First, Second, Other, Alone, Cut, Name, Rgb, Cmyk };
constexpr std::array<DialogControl, 11> Controls{{
    {Label, ControlKind::Text, L"(*v*)Label"},
    {Width, ControlKind::DecimalEdit, L"", 0.1, 0},
    {Count, ControlKind::IntegerEdit, L"", 1, 1},
    {First, ControlKind::Radio, L""},
    {Second, ControlKind::Radio, L""},
    {Other, ControlKind::Text, L""},
    {Alone, ControlKind::Radio, L""},
    {Cut, ControlKind::CheckBox, L""},
    {Name, ControlKind::ComboBox, L""},
    {Rgb, ControlKind::ColorPicker, L""},
    {Cmyk, ControlKind::ColorPicker, L"", 1, 0, PickerType::Cmyk},
}};
constexpr DialogResource Resource{79, L"", Controls};
constexpr double Infinity = std::numeric_limits<double>::infinity();
const double NoNumber = std::nan("");

PickedColor RgbColor(double red, double green, double blue) {
  return {PickerType::Rgb, {red, green, blue, 0}};
}

PickedColor CmykColor(double cyan, double magenta, double yellow, double black) {
  return {PickerType::Cmyk, {cyan, magenta, yellow, black}};
}

TEST(ControlStates, begin_with_the_resource_s_texts_and_values_of_their_type) {
  const ControlStates states(Resource);
  EXPECT_EQ(states.GetControls().size(), Controls.size());
  EXPECT_EQ(states.Find(Label)->text, L"(*v*)Label");
  EXPECT_EQ(states.GetValue(Label), ControlValue());
  EXPECT_EQ(states.GetValue(Width), ControlValue(0.0));
  EXPECT_EQ(states.GetValue(Count), ControlValue(1.0));
  EXPECT_EQ(states.GetValue(First), ControlValue(false));
  EXPECT_EQ(states.GetValue(Cut), ControlValue(false));
  EXPECT_EQ(states.GetValue(Name), ControlValue(std::wstring()));
  EXPECT_EQ(states.GetValue(Rgb), ControlValue(RgbColor(0, 0, 0)));
  EXPECT_EQ(states.GetValue(Cmyk), ControlValue(CmykColor(0, 0, 0, 0)));
  for (const ControlState& state : states.GetControls()) EXPECT_TRUE(state.IsOpen());
}

TEST(ControlStates, an_unknown_control_changes_nothing_and_has_no_value) {
  ControlStates states(Resource);
  states.SetText(99, L"x");
  states.SetValue(99, 1.0);
  states.SetItems(99, {});
  states.SetEnabled(99, false);
  states.SetVisible(99, false);
  EXPECT_EQ(states.Find(99), nullptr);
  EXPECT_EQ(states.GetValue(99), ControlValue());
  EXPECT_TRUE(states.GetGroup(99).empty());
  EXPECT_FALSE(states.CanTake(99, 1.0));
}

TEST(ControlStates, a_value_of_another_type_changes_nothing) {
  ControlStates states(Resource);
  states.SetValue(Width, true);
  states.SetValue(Width, std::monostate());
  states.SetValue(Cut, 1.0);
  states.SetValue(Rgb, CmykColor(1, 1, 1, 1));
  states.SetValue(Label, std::wstring(L"x"));
  EXPECT_EQ(states.GetValue(Width), ControlValue(0.0));
  EXPECT_EQ(states.GetValue(Cut), ControlValue(false));
  EXPECT_EQ(states.GetValue(Rgb), ControlValue(RgbColor(0, 0, 0)));
  EXPECT_EQ(states.GetValue(Label), ControlValue());
}

TEST(ControlStates, a_number_below_the_minimum_or_none_counts_as_the_minimum) {
  ControlStates states(Resource);
  for (const auto& [number, shown] : {std::pair{0.99, 1.0},
                                      {1.0, 1.0},
                                      {1.99, 1.0},
                                      {2.0, 2.0},
                                      {-5.0, 1.0},
                                      {NoNumber, 1.0},
                                      {-Infinity, 1.0}}) {
    states.SetValue(Count, number);
    EXPECT_EQ(states.GetValue(Count), ControlValue(shown)) << number;
  }
  states.SetValue(Width, -0.1);
  EXPECT_EQ(states.GetValue(Width), ControlValue(0.0));
  states.SetValue(Width, 0.1);
  EXPECT_EQ(states.GetValue(Width), ControlValue(0.1));
}

TEST(ControlStates, a_checked_radio_button_clears_its_group_alone) {
  ControlStates states(Resource);
  states.SetValue(Alone, true);
  states.SetValue(First, true);
  states.SetValue(Second, true);
  EXPECT_EQ(states.GetValue(First), ControlValue(false));
  EXPECT_EQ(states.GetValue(Second), ControlValue(true));
  EXPECT_EQ(states.GetValue(Alone), ControlValue(true)) << "a text is between the two groups";
  states.SetValue(First, false);
  EXPECT_EQ(states.GetValue(Second), ControlValue(true)) << "clearing one checks none";
}

TEST(ControlStates, a_group_is_the_radio_buttons_that_follow_each_other) {
  const ControlStates states(Resource);
  ASSERT_EQ(states.GetGroup(Second).size(), 2U);
  EXPECT_EQ(states.GetGroup(Second).front().control.id, First);
  EXPECT_EQ(states.GetGroup(First).back().control.id, Second);
  EXPECT_EQ(states.GetGroup(Alone).size(), 1U);
  EXPECT_TRUE(states.GetGroup(Cut).empty());
}

TEST(ControlStates, a_combo_box_has_one_of_its_items_or_none) {
  ControlStates states(Resource);
  const std::array<std::wstring, 2> names{L"Gold", L"Silver"};
  states.SetItems(Name, names);
  EXPECT_EQ(states.GetValue(Name), ControlValue(std::wstring()));
  states.SetValue(Name, std::wstring(L"Silver"));
  EXPECT_EQ(states.GetValue(Name), ControlValue(std::wstring(L"Silver")));
  states.SetValue(Name, std::wstring(L"silver"));
  EXPECT_EQ(states.GetValue(Name), ControlValue(std::wstring()));
  states.SetItems(Width, names);
  EXPECT_TRUE(states.Find(Width)->items.empty());
}

TEST(ControlStates, a_person_can_enter_finite_numbers_from_the_minimum_on) {
  const ControlStates states(Resource);
  for (const double number : {0.0, 0.001, 1e6}) EXPECT_TRUE(states.CanTake(Width, number));
  for (const double number : {-0.001, NoNumber, Infinity, -Infinity})
    EXPECT_FALSE(states.CanTake(Width, number)) << number;
  for (const double number : {1.0, 2.0, 1e6}) EXPECT_TRUE(states.CanTake(Count, number));
  for (const double number : {0.0, 0.5, 1.5, -1.0})
    EXPECT_FALSE(states.CanTake(Count, number)) << number;
  EXPECT_FALSE(states.CanTake(Width, true));
}

TEST(ControlStates, a_person_can_pick_colors_of_the_picker_s_kind_and_range) {
  const ControlStates states(Resource);
  EXPECT_TRUE(states.CanTake(Rgb, RgbColor(0, 255, 127.5)));
  EXPECT_FALSE(states.CanTake(Rgb, RgbColor(0, 255.1, 0)));
  EXPECT_FALSE(states.CanTake(Rgb, RgbColor(-1, 0, 0)));
  EXPECT_FALSE(states.CanTake(Rgb, RgbColor(NoNumber, 0, 0)));
  EXPECT_FALSE(states.CanTake(Rgb, CmykColor(0, 0, 0, 0)));
  EXPECT_TRUE(states.CanTake(Cmyk, CmykColor(0, 1, 0.5, 0)));
  EXPECT_FALSE(states.CanTake(Cmyk, CmykColor(0, 0, 0, 1.01)));
}

TEST(ControlStates, a_person_can_check_a_radio_button_but_not_clear_it) {
  const ControlStates states(Resource);
  EXPECT_TRUE(states.CanTake(First, true));
  EXPECT_FALSE(states.CanTake(First, false));
  EXPECT_TRUE(states.CanTake(Cut, true));
  EXPECT_TRUE(states.CanTake(Cut, false));
  EXPECT_FALSE(states.CanTake(Label, std::monostate()));
}

TEST(ControlStates, a_person_can_not_change_a_hidden_or_disabled_control) {
  ControlStates states(Resource);
  states.SetEnabled(Width, false);
  states.SetVisible(Cut, false);
  EXPECT_FALSE(states.CanTake(Width, 1.0));
  EXPECT_FALSE(states.CanTake(Cut, true));
  states.SetEnabled(Width, true);
  states.SetVisible(Cut, true);
  EXPECT_TRUE(states.CanTake(Width, 1.0));
  EXPECT_TRUE(states.CanTake(Cut, true));
}

}  // namespace
