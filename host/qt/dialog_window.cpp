#include "host/qt/dialog_window.h"

#include <QButtonGroup>
#include <QCloseEvent>
#include <QEventLoop>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QSocketNotifier>
#include <QVBoxLayout>
#include <algorithm>

#include "host/qt/preview_pane.h"
#include "host/qt/shown_text.h"

namespace rastrel::qt {

namespace {

constexpr int WidthInLetters = 48;
constexpr int FallbackMilliseconds = 100;  // where messages can't be waited for
constexpr int SecondsPerMinute = 60;
constexpr int SampleLines = 3;  // as high as so many lines of the window's own text

// The two columns of the controls.
constexpr int Labels = 0;
constexpr int Fields = 1;

bool IsField(host::ControlKind kind) {
  return kind == host::ControlKind::DecimalEdit || kind == host::ControlKind::IntegerEdit ||
         kind == host::ControlKind::ComboBox || kind == host::ControlKind::ColorPicker;
}

// How many controls of that sort follow each other from one of them on.
template <typename Sort>
std::size_t CountFrom(std::span<const host::DialogControl> controls, std::size_t at, Sort sort) {
  std::size_t count = 0;
  while (at + count < controls.size() && sort(controls[at + count].kind)) ++count;
  return count;
}

}  // namespace

DialogWindow::DialogWindow(host::DialogLogic& logic, host::DialogPreview* preview)
    : m_Logic(logic) {
  setWindowTitle(WithoutMark(logic.GetResource().title));
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);
  auto* const column = new QVBoxLayout(this);
  auto* const body = new QHBoxLayout;
  auto* const grid = new QGridLayout;
  PlaceControls(*grid);
  body->addLayout(grid);
  column->addLayout(body, 1);
  auto* const foot = new QHBoxLayout;
  m_Elapsed = new QLabel(this);
  foot->addWidget(m_Elapsed);
  foot->addStretch();
  for (const host::DialogControl& control : logic.GetResource().controls) {
    if (control.kind == host::ControlKind::Button) foot->addWidget(MakeControl(control));
  }
  column->addLayout(foot);
  m_Elapsed->setVisible(!m_Bars.empty());
  if (m_FirstList) m_FirstList->setFocus();
  if (preview) {
    m_Preview = new PreviewPane(*preview, *this, this);
    body->addWidget(m_Preview, 1);
  }
  setMinimumWidth(fontMetrics().averageCharWidth() * WidthInLetters);
  ShowElapsed();
}

DialogWindow::~DialogWindow() = default;

void DialogWindow::PlaceControls(QGridLayout& grid) {
  const auto controls = m_Logic.GetResource().controls;
  for (std::size_t at = 0; at < controls.size();) {
    if (controls[at].kind == host::ControlKind::Radio) {
      at += PlaceGroup(grid, at);
      continue;
    }
    const host::DialogControl& control = controls[at++];
    if (control.kind != host::ControlKind::Button)
      PlaceControl(grid, control, MakeControl(control));
  }
  grid.setColumnStretch(Fields, 1);
  if (!m_FirstList) grid.setRowStretch(grid.rowCount(), 1);
}

// Places a group of radio buttons, and the fields that belong to it. Returns the number of
// controls.
std::size_t DialogWindow::PlaceGroup(QGridLayout& grid, std::size_t at) {
  const auto controls = m_Logic.GetResource().controls;
  const std::size_t buttons =
      CountFrom(controls, at, [](auto kind) { return kind == host::ControlKind::Radio; });
  const std::size_t fields = CountFrom(controls, at + buttons, IsField);
  auto* const group = new QButtonGroup(this);
  const int row = grid.rowCount();
  for (std::size_t i = 0; i < buttons; ++i) {
    const host::DialogControl& control = controls[at + i];
    m_Inputs[control.id] =
        MakeChoice(control, this, group, [this, id = control.id] { Change(id); });
    QWidget& button = m_Inputs[control.id]->GetWidget();
    m_Widgets[control.id] = &button;
    grid.addWidget(&button, row + static_cast<int>(i), Labels, 1, fields == buttons ? 1 : 2);
  }
  m_LastText = nullptr;
  if (fields != buttons) return buttons;
  for (std::size_t i = 0; i < fields; ++i) {
    const host::DialogControl& button = controls[at + i];
    const host::DialogControl& field = controls[at + buttons + i];
    grid.addWidget(MakeControl(field), row + static_cast<int>(i), Fields);
    if (*field.text == L'\0') m_Inputs[field.id]->SetText(WithoutMark(button.text));
    m_Named[button.id] = field.id;
  }
  return buttons + fields;
}

