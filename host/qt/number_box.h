#pragma once

#include <QDoubleSpinBox>

namespace rastrel::qt {

/// A field for a number with spin arrows, in the way of the user's locale: without group separators
/// or zeros at the end, and with comma or point typed for the decimal mark. A number below the
/// minimum can't be entered.
class NumberBox : public QDoubleSpinBox {
 public:
  explicit NumberBox(QWidget* parent);

  /// A number of this many decimals, at least the minimum; one press of an arrow changes it by
  /// `step`.
  void SetForm(int decimals, double step, double minimum, double maximum);
  /// Shows a number. It is kept as it is where the field shows it rounded.
  void SetNumber(double number);
  /// The number on show: the one that was set until another is typed, which the field rounds.
  [[nodiscard]] double GetNumber() const;

 protected:
  [[nodiscard]] QString textFromValue(double value) const override;
  QValidator::State validate(QString& input, int& position) const override;

 private:
  double m_Exact = 0;
  double m_Shown = 0;  // the field's rounding of it
};

}  // namespace rastrel::qt
