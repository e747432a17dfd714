#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "rastrel/platform/host/dialogs.h"

class QButtonGroup;
class QWidget;

namespace rastrel::qt {

/// A control that has a value, with its widget. The widget belongs to the window.
class InputControl {
 public:
  using Changed = std::function<void()>;

  InputControl() = default;
  InputControl(const InputControl&) = delete;
  InputControl& operator=(const InputControl&) = delete;
  virtual ~InputControl() = default;

  [[nodiscard]] virtual QWidget& GetWidget() = 0;
  /// As the operations of DialogView. A change that comes from here is not reported.
  virtual void SetValue(const host::ControlValue& value) = 0;
  [[nodiscard]] virtual host::ControlValue GetValue() const = 0;
  virtual void SetItems(std::span<const std::wstring> /*items*/) {}
  /// The control's own text; a radio button and a check box show it.
  virtual void SetText(const QString& text) = 0;
};

/// Makes the control of an edit, a combo box or a color picker. `changed` is called after each
/// change of the user's, and outlives the control.
[[nodiscard]] std::unique_ptr<InputControl> MakeInputControl(const host::DialogControl& control,
                                                             QWidget* parent,
                                                             InputControl::Changed changed);
/// Makes a check box, or a radio button of a group; `group` is null for a check box.
[[nodiscard]] std::unique_ptr<InputControl> MakeChoice(const host::DialogControl& control,
                                                       QWidget* parent, QButtonGroup* group,
                                                       InputControl::Changed changed);

}  // namespace rastrel::qt
