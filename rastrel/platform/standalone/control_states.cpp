#include "rastrel/platform/standalone/control_states.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace rastrel::standalone {

namespace {

using host::ControlKind;

bool IsEdit(ControlKind kind) {
  return kind == ControlKind::DecimalEdit || kind == ControlKind::IntegerEdit;
}

host::ControlValue FirstValue(const host::DialogControl& control) {
  switch (control.kind) {
    case ControlKind::DecimalEdit:
    case ControlKind::IntegerEdit: return control.minimum;
    case ControlKind::Radio:
    case ControlKind::CheckBox: return false;
    case ControlKind::ComboBox: return std::wstring();
    case ControlKind::ColorPicker: return host::PickedColor{control.pickerType, {}};
    case ControlKind::Text:
    case ControlKind::Progress:
    case ControlKind::Button:
    case ControlKind::Fonts: break;
  }
  return {};
}

double NumberOf(const host::DialogControl& control, double number) {
  const double shown = control.kind == ControlKind::IntegerEdit ? std::trunc(number) : number;
  return shown >= control.minimum ? shown : control.minimum;
}

bool HasItem(const ControlState& state, const std::wstring& text) {
  return std::ranges::find(state.items, text) != state.items.end();
}

bool IsInRange(const host::PickedColor& color) {
  const bool isRgb = color.type == host::PickerType::Rgb;
  const double highest = isRgb ? 255 : 1;
  const auto count = isRgb ? 3 : 4;
  return std::all_of(color.components.begin(), color.components.begin() + count,
                     [highest](double part) { return part >= 0 && part <= highest; });
}

}  // namespace

ControlStates::ControlStates(const host::DialogResource& resource) {
  for (const host::DialogControl& control : resource.controls)
    m_Controls.push_back({control, control.text, FirstValue(control), {}});
}

ControlState* ControlStates::FindState(int control) {
  const auto found = std::ranges::find(m_Controls, control,
                                       [](const ControlState& state) { return state.control.id; });
  return found != m_Controls.end() ? &*found : nullptr;
}

const ControlState* ControlStates::Find(int control) const {
  const auto found = std::ranges::find(m_Controls, control,
                                       [](const ControlState& state) { return state.control.id; });
  return found != m_Controls.end() ? &*found : nullptr;
}

std::span<const ControlState> ControlStates::GetGroup(int control) const {
  const ControlState* const one = Find(control);
  if (one == nullptr || one->control.kind != ControlKind::Radio) return {};
  const auto isOther = [](const ControlState& state) {
    return state.control.kind != ControlKind::Radio;
  };
  const auto at = m_Controls.begin() + (one - m_Controls.data());
  const auto end = std::find_if(at, m_Controls.end(), isOther);
  const auto begin =
      std::find_if(std::make_reverse_iterator(at), m_Controls.rend(), isOther).base();
  return {begin, end};
}

void ControlStates::ClearGroup(int control) {
  for (const ControlState& other : GetGroup(control)) {
    if (ControlState* const state = FindState(other.control.id)) state->value = false;
  }
}

void ControlStates::SetText(int control, const std::wstring& text) {
  if (ControlState* const state = FindState(control)) state->text = text;
}

void ControlStates::SetValue(int control, const host::ControlValue& value) {
  ControlState* const state = FindState(control);
  if (state == nullptr || state->value.index() != value.index()) return;
  if (const auto* const color = std::get_if<host::PickedColor>(&value);
      color != nullptr && color->type != state->control.pickerType)
    return;
  if (state->control.kind == ControlKind::Radio && std::get<bool>(value)) ClearGroup(control);
  state->value = value;
  if (const auto* const number = std::get_if<double>(&value))
    state->value = NumberOf(state->control, *number);
  if (const auto* const text = std::get_if<std::wstring>(&value); text && !HasItem(*state, *text))
    state->value = std::wstring();
}

void ControlStates::SetItems(int control, std::span<const std::wstring> items) {
  ControlState* const state = FindState(control);
  if (state == nullptr || state->control.kind != ControlKind::ComboBox) return;
  state->items.assign(items.begin(), items.end());
  state->value = std::wstring();
}

void ControlStates::SetEnabled(int control, bool enabled) {
  if (ControlState* const state = FindState(control)) state->enabled = enabled;
}

void ControlStates::SetVisible(int control, bool visible) {
  if (ControlState* const state = FindState(control)) state->visible = visible;
}

host::ControlValue ControlStates::GetValue(int control) const {
  const ControlState* const state = Find(control);
  return state != nullptr ? state->value : host::ControlValue();
}

bool ControlStates::CanTake(int control, const host::ControlValue& value) const {
  const ControlState* const state = Find(control);
  if (state == nullptr || !state->IsOpen() || state->value.index() != value.index()) return false;
  const host::DialogControl& kind = state->control;
  if (IsEdit(kind.kind)) {
    const double number = std::get<double>(value);
    return std::isfinite(number) && NumberOf(kind, number) == number;
  }
  if (kind.kind == ControlKind::Radio) return std::get<bool>(value);
  if (kind.kind == ControlKind::ComboBox) return HasItem(*state, std::get<std::wstring>(value));
  if (const auto* const color = std::get_if<host::PickedColor>(&value))
    return color->type == kind.pickerType && IsInRange(*color);
  return kind.kind == ControlKind::CheckBox;
}

}  // namespace rastrel::standalone