void DialogWindow::PlaceControl(QGridLayout& grid, const host::DialogControl& control,
                                QWidget* widget) {
  const int row = grid.rowCount();
  if (!IsField(control.kind)) return grid.addWidget(widget, row, Labels, 1, 2);
  if (m_LastText) {
    // It was placed over both columns before its field was known.
    grid.removeWidget(m_LastText);
    grid.addWidget(m_LastText, row, Labels);
    m_LastText = nullptr;
  }
  grid.addWidget(widget, row, Fields);
}

QWidget* DialogWindow::MakeControl(const host::DialogControl& control) {
  QWidget* made = nullptr;
  switch (control.kind) {
    case host::ControlKind::Text: made = MakeLabel(control); break;
    case host::ControlKind::Progress: made = m_Bars[control.id] = new QProgressBar(this); break;
    case host::ControlKind::Fonts: made = MakeFonts(control.id); break;
    case host::ControlKind::Button: made = MakeButton(control); break;
    default: made = MakeInput(control); break;
  }
  if (control.kind != host::ControlKind::Text && !IsField(control.kind)) m_LastText = nullptr;
  m_Widgets[control.id] = made;
  return made;
}

QWidget* DialogWindow::MakeLabel(const host::DialogControl& control) {
  auto* const label = new QLabel(WithoutMark(control.text), this);
  label->setTextFormat(Qt::PlainText);
  m_Texts[control.id] = label;
  m_LastText = label;
  return label;
}

QWidget* DialogWindow::MakeButton(const host::DialogControl& control) {
  auto* const button = new QPushButton(WithoutMark(control.text), this);
  connect(button, &QPushButton::clicked, this, [this, id = control.id] { Command(id); });
  if (m_Buttons.empty()) button->setDefault(true);
  m_Buttons[control.id] = button;
  return button;
}

// An edit, a check box, a combo box or a color picker.
QWidget* DialogWindow::MakeInput(const host::DialogControl& control) {
  const auto changed = [this, id = control.id] { Change(id); };
  auto& input = m_Inputs[control.id];
  input = control.kind == host::ControlKind::CheckBox ? MakeChoice(control, this, nullptr, changed)
                                                      : MakeInputControl(control, this, changed);
  QWidget& widget = input->GetWidget();
  if (!m_LastText || !IsField(control.kind)) return &widget;
  m_LastText->setBuddy(&widget);
  for (const auto& [id, label] : m_Texts) {
    if (label != m_LastText) continue;
    m_Named[id] = control.id;
    if (*control.text == L'\0') input->SetText(label->text());
  }
  return &widget;
}

// The list with a sample of the chosen font below it.
QWidget* DialogWindow::MakeFonts(int control) {
  auto* const box = new QWidget(this);
  auto* const column = new QVBoxLayout(box);
  column->setContentsMargins(0, 0, 0, 0);
  auto* const list = new QListWidget(box);
  auto* const sample = new QLabel(QStringLiteral("AaBbCc 0123456"), box);
  sample->setTextFormat(Qt::PlainText);
  sample->setFrameShape(QFrame::StyledPanel);
  sample->setAlignment(Qt::AlignCenter);
  sample->setFixedHeight(fontMetrics().height() * SampleLines);
  for (const std::wstring& name : m_Logic.GetEntries(control)) {
    // In its own letters the name of a font of symbols could not be read.
    list->addItem(FromWide(name));
  }
  connect(list, &QListWidget::currentRowChanged, this, [this, control, list, sample](int row) {
    if (row < 0) return;
    m_Logic.Choose(control, static_cast<std::size_t>(row));
    QFont font = list->font();
    font.setFamily(list->item(row)->text());
    font.setPointSizeF(font.pointSizeF() * 2);
    sample->setFont(font);
  });
  connect(list, &QListWidget::itemDoubleClicked, this, [this] { Command(host::OkCommand); });
  list->setCurrentRow(static_cast<int>(m_Logic.GetChosen(control)));
  if (m_LastText) m_LastText->setBuddy(list);
  if (!m_FirstList) m_FirstList = list;
  column->addWidget(list);
  column->addWidget(sample);
  return box;
}

