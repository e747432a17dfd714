#pragma once

#include <span>
#include <string>
#include <vector>

#include "rastrel/platform/host/dialogs.h"

namespace rastrel::standalone {

/// A control of a dialog with all that a view would show of it.
struct ControlState {
  host::DialogControl control;
  std::wstring text;         ///< as it is to be shown: translated, or the fixed text with its mark
  host::ControlValue value;  ///< of the control's type from the beginning
  std::vector<std::wstring> items;  ///< of a combo box
  bool enabled = true;
  bool visible = true;

  /// Whether a person could change its value.
  [[nodiscard]] bool IsOpen() const { return enabled && visible; }
};

/// The controls of a dialog for views that draw none: they are filled in by a program, or asked for
/// one after the other. The rules for values are the same as in a window.
class ControlStates {
 public:
  /// All enabled and visible. Edits begin with their minimum, the rest with false, an empty text or
  /// black (RGB) or no ink (CMYK).
  explicit ControlStates(const host::DialogResource& resource);

  /// As the operations of DialogView: an unknown control and a value of another type change
  /// nothing, a number below the minimum, or none, counts as the minimum, the number of a whole
  /// edit is truncated, a text that a combo box does not have chooses none (an empty text), and a
  /// checked radio button clears the others of its group.
  void SetText(int control, const std::wstring& text);
  void SetValue(int control, const host::ControlValue& value);
  void SetItems(int control, std::span<const std::wstring> items);
  void SetEnabled(int control, bool enabled);
  void SetVisible(int control, bool visible);
  /// The value; none of an unknown control.
  [[nodiscard]] host::ControlValue GetValue(int control) const;

  /// Whether a person could give the control this value now: it is visible and enabled, and the
  /// value is of its type, not below its minimum, whole in a whole edit, finite, of the picker's
  /// kind and range, or one of the combo box's items. A radio button can be checked, but not
  /// cleared.
  [[nodiscard]] bool CanTake(int control, const host::ControlValue& value) const;

  /// The controls, from top to bottom. Valid as long as this object.
  [[nodiscard]] std::span<const ControlState> GetControls() const { return m_Controls; }
  /// One of them; null for an unknown one.
  [[nodiscard]] const ControlState* Find(int control) const;
  /// The radio buttons of the group that this one belongs to, itself included.
  [[nodiscard]] std::span<const ControlState> GetGroup(int control) const;

 private:
  [[nodiscard]] ControlState* FindState(int control);
  void ClearGroup(int control);

  std::vector<ControlState> m_Controls;
};

}  // namespace rastrel::standalone
