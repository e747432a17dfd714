#include "host/qt/input_control.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QRadioButton>
#include <QSignalBlocker>
#include <algorithm>
#include <utility>
#include <variant>
#include <vector>

#include "host/qt/color_button.h"
#include "host/qt/number_box.h"
#include "host/qt/shown_text.h"

namespace rastrel::qt {

namespace {

constexpr int Decimals = 4;
constexpr double HighestNumber = 10'000'000;
constexpr int ComboLetters = 16;

class NumberControl : public InputControl {
 public:
  NumberControl(const host::DialogControl& control, QWidget* parent, Changed changed)
      : m_Box(*new NumberBox(parent)) {
    const bool isWhole = control.kind == host::ControlKind::IntegerEdit;
    m_Box.SetForm(isWhole ? 0 : Decimals, control.step, control.minimum, HighestNumber);
    QObject::connect(&m_Box, &QDoubleSpinBox::valueChanged, &m_Box, std::move(changed));
  }
  QWidget& GetWidget() override { return m_Box; }
  void SetValue(const host::ControlValue& value) override {
    const QSignalBlocker blocker(m_Box);
    if (const auto* const number = std::get_if<double>(&value)) m_Box.SetNumber(*number);
  }
  [[nodiscard]] host::ControlValue GetValue() const override { return m_Box.GetNumber(); }
  void SetText(const QString& text) override { m_Box.setAccessibleName(SpokenName(text)); }

 private:
  NumberBox& m_Box;
};

class ChoiceControl : public InputControl {
 public:
  ChoiceControl(QAbstractButton& button, bool isRadio, Changed changed)
      : m_Button(button), m_IsRadio(isRadio) {
    QObject::connect(&button, &QAbstractButton::toggled, &button,
                     [this, changed = std::move(changed)](bool checked) {
                       // The button that lost its mark is no change of its own.
                       if (!m_IsSet && (checked || !m_IsRadio)) changed();
                     });
  }
  QWidget& GetWidget() override { return m_Button; }
  void SetValue(const host::ControlValue& value) override {
    const auto* const checked = std::get_if<bool>(&value);
    if (!checked) return;
    m_IsSet = true;
    QButtonGroup* const group = m_Button.group();
    if (group && !*checked) group->setExclusive(false);
    m_Button.setChecked(*checked);
    if (group) group->setExclusive(true);
    m_IsSet = false;
  }
  [[nodiscard]] host::ControlValue GetValue() const override { return m_Button.isChecked(); }
  void SetText(const QString& text) override { m_Button.setText(text); }

 private:
  QAbstractButton& m_Button;
  bool m_IsRadio;
  bool m_IsSet = false;
};

class ComboControl : public InputControl {
 public:
  ComboControl(QWidget* parent, Changed changed) : m_Box(*new QComboBox(parent)) {
    m_Box.setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_Box.setMinimumContentsLength(ComboLetters);
    QObject::connect(&m_Box, &QComboBox::currentIndexChanged, &m_Box, std::move(changed));
  }
  QWidget& GetWidget() override { return m_Box; }
  void SetValue(const host::ControlValue& value) override {
    const auto* const text = std::get_if<std::wstring>(&value);
    if (!text) return;
    const QSignalBlocker blocker(m_Box);
    const auto found = std::ranges::find(m_Items, *text);
    m_Box.setCurrentIndex(found == m_Items.end() ? -1 : static_cast<int>(found - m_Items.begin()));
  }
  [[nodiscard]] host::ControlValue GetValue() const override {
    const auto at = static_cast<std::size_t>(m_Box.currentIndex());
    return at < m_Items.size() ? m_Items[at] : std::wstring();
  }
  void SetItems(std::span<const std::wstring> items) override {
    const QSignalBlocker blocker(m_Box);
    m_Items.assign(items.begin(), items.end());
    m_Box.clear();
    for (const std::wstring& item : items) m_Box.addItem(ShownName(item));
    m_Box.setCurrentIndex(-1);
  }
  void SetText(const QString& text) override { m_Box.setAccessibleName(SpokenName(text)); }

 private:
  QComboBox& m_Box;
  std::vector<std::wstring> m_Items;
};

class PickerControl : public InputControl {
 public:
  PickerControl(host::PickerType type, QWidget* parent, Changed changed)
      : m_Button(*new ColorButton(type, parent)) {
    m_Button.m_Changed = std::move(changed);
  }
  QWidget& GetWidget() override { return m_Button; }
  void SetValue(const host::ControlValue& value) override {
    if (const auto* const color = std::get_if<host::PickedColor>(&value)) m_Button.SetColor(*color);
  }
  [[nodiscard]] host::ControlValue GetValue() const override { return m_Button.GetColor(); }
  void SetText(const QString& text) override { m_Button.SetName(SpokenName(text)); }

 private:
  ColorButton& m_Button;
};

}  // namespace

std::unique_ptr<InputControl> MakeInputControl(const host::DialogControl& control, QWidget* parent,
                                               InputControl::Changed changed) {
  std::unique_ptr<InputControl> made;
  if (control.kind == host::ControlKind::ComboBox)
    made = std::make_unique<ComboControl>(parent, std::move(changed));
  else if (control.kind == host::ControlKind::ColorPicker)
    made = std::make_unique<PickerControl>(control.pickerType, parent, std::move(changed));
  else
    made = std::make_unique<NumberControl>(control, parent, std::move(changed));
  if (const QString text = WithoutMark(control.text); !text.isEmpty()) made->SetText(text);
  return made;
}

std::unique_ptr<InputControl> MakeChoice(const host::DialogControl& control, QWidget* parent,
                                         QButtonGroup* group, InputControl::Changed changed) {
  const QString text = WithoutMark(control.text);
  QAbstractButton* button = nullptr;
  if (group) {
    button = new QRadioButton(text, parent);
    group->addButton(button);
  } else {
    button = new QCheckBox(text, parent);
  }
  return std::make_unique<ChoiceControl>(*button, group != nullptr, std::move(changed));
}

}  // namespace rastrel::qt
