#include "host/qt/color_editor.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPalette>
#include <QVBoxLayout>

#include "host/qt/color_button.h"
#include "host/qt/number_box.h"
#include "host/qt/shown_text.h"

namespace rastrel::qt {

namespace {

constexpr int SwatchLetters = 16;
constexpr double HighestLevel = 255;
constexpr double Percent = 100;

constexpr std::array<const char*, 4> RgbNames{"&Red:", "&Green:", "&Blue:", ""};
constexpr std::array<const char*, 4> InkNames{"&Cyan:", "&Magenta:", "&Yellow:", "Blac&k:"};

}  // namespace

std::size_t CountComponents(host::PickerType type) { return type == host::PickerType::Rgb ? 3 : 4; }

ColorEditor::ColorEditor(const host::PickedColor& color, const QString& name, QWidget* parent)
    : QDialog(parent), m_Type(color.type) {
  setWindowTitle(name.isEmpty() ? QStringLiteral("Colour") : name);
  const bool isRgb = m_Type == host::PickerType::Rgb;
  auto* const column = new QVBoxLayout(this);
  auto* const grid = new QGridLayout;
  for (std::size_t part = 0; part < CountComponents(m_Type); ++part) {
    auto* const label = new QLabel(QLatin1String((isRgb ? RgbNames : InkNames)[part]), this);
    auto* const box = new NumberBox(this);
    if (!isRgb) box->setSuffix(QStringLiteral(" %"));
    box->SetForm(isRgb ? 0 : 1, 1, 0, isRgb ? HighestLevel : Percent);
    box->SetNumber(color.components[part] * (isRgb ? 1 : Percent));
    label->setBuddy(box);
    box->setAccessibleName(SpokenName(label->text()));
    const int row = static_cast<int>(part);
    grid->addWidget(label, row, 0);
    grid->addWidget(box, row, 1);
    m_Boxes[part] = box;
  }
  m_Swatch = new QLabel(this);
  m_Swatch->setFrameShape(QFrame::StyledPanel);
  m_Swatch->setAutoFillBackground(true);
  m_Swatch->setMinimumWidth(fontMetrics().averageCharWidth() * SwatchLetters);
  m_Swatch->setAccessibleName(QStringLiteral("Colour"));
  grid->addWidget(m_Swatch, 0, 2, static_cast<int>(CountComponents(m_Type)), 1);
  column->addLayout(grid);
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  column->addWidget(buttons);
  for (NumberBox* const box : m_Boxes) {
    if (box) connect(box, &QDoubleSpinBox::valueChanged, this, [this] { ShowSwatch(); });
  }
  ShowSwatch();
}

host::PickedColor ColorEditor::GetColor() const {
  host::PickedColor color{m_Type, {}};
  for (std::size_t part = 0; part < CountComponents(m_Type); ++part) {
    const double number = m_Boxes[part]->GetNumber();
    color.components[part] = m_Type == host::PickerType::Rgb ? number : number / Percent;
  }
  return color;
}

void ColorEditor::ShowSwatch() {
  QPalette palette = m_Swatch->palette();
  palette.setColor(QPalette::Window, ScreenColor(GetColor()));
  m_Swatch->setPalette(palette);
}

}  // namespace rastrel::qt
