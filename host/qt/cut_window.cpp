#include "host/qt/cut_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QSlider>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <string>

#include "cutting/output/operation_look.h"
#include "host/qt/cut_canvas.h"
#include "host/qt/shown_text.h"

namespace rastrel::qt {
namespace {

constexpr int SliderSteps = 10'000;
constexpr double PlaySeconds = 30;  // for the whole way at speed 1
constexpr int PlayMilliseconds = 33;
constexpr double ButtonStep = 1.25;
constexpr double MetreMillimetres = 1000;

QString Millimetres(double length) {
  return length >= 10 * MetreMillimetres
             ? QStringLiteral("%1 m").arg(length / MetreMillimetres, 0, 'f', 2)
             : QStringLiteral("%1 mm").arg(length, 0, 'f', 1);
}

QString TitleOf(cutting::Operation operation) {
  const std::string_view title = cutting::LookOf(operation).title;
  return QString::fromLatin1(title.data(), static_cast<qsizetype>(title.size()));
}

QString Shown(const std::string& text) {
  return ShownName(
      QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toStdWString());
}

QIcon SwatchOf(cutting::Operation operation) {
  QPixmap swatch(14, 14);
  swatch.fill(ColorOf(operation));
  return swatch;
}

}  // namespace

CutWindow::CutWindow(const std::vector<cutting::ShownSheet>& sheets,
                     std::vector<cutting::CutScene>& scenes)
    : m_Sheets(sheets), m_Scenes(scenes) {
  setWindowFlags(Qt::Window);
  auto* const column = new QVBoxLayout(this);
  MakeTop(*column);
  auto* const row = new QHBoxLayout;
  m_Canvas = new CutCanvas(this);
  row->addWidget(m_Canvas, 1);
  row->addWidget(MakeSide());
  column->addLayout(row, 1);
  MakePlayer(*column);
  auto* const foot = new QHBoxLayout;
  m_Status = new QLabel(this);
  m_Status->setTextFormat(Qt::PlainText);
  m_Status->setAccessibleName(QStringLiteral("Status"));
  m_ScaleText = new QLabel(this);
  m_ScaleText->setAccessibleName(QStringLiteral("Scale"));
  foot->addWidget(m_Status, 1);
  foot->addWidget(m_ScaleText);
  column->addLayout(foot);
  MakeKeys();

  m_Canvas->m_Pointed = [this](cutting::Point at) {
    m_ScaleText->setText(QStringLiteral("%1, %2 mm   %3 px/mm")
                             .arg(at.x, 0, 'f', 2)
                             .arg(at.y, 0, 'f', 2)
                             .arg(m_Canvas->Scale(), 0, 'g', 3));
  };
  m_Canvas->m_ScaleChanged = [this] {
    m_ScaleText->setText(QStringLiteral("%1 px/mm").arg(m_Canvas->Scale(), 0, 'g', 3));
  };
  m_Canvas->m_Chosen = [this](std::size_t stroke) { ShowChosen(stroke); };
  m_Canvas->m_Measured = [this](cutting::Point from, cutting::Point to) {
    m_Status->setText(QStringLiteral("Distance %1 mm, across %2 mm, up %3 mm")
                          .arg(Distance(from, to), 0, 'f', 2)
                          .arg(to.x - from.x, 0, 'f', 2)
                          .arg(to.y - from.y, 0, 'f', 2));
  };
  m_Timer.setInterval(PlayMilliseconds);
  connect(&m_Timer, &QTimer::timeout, this, [this] { Advance(); });
  ShowSheet(0);
  m_Canvas->setFocus();
}

CutWindow::~CutWindow() = default;

cutting::CutScene& CutWindow::Scene() const { return m_Scenes[static_cast<std::size_t>(m_Sheet)]; }

void CutWindow::MakeTop(QBoxLayout& column) {
  auto* const row = new QHBoxLayout;
  const auto button = [this, row](const QString& text, const QString& name, auto act) {
    auto* const made = new QPushButton(text, this);
    made->setAccessibleName(name);
    made->setToolTip(name);
    made->setAutoDefault(false);
    connect(made, &QPushButton::clicked, this, act);
    row->addWidget(made);
    return made;
  };
  button(QStringLiteral("-"), QStringLiteral("Smaller"),
         [this] { m_Canvas->Zoom(1 / ButtonStep); });
  button(QStringLiteral("+"), QStringLiteral("Larger"), [this] { m_Canvas->Zoom(ButtonStep); });
  button(QStringLiteral("&Fit"), QStringLiteral("Show all of it"), [this] { m_Canvas->Fit(); });
  button(QStringLiteral("&1:1"), QStringLiteral("True size"), [this] { m_Canvas->ShowTrueSize(); });
  m_Measure = button(QStringLiteral("&Measure"), QStringLiteral("Measure between two points"),
                     [this](bool isOn) {
                       m_Canvas->SetMeasuring(isOn);
                       m_Status->setText(isOn ? QStringLiteral("Click two points") : QString());
                     });
  m_Measure->setCheckable(true);
  row->addStretch(1);
  m_SheetBox = new QComboBox(this);
  m_SheetBox->setAccessibleName(QStringLiteral("Sheet"));
  for (const cutting::ShownSheet& sheet : m_Sheets) m_SheetBox->addItem(Shown(sheet.name));
  m_SheetBox->setVisible(m_Sheets.size() > 1);
  connect(m_SheetBox, &QComboBox::currentIndexChanged, this, [this](int at) { ShowSheet(at); });
  row->addWidget(m_SheetBox);
  column.addLayout(row);
}

QCheckBox* CutWindow::MakeBox(QBoxLayout& column, const QString& text, bool isOn) {
  auto* const box = new QCheckBox(text, this);
  box->setChecked(isOn);
  column.addWidget(box);
  return box;
}

QWidget* CutWindow::MakeSide() {
  auto* const side = new QWidget(this);
  auto* const column = new QVBoxLayout(side);
  column->setContentsMargins(0, 0, 0, 0);
  m_Groups = new QTreeWidget(side);
  m_Groups->setAccessibleName(QStringLiteral("Operations"));
  m_Groups->setRootIsDecorated(false);
  m_Groups->setHeaderLabels({QStringLiteral("Operation"), QStringLiteral("Tool"),
                             QStringLiteral("Paths"), QStringLiteral("Length")});
  connect(m_Groups, &QTreeWidget::itemChanged, this,
          [this](QTreeWidgetItem* item) { GroupToggled(item); });
  column->addWidget(m_Groups, 1);
  m_Print = MakeBox(*column, QStringLiteral("&Print"), true);
  m_Marks = MakeBox(*column, QStringLiteral("Ma&rks"), true);
  m_Travel = MakeBox(*column, QStringLiteral("&Ways between the paths"), true);
  auto* const numbers = MakeBox(*column, QStringLiteral("&Numbers and arrows"), true);
  for (QCheckBox* const box : {m_Print, m_Marks, m_Travel})
    connect(box, &QCheckBox::toggled, this, [this] {
      m_Canvas->SetLayers({m_Print->isChecked(), m_Marks->isChecked(), m_Travel->isChecked()});
    });
  connect(numbers, &QCheckBox::toggled, this, [this](bool isOn) { m_Canvas->SetNumbered(isOn); });
  side->setFixedWidth(fontMetrics().averageCharWidth() * 48);
  return side;
}

void CutWindow::MakePlayer(QBoxLayout& column) {
  auto* const row = new QHBoxLayout;
  m_PlayButton = new QPushButton(QStringLiteral("P&lay"), this);
  m_PlayButton->setCheckable(true);
  m_PlayButton->setAutoDefault(false);
  m_PlayButton->setAccessibleName(QStringLiteral("Run the knife along its way"));
  connect(m_PlayButton, &QPushButton::toggled, this, [this](bool isOn) { Play(isOn); });
  m_Slider = new QSlider(Qt::Horizontal, this);
  m_Slider->setRange(0, SliderSteps);
  m_Slider->setPageStep(SliderSteps / 20);
  m_Slider->setAccessibleName(QStringLiteral("Place of the knife on its way"));
  connect(m_Slider, &QSlider::valueChanged, this, [this](int position) { Seek(position); });
  m_Speed = new QComboBox(this);
  m_Speed->setAccessibleName(QStringLiteral("Speed"));
  for (const double speed : {0.1, 0.5, 1.0, 2.0, 5.0})
    m_Speed->addItem(QStringLiteral("x %1").arg(speed), speed);
  m_Speed->setCurrentIndex(2);
  m_KnifeText = new QLabel(this);
  m_KnifeText->setTextFormat(Qt::PlainText);
  m_KnifeText->setAccessibleName(QStringLiteral("Knife"));
  m_KnifeText->setFixedWidth(fontMetrics().averageCharWidth() * 44);
  row->addWidget(m_PlayButton);
  row->addWidget(m_Speed);
  row->addWidget(m_Slider, 1);
  row->addWidget(m_KnifeText);
  column.addLayout(row);
}

void CutWindow::MakeKeys() {
  const auto key = [this](const QKeySequence& keys, auto act) {
    connect(new QShortcut(keys, this), &QShortcut::activated, this, act);
  };
  key(QKeySequence(Qt::CTRL | Qt::Key_W), [this] { close(); });
  key(QKeySequence(Qt::CTRL | Qt::Key_P), [this] { m_PlayButton->toggle(); });
  key(QKeySequence(Qt::CTRL | Qt::Key_Right), [this] { StepBy(1); });
  key(QKeySequence(Qt::CTRL | Qt::Key_Left), [this] { StepBy(-1); });
  key(QKeySequence(Qt::CTRL | Qt::Key_M), [this] { m_Measure->click(); });
}

void CutWindow::ShowSheet(int sheet) {
  if (sheet < 0 || sheet >= static_cast<int>(m_Sheets.size())) return;
  m_PlayButton->setChecked(false);
  m_Sheet = sheet;
  const cutting::ShownSheet& shown = m_Sheets[static_cast<std::size_t>(sheet)];
  setWindowTitle(QStringLiteral("%1 - print and knife").arg(Shown(shown.name)));
  m_Canvas->SetKnife(nullptr, 0);
  m_Canvas->SetScene(Scene(), shown.print);
  m_Print->setEnabled(shown.print.width > 0);
  m_Marks->setEnabled(!Scene().Marks().empty());
  ShowGroups();
  MakeWay();
  m_Status->setText(QStringLiteral("Page %1 x %2 mm")
                        .arg(Scene().Page().Width(), 0, 'f', 1)
                        .arg(Scene().Page().Height(), 0, 'f', 1));
}

void CutWindow::ShowGroups() {
  const QSignalBlocker quiet(m_Groups);
  m_Groups->clear();
  for (const cutting::CutGroup& group : Scene().Groups()) {
    auto* const item = new QTreeWidgetItem({TitleOf(group.operation), Shown(group.tool),
                                            QString::number(static_cast<qulonglong>(group.strokes)),
                                            Millimetres(group.length)});
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(0, group.isShown ? Qt::Checked : Qt::Unchecked);
    item->setIcon(0, SwatchOf(group.operation));
    item->setTextAlignment(2, Qt::AlignRight);
    item->setTextAlignment(3, Qt::AlignRight);
    m_Groups->addTopLevelItem(item);
  }
  for (int at = 0; at < m_Groups->columnCount(); ++at) m_Groups->resizeColumnToContents(at);
}

void CutWindow::GroupToggled(QTreeWidgetItem* item) {
  const int at = m_Groups->indexOfTopLevelItem(item);
  if (at < 0) return;
  m_Canvas->SetKnife(nullptr, 0);
  Scene().Show(static_cast<std::size_t>(at), item->checkState(0) == Qt::Checked);
  m_Canvas->ScenesGroupsChanged();
  MakeWay();
}

// At its begin, without a knife in the picture.
void CutWindow::MakeWay() {
  m_PlayButton->setChecked(false);
  m_Way = std::make_unique<cutting::KnifeWay>(Scene());
  m_Length = 0;
  const QSignalBlocker quiet(m_Slider);
  m_Slider->setValue(0);
  for (QWidget* const control :
       {static_cast<QWidget*>(m_Slider), static_cast<QWidget*>(m_PlayButton)})
    control->setEnabled(m_Way->Strokes() > 0);
  m_KnifeText->setText(QStringLiteral("%1 paths, way %2, lifted %3")
                           .arg(static_cast<qulonglong>(m_Way->Strokes()))
                           .arg(Millimetres(m_Way->Length()), Millimetres(m_Way->TravelLength())));
}

void CutWindow::Seek(int position) {
  m_Length = m_Way->Length() * position / SliderSteps;
  ShowKnife();
}

void CutWindow::Play(bool isOn) {
  m_PlayButton->setText(isOn ? QStringLiteral("Pa&use") : QStringLiteral("P&lay"));
  if (!isOn) return m_Timer.stop();
  if (m_Length >= m_Way->Length()) m_Length = 0;
  m_Clock.start();
  m_Timer.start();
}

void CutWindow::Advance() {
  const double seconds = static_cast<double>(m_Clock.restart()) / 1000;
  m_Length += m_Way->Length() * seconds / PlaySeconds * m_Speed->currentData().toDouble();
  m_Length = std::min(m_Length, m_Way->Length());
  ShowKnife();
  if (m_Length >= m_Way->Length()) m_PlayButton->setChecked(false);
}

void CutWindow::StepBy(int strokes) {
  if (m_Way->Strokes() == 0) return;
  const auto now = static_cast<long long>(m_Way->CountAt(m_Length)) - 1;
  const bool isBefore = m_Length < m_Way->BeginOf(static_cast<std::size_t>(now));
  const auto last = static_cast<long long>(m_Way->Strokes());
  const long long next = std::clamp(now + (isBefore && strokes > 0 ? 0 : strokes), 0LL, last);
  m_Length = m_Way->BeginOf(static_cast<std::size_t>(next));
  ShowKnife();
}

void CutWindow::ShowKnife() {
  if (m_Way->Strokes() == 0) return;
  {
    const QSignalBlocker quiet(m_Slider);
    const double part = m_Way->Length() > 0 ? m_Length / m_Way->Length() : 0;
    m_Slider->setValue(static_cast<int>(std::lround(part * SliderSteps)));
  }
  m_Canvas->SetKnife(m_Way.get(), m_Length);
  const cutting::KnifePlace place = m_Way->At(m_Length);
  const cutting::CutGroup& group = Scene().Groups()[Scene().Strokes()[place.stroke].group];
  m_KnifeText->setText(
      QStringLiteral("%1 of %2: %3, %4")
          .arg(static_cast<qulonglong>(m_Way->CountAt(m_Length)))
          .arg(static_cast<qulonglong>(m_Way->Strokes()))
          .arg(place.isTravel ? QStringLiteral("lifted") : TitleOf(group.operation),
               Millimetres(m_Length)));
}

void CutWindow::ShowChosen(std::size_t stroke) {
  const cutting::CutStroke& chosen = Scene().Strokes()[stroke];
  const cutting::CutGroup& group = Scene().Groups()[chosen.group];
  const std::string& rule = m_Sheets[static_cast<std::size_t>(m_Sheet)].job.paths[chosen.path].rule;
  QString text = QStringLiteral("Path %1: %2, %3")
                     .arg(static_cast<qulonglong>(stroke + 1))
                     .arg(TitleOf(group.operation), Millimetres(chosen.length));
  if (chosen.passes > 1) text += QStringLiteral(", %1 passes").arg(chosen.passes);
  if (!group.tool.empty()) text += QStringLiteral(", tool %1").arg(Shown(group.tool));
  if (!rule.empty()) text += QStringLiteral(", rule %1").arg(Shown(rule));
  m_Status->setText(text);
}

}  // namespace rastrel::qt
