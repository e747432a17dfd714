#include "host/qt/dialog_window.h"

#include <QCloseEvent>
#include <QEventLoop>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QSocketNotifier>
#include <QVBoxLayout>

namespace rastrel::qt {

namespace {

constexpr int WidthInLetters = 48;
constexpr int FallbackMilliseconds = 100;  // where messages can't be waited for
constexpr int SecondsPerMinute = 60;
constexpr int SampleLines = 3;  // as high as so many lines of the window's own text

QString FromWide(const std::wstring& text) { return QString::fromStdWString(text); }

// Texts of a resource have their mark until their translation comes.
QString WithoutMark(const wchar_t* text) {
  QString shown = QString::fromWCharArray(text);
  const QString mark = QStringLiteral("(*v*)");
  return shown.startsWith(mark) ? shown.mid(mark.size()) : shown;
}

}  // namespace

DialogWindow::DialogWindow(host::DialogLogic& logic) : m_Logic(logic) {
  const host::DialogResource& resource = logic.GetResource();
  setWindowTitle(WithoutMark(resource.title));
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);
  auto* const column = new QVBoxLayout(this);
  auto* const foot = new QHBoxLayout;
  m_Elapsed = new QLabel(this);
  foot->addWidget(m_Elapsed);
  foot->addStretch();
  for (const host::DialogControl& control : resource.controls) {
    QWidget* const widget = MakeControl(control);
    if (control.kind == host::ControlKind::Button)
      foot->addWidget(widget);
    else
      column->addWidget(widget);
  }
  column->addStretch();
  column->addLayout(foot);
  m_Elapsed->setVisible(!m_Bars.empty());
  if (m_FirstList) m_FirstList->setFocus();
  setMinimumWidth(fontMetrics().averageCharWidth() * WidthInLetters);
  ShowElapsed();
}

DialogWindow::~DialogWindow() = default;

QWidget* DialogWindow::MakeControl(const host::DialogControl& control) {
  const QString text = WithoutMark(control.text);
  switch (control.kind) {
    case host::ControlKind::Text: {
      auto* const label = new QLabel(text, this);
      label->setTextFormat(Qt::PlainText);
      m_Texts[control.id] = label;
      m_LastText = label;
      return label;
    }
    case host::ControlKind::Progress: {
      auto* const bar = new QProgressBar(this);
      m_Bars[control.id] = bar;
      return bar;
    }
    case host::ControlKind::Fonts: return MakeFonts(control.id);
    case host::ControlKind::Button: break;
    // No dialog has one of these yet.
    case host::ControlKind::DecimalEdit:
    case host::ControlKind::IntegerEdit:
    case host::ControlKind::Radio:
    case host::ControlKind::CheckBox:
    case host::ControlKind::ComboBox:
    case host::ControlKind::ColorPicker: return new QWidget(this);
  }
  auto* const button = new QPushButton(text, this);
  connect(button, &QPushButton::clicked, this, [this, id = control.id] { Command(id); });
  if (m_Buttons.empty()) button->setDefault(true);
  m_Buttons[control.id] = button;
  return button;
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
