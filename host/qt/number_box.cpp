#include "host/qt/number_box.h"

#include <QLocale>
#include <cmath>

namespace rastrel::qt {

NumberBox::NumberBox(QWidget* parent) : QDoubleSpinBox(parent) {
  setGroupSeparatorShown(false);
  setAccelerated(true);
}

void NumberBox::SetForm(int decimals, double step, double minimum, double maximum) {
  setDecimals(decimals);
  setSingleStep(step);
  setRange(minimum, maximum);
  SetNumber(minimum);
}

void NumberBox::SetNumber(double number) {
  // Also for one that is no number.
  m_Exact = number >= minimum() ? number : minimum();
  setValue(m_Exact);
  m_Shown = value();
}

double NumberBox::GetNumber() const { return value() == m_Shown ? m_Exact : value(); }

QString NumberBox::textFromValue(double value) const {
  QLocale plain = locale();
  plain.setNumberOptions(QLocale::OmitGroupSeparator);
  QString text = plain.toString(value, 'f', decimals());
  if (decimals() == 0) return text;
  while (text.endsWith(plain.zeroDigit())) text.chop(plain.zeroDigit().size());
  if (text.endsWith(plain.decimalPoint())) text.chop(plain.decimalPoint().size());
  return text;
}

QValidator::State NumberBox::validate(QString& input, int& position) const {
  // The base takes a sign in front of 0, too.
  if (minimum() >= 0 &&
      (input.contains(QLatin1Char('-')) || input.contains(locale().negativeSign())))
    return QValidator::Invalid;
  const QString mark = locale().decimalPoint();
  if (decimals() > 0 && mark.size() == 1) {
    input.replace(QLatin1Char('.'), mark[0]);
    input.replace(QLatin1Char(','), mark[0]);
  }
  return QDoubleSpinBox::validate(input, position);
}

}  // namespace rastrel::qt
