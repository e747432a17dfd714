#pragma once

#include <QDialog>
#include <array>
#include <cstddef>

#include "rastrel/platform/host/dialogs.h"

class QLabel;

namespace rastrel::qt {

class NumberBox;

/// The number of components of a type.
[[nodiscard]] std::size_t CountComponents(host::PickerType type);

/// A window for the numbers of a color: red, green and blue from 0 to 255, or inks in percent, with
/// the color beside them. Shown with `open`; OK is `accepted`.
class ColorEditor : public QDialog {
 public:
  ColorEditor(const host::PickedColor& color, const QString& name, QWidget* parent);

  /// The color of the numbers on show.
  [[nodiscard]] host::PickedColor GetColor() const;

 private:
  void ShowSwatch();

  host::PickerType m_Type;
  std::array<NumberBox*, 4> m_Boxes{};
  QLabel* m_Swatch = nullptr;
};

}  // namespace rastrel::qt