void DialogWindow::SetText(int control, const std::wstring& text) {
  const QString shown = FromWide(text);
  if (control == host::TitleControl) return setWindowTitle(shown);
  if (const auto label = m_Texts.find(control); label != m_Texts.end())
    label->second->setText(shown);
  if (const auto button = m_Buttons.find(control); button != m_Buttons.end())
    button->second->setText(shown);
  if (const auto input = m_Inputs.find(control); input != m_Inputs.end())
    input->second->SetText(shown);
  // A field without a text of its own has the name of its label or radio button.
  if (const auto named = m_Named.find(control); named != m_Named.end() && !HasText(named->second))
    m_Inputs.at(named->second)->SetText(shown);
}

bool DialogWindow::HasText(int control) const {
  return std::ranges::any_of(m_Logic.GetResource().controls, [control](const auto& one) {
    return one.id == control && *one.text != L'\0';
  });
}

void DialogWindow::SetValue(int control, const host::ControlValue& value) {
  const auto input = m_Inputs.find(control);
  if (input != m_Inputs.end()) input->second->SetValue(value);
}

void DialogWindow::SetItems(int control, std::span<const std::wstring> items) {
  const auto input = m_Inputs.find(control);
  if (input != m_Inputs.end()) input->second->SetItems(items);
}

void DialogWindow::SetEnabled(int control, bool enabled) {
  const auto widget = m_Widgets.find(control);
  if (widget != m_Widgets.end()) widget->second->setEnabled(enabled);
}

void DialogWindow::SetVisible(int control, bool visible) {
  const auto widget = m_Widgets.find(control);
  if (widget != m_Widgets.end()) widget->second->setVisible(visible);
}

host::ControlValue DialogWindow::GetValue(int control) {
  const auto input = m_Inputs.find(control);
  return input != m_Inputs.end() ? input->second->GetValue() : host::ControlValue();
}

void DialogWindow::SetRange(int control, int lowest, int highest) {
  const auto bar = m_Bars.find(control);
  if (bar != m_Bars.end()) bar->second->setRange(lowest, highest);
}

void DialogWindow::SetPosition(int control, int position) {
  const auto found = m_Bars.find(control);
  if (found == m_Bars.end()) return;
  QProgressBar& bar = *found->second;
  bar.setValue(qBound(bar.minimum(), position, bar.maximum()));
}

void DialogWindow::RunModal() {
  m_Clock.start();
  const HANDLE posted = m_Logic.GetPostedHandle();
  std::unique_ptr<QSocketNotifier> notifier;
  if (posted != INVALID_HANDLE_VALUE) {
    notifier =
        std::make_unique<QSocketNotifier>(static_cast<qintptr>(posted), QSocketNotifier::Read);
    connect(notifier.get(), &QSocketNotifier::activated, this, [this] { Work(); });
  } else {
    connect(&m_Fallback, &QTimer::timeout, this, [this] { Work(); });
    m_Fallback.start(FallbackMilliseconds);
  }
  connect(&m_Second, &QTimer::timeout, this, [this] { ShowElapsed(); });
  m_Second.start(1000);
  if (!m_Logic.HasEnded()) {
    setModal(true);
    QDialog::exec();
  }
  m_Second.stop();
  m_Fallback.stop();
}

void DialogWindow::Work() {
  m_Logic.HandleMessages();
  CloseIfOver();
}

void DialogWindow::Command(int control) {
  m_Logic.Command(control);
  CloseIfOver();
}

void DialogWindow::Change(int control) {
  m_Logic.ControlChanged(control);
  if (m_Preview) m_Preview->Request();
  CloseIfOver();
}

void DialogWindow::CloseIfOver() {
  if (m_Logic.HasEnded()) done(Accepted);
}

void DialogWindow::reject() { Command(host::CancelCommand); }

void DialogWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  reject();
}

void DialogWindow::ShowElapsed() {
  const auto seconds = m_Clock.isValid() ? m_Clock.elapsed() / 1000 : 0;
  m_Elapsed->setText(QStringLiteral("%1:%2")
                         .arg(seconds / SecondsPerMinute)
                         .arg(seconds % SecondsPerMinute, 2, 10, QLatin1Char('0')));
}

}  // namespace rastrel::qt
