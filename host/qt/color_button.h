#pragma once

#include <QPushButton>
#include <functional>

#include "rastrel/platform/host/dialogs.h"

namespace rastrel::qt {

/// The color on a screen; inks without a profile.
[[nodiscard]] QColor ScreenColor(const host::PickedColor& color);

/// A color picker: a button that shows the color and its numbers, and opens an editor for them.
class ColorButton : public QPushButton {
 public:
  ColorButton(host::PickerType type, QWidget* parent);

  /// Called after each change of the user's; must be set before the window is shown.
  std::function<void()> m_Changed;

  /// Shows a color of the picker's type; one of another type changes nothing.
  void SetColor(const host::PickedColor& color);
  [[nodiscard]] const host::PickedColor& GetColor() const { return m_Color; }
  /// The picker's name, for the editor's title and for a screen reader.
  void SetName(const QString& name);

 private:
  void Show();
  void Edit();

  host::PickedColor m_Color;
  QString m_Name;
};

}  // namespace rastrel::qt
