#include "host/qt/color_button.h"

#include <QFontMetrics>
#include <QIcon>
#include <QLocale>
#include <QPainter>
#include <QPixmap>
#include <QtMath>
#include <algorithm>

#include "host/qt/color_editor.h"

namespace rastrel::qt {

namespace {

constexpr int SwatchLetters = 4;  // width of the swatch, in letters

QPixmap Swatch(const QColor& color, const QSize& size, double scale) {
  QPixmap picture(size * scale);
  picture.setDevicePixelRatio(scale);
  picture.fill(color);
  QPainter painter(&picture);
  painter.setPen(Qt::darkGray);
  painter.drawRect(QRectF(QPointF(0.5, 0.5), size - QSizeF(1, 1)));
  return picture;
}

QString Numbers(const host::PickedColor& color) {
  const QLocale locale;
  const auto part = [&](std::size_t at, double scale) {
    return locale.toString(color.components[at] * scale, 'g', 4);
  };
  if (color.type == host::PickerType::Rgb)
    return QStringLiteral("R %1  G %2  B %3").arg(part(0, 1), part(1, 1), part(2, 1));
  return QStringLiteral("C %1 %  M %2 %  Y %3 %  K %4 %")
      .arg(part(0, 100), part(1, 100), part(2, 100), part(3, 100));
}

int Level(double value) { return std::clamp(qRound(value), 0, 255); }

}  // namespace

QColor ScreenColor(const host::PickedColor& color) {
  const auto& [a, b, c, d] = color.components;
  if (color.type == host::PickerType::Rgb) return {Level(a), Level(b), Level(c)};
  const double light = 255 * (1 - d);
  return {Level(light * (1 - a)), Level(light * (1 - b)), Level(light * (1 - c))};
}

ColorButton::ColorButton(host::PickerType type, QWidget* parent) : QPushButton(parent) {
  m_Color.type = type;
  setAutoDefault(false);
  connect(this, &QPushButton::clicked, this, [this] { Edit(); });
  Show();
}

void ColorButton::SetColor(const host::PickedColor& color) {
  if (color.type != m_Color.type) return;
  m_Color = color;
  Show();
}

void ColorButton::SetName(const QString& name) {
  m_Name = name;
  Show();
}

void ColorButton::Show() {
  const int height = fontMetrics().height();
  const QSize size(fontMetrics().averageCharWidth() * SwatchLetters, height);
  setIconSize(size);
  setIcon(Swatch(ScreenColor(m_Color), size, devicePixelRatioF()));
  const QString numbers = Numbers(m_Color);
  setText(numbers);
  setAccessibleName(m_Name.isEmpty() ? numbers : m_Name + QStringLiteral(": ") + numbers);
}

// Not with a loop of its own: the dialog may end by itself meanwhile.
void ColorButton::Edit() {
  auto* const editor = new ColorEditor(m_Color, m_Name, this);
  editor->setAttribute(Qt::WA_DeleteOnClose);
  connect(editor, &QDialog::accepted, this, [this, editor] {
    const host::PickedColor color = editor->GetColor();
    if (color == m_Color) return;
    SetColor(color);
    if (m_Changed) m_Changed();
  });
  editor->open();
}

}  // namespace rastrel::qt
