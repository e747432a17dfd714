#include "host/qt/cut_canvas.h"

#include <QElapsedTimer>
#include <QEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QScreen>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

namespace rastrel::qt {
namespace {

using cutting::Box;
using cutting::Point;

constexpr double InchMillimetres = 25.4;
constexpr double LargestScale = 400;  // of a millimetre, where the strokes' tolerance is 4 pixels
constexpr double SmallestScale = 1e-4;
constexpr double Step = 1.25;            // of a key or a notch of the wheel
constexpr double WheelNotch = 120;       // of the toolkit, for a notch
constexpr double FitRim = 24;            // pixels
constexpr double HitRadius = 6;          // pixels
constexpr double DragLength = 4;         // pixels
constexpr double KeyMove = 60;           // pixels
constexpr qint64 TileMilliseconds = 12;  // of a picture's making, so that it stays fluid
constexpr std::size_t NumberLimit = 1500;
constexpr std::size_t ArrowLimit = 3000;
constexpr std::size_t TrailLimit = 200;  // finished strokes that are drawn bold

QPoint TileOf(QPointF pixel) {
  return {static_cast<int>(std::floor(pixel.x() / CutTiles::Edge)),
          static_cast<int>(std::floor(pixel.y() / CutTiles::Edge))};
}

void PaintText(QPainter& painter, QPointF at, const QString& text, const QColor& color) {
  QPainterPath path;
  path.addText(at, painter.font(), text);
  painter.strokePath(path, QPen(Qt::white, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.fillPath(path, color);
}

}  // namespace

CutCanvas::CutCanvas(QWidget* parent) : QWidget(parent) {
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  setMinimumSize(240, 200);
  setAccessibleName(QStringLiteral("Picture of the job"));
  setAccessibleDescription(QStringLiteral(
      "Plus and minus change the scale, the arrow keys move it, 0 shows all of it, 1 its true "
      "size"));
}

CutCanvas::~CutCanvas() = default;

void CutCanvas::SetScene(const cutting::CutScene& scene, const cutting::ShownPrint& print) {
  m_Scene = &scene;
  m_Tiles = std::make_unique<CutTiles>(scene, print, devicePixelRatioF());
  m_Tiles->SetLayers(m_Layers);
  m_Before = {};
  m_Way = nullptr;
  m_From = m_To = {};
  m_ChosenStroke = {};
  Fit();
}

void CutCanvas::ScenesGroupsChanged() {
  m_Before = {};
  if (m_Tiles) m_Tiles->DropAll();
  if (m_ChosenStroke && !m_Scene->IsShown(*m_ChosenStroke)) m_ChosenStroke = {};
  update();
}

void CutCanvas::SetKnife(const cutting::KnifeWay* way, double length) {
  m_Way = way;
  m_KnifeLength = length;
  update();
}

void CutCanvas::SetLayers(const CutTiles::Layers& layers) {
  m_Layers = layers;
  m_Before = {};
  if (m_Tiles) m_Tiles->SetLayers(layers);
  update();
}

void CutCanvas::SetNumbered(bool isNumbered) {
  m_IsNumbered = isNumbered;
  update();
}

void CutCanvas::SetMeasuring(bool isMeasuring) {
  m_IsMeasuring = isMeasuring;
  m_From = m_To = {};
  setCursor(isMeasuring ? Qt::CrossCursor : Qt::ArrowCursor);
  update();
}

QPointF CutCanvas::OnScreen(Point point) const {
  return m_Offset + QPointF(point.x * m_Scale, -point.y * m_Scale);
}

Point CutCanvas::OnPage(QPointF point) const {
  return {(point.x() - m_Offset.x()) / m_Scale, (m_Offset.y() - point.y()) / m_Scale};
}

Box CutCanvas::InSight() const {
  const Point low = OnPage(QPointF(0, height()));
  const Point high = OnPage(QPointF(width(), 0));
  return {low.x, low.y, high.x, high.y};
}

void CutCanvas::SetView(double scale, QPointF offset) {
  if (scale != m_Scale) KeepPicture();
  m_Scale = scale;
  m_Offset = QPointF(std::round(offset.x()), std::round(offset.y()));
  if (m_Tiles) m_Tiles->SetScale(scale);
  if (m_ScaleChanged) m_ScaleChanged();
  update();
}

void CutCanvas::Fit() {
  m_IsFitted = true;
  if (m_Scene == nullptr) return;
  const Box& all = m_Scene->Extent();
  const double wide = std::max(all.Width(), 1.0);
  const double high = std::max(all.Height(), 1.0);
  const double scale =
      std::clamp(std::min((width() - 2 * FitRim) / wide, (height() - 2 * FitRim) / high),
                 SmallestScale, LargestScale);
  const double middleX = all.IsEmpty() ? 0 : (all.left + all.right) / 2;
  const double middleY = all.IsEmpty() ? 0 : (all.bottom + all.top) / 2;
  SetView(scale, {width() / 2.0 - middleX * scale, height() / 2.0 + middleY * scale});
}

void CutCanvas::ShowTrueSize() {
  const double physical = screen() != nullptr ? screen()->physicalDotsPerInch() : 0;
  // Screens that know no size of theirs give nonsense.
  const double dots = physical > 20 && physical < 2000 ? physical : logicalDpiX();
  Zoom(dots / InchMillimetres / m_Scale);
}

void CutCanvas::Zoom(double factor, QPointF around) {
  m_IsFitted = false;
  const Point fixed = OnPage(around);
  const double scale = std::clamp(m_Scale * factor, SmallestScale, LargestScale);
  SetView(scale, around - QPointF(fixed.x * scale, -fixed.y * scale));
}

void CutCanvas::KeepPicture() {
  if (!m_Tiles || size().isEmpty()) return;
  QImage picture(size() * devicePixelRatioF(), QImage::Format_RGB32);
  picture.setDevicePixelRatio(devicePixelRatioF());
  picture.fill(palette().color(QPalette::Mid));
  QPainter painter(&picture);
  if (!m_Before.isNull()) {
    const double factor = m_Scale / m_BeforeScale;
    painter.drawImage(QRectF(m_Offset - m_BeforeOffset * factor, size().toSizeF() * factor),
                      m_Before);
  }
  const QPoint first = TileOf(-m_Offset);
  const QPoint last = TileOf(QPointF(width(), height()) - m_Offset);
  for (int y = first.y(); y <= last.y(); ++y)
    for (int x = first.x(); x <= last.x(); ++x)
      if (const QImage* const tile = m_Tiles->Find({x, y}))
        painter.drawImage(m_Offset + QPointF(x, y) * CutTiles::Edge, *tile);
  painter.end();
  m_Before = picture;
  m_BeforeScale = m_Scale;
  m_BeforeOffset = m_Offset;
}

bool CutCanvas::PaintTiles(QPainter& painter) {
  QElapsedTimer clock;
  clock.start();
  bool isWhole = true;
  bool hasMade = false;
  const QPoint first = TileOf(-m_Offset);
  const QPoint last = TileOf(QPointF(width(), height()) - m_Offset);
  for (int y = first.y(); y <= last.y(); ++y) {
    for (int x = first.x(); x <= last.x(); ++x) {
      const QImage* tile = m_Tiles->Find({x, y});
      if (tile == nullptr && (!hasMade || clock.elapsed() < TileMilliseconds)) {
        tile = &m_Tiles->Make({x, y});
        hasMade = true;
      }
      if (tile != nullptr) {
        painter.drawImage(m_Offset + QPointF(x, y) * CutTiles::Edge, *tile);
      } else {
        isWhole = false;
      }
    }
  }
  return isWhole;
}

void CutCanvas::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QColor window = palette().color(QPalette::Window);
  const QColor surroundings =
      window.lightness() < 128 ? QColor(0x5a, 0x5a, 0x5e) : QColor(0xc4, 0xc4, 0xc8);
  painter.fillRect(rect(), surroundings);
  if (!m_Tiles) return;
  m_Tiles->SetSurroundings(surroundings);
  if (!m_Before.isNull()) {
    const double factor = m_Scale / m_BeforeScale;
    painter.drawImage(QRectF(m_Offset - m_BeforeOffset * factor, size().toSizeF() * factor),
                      m_Before);
  }
  if (PaintTiles(painter)) {
    m_Before = {};
  } else {
    update();  // the others come with the next picture
  }
  painter.setRenderHint(QPainter::Antialiasing);
  if (m_ChosenStroke) PaintStroke(painter, *m_ChosenStroke, -1, 4);
  if (m_IsNumbered) PaintArrowsAndNumbers(painter);
  PaintKnife(painter);
  PaintMeasure(painter);
  if (hasFocus()) {
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(palette().color(QPalette::Highlight));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
  }
}

void CutCanvas::PaintArrowsAndNumbers(QPainter& painter) {
  const double mmPerPixel = 1 / m_Scale;
  for (const cutting::StrokeArrow& arrow : m_Scene->Arrows(InSight(), mmPerPixel, ArrowLimit)) {
    const QPointF at = OnScreen(arrow.at);
    const QPointF ahead(arrow.direction.x * 6, -arrow.direction.y * 6);
    const QPointF beside(-ahead.y() * 0.7, ahead.x() * 0.7);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ColorOf(m_Scene->Groups()[m_Scene->Strokes()[arrow.stroke].group].operation));
    painter.drawPolygon(QPolygonF{{at + ahead, at - ahead + beside, at - ahead - beside}});
  }
  QFont font = painter.font();
  font.setPixelSize(12);
  painter.setFont(font);
  for (const cutting::StrokeNumber& number : m_Scene->Numbers(InSight(), mmPerPixel, NumberLimit)) {
    const auto group = m_Scene->Strokes()[number.stroke].group;
    PaintText(painter, OnScreen(number.at) + QPointF(3, -3), QString::number(number.stroke + 1),
              ColorOf(m_Scene->Groups()[group].operation).darker(130));
  }
}

// `until`: that much of the stroke's length, or all of it if negative.
void CutCanvas::PaintStroke(QPainter& painter, std::size_t stroke, double until, double width) {
  QColor color = ColorOf(m_Scene->Groups()[m_Scene->Strokes()[stroke].group].operation);
  color.setAlpha(150);
  painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  QPolygonF line;
  double length = 0;
  std::optional<Point> last;
  for (const Point& point : m_Scene->Outline(stroke, 1 / m_Scale)) {
    if (last) length += Distance(*last, point);
    if (until >= 0 && length > until) {
      line << OnScreen(m_Scene->Along(stroke, until).at);
      break;
    }
    line << OnScreen(point);
    last = point;
  }
  if (line.size() > 1) painter.drawPolyline(line);
}

void CutCanvas::PaintKnife(QPainter& painter) {
  if (m_Way == nullptr || m_Way->Strokes() == 0) return;
  const cutting::KnifePlace place = m_Way->At(m_KnifeLength);
  const std::size_t first = place.stroke > TrailLimit ? place.stroke - TrailLimit : 0;
  for (std::size_t i = first; i < place.stroke; ++i)
    if (m_Scene->IsShown(i)) PaintStroke(painter, i, -1, 4);
  if (!place.isTravel) PaintStroke(painter, place.stroke, place.done, 4);
  const QPointF at = OnScreen(place.at);
  painter.setPen(QPen(Qt::black, 2));
  painter.setBrush(place.isTravel ? QColor(Qt::white) : QColor(0xff, 0xd0, 0x00));
  painter.drawEllipse(at, 7, 7);
  painter.drawLine(at - QPointF(11, 0), at + QPointF(11, 0));
  painter.drawLine(at - QPointF(0, 11), at + QPointF(0, 11));
}

void CutCanvas::PaintMeasure(QPainter& painter) {
  if (!m_From) return;
  const QPointF from = OnScreen(*m_From);
  const QPointF to = OnScreen(m_To.value_or(*m_From));
  painter.setPen(QPen(Qt::white, 4));
  painter.drawLine(from, to);
  painter.setPen(QPen(Qt::black, 2));
  painter.drawLine(from, to);
  painter.setBrush(Qt::white);
  painter.drawEllipse(from, 4, 4);
  painter.drawEllipse(to, 4, 4);
  if (!m_To) return;
  PaintText(painter, (from + to) / 2 + QPointF(6, -6),
            QStringLiteral("%1 mm").arg(Distance(*m_From, *m_To), 0, 'f', 2), Qt::black);
}

Point CutCanvas::Snapped(QPointF at) const {
  const Point point = OnPage(at);
  const auto hit = m_Scene->Nearest(point, HitRadius / m_Scale);
  return hit ? hit->at : point;
}

void CutCanvas::Click(QPointF at) {
  if (m_Scene == nullptr) return;
  if (!m_IsMeasuring) {
    const auto hit = m_Scene->Nearest(OnPage(at), HitRadius / m_Scale);
    m_ChosenStroke = hit ? std::optional(hit->stroke) : std::nullopt;
    if (hit && m_Chosen) m_Chosen(hit->stroke);
  } else if (!m_From || m_To) {
    m_From = Snapped(at);
    m_To = {};
  } else {
    m_To = Snapped(at);
    if (m_Measured) m_Measured(*m_From, *m_To);
  }
  update();
}

void CutCanvas::wheelEvent(QWheelEvent* event) {
  Zoom(std::pow(Step, event->angleDelta().y() / WheelNotch), event->position());
  event->accept();
}

void CutCanvas::mousePressEvent(QMouseEvent* event) {
  m_Pressed = event->position();
  m_IsDragged = false;
}

void CutCanvas::mouseMoveEvent(QMouseEvent* event) {
  if (m_Pressed) {
    const QPointF way = event->position() - *m_Pressed;
    if (m_IsDragged || way.manhattanLength() >= DragLength) {
      m_IsDragged = true;
      m_IsFitted = false;
      m_Pressed = event->position();
      SetView(m_Scale, m_Offset + way);
    }
  }
  if (m_Pointed) m_Pointed(OnPage(event->position()));
}

void CutCanvas::mouseReleaseEvent(QMouseEvent* event) {
  if (m_Pressed && !m_IsDragged && event->button() == Qt::LeftButton) Click(event->position());
  m_Pressed = {};
}

void CutCanvas::keyPressEvent(QKeyEvent* event) {
  const auto move = [this](double x, double y) {
    m_IsFitted = false;
    SetView(m_Scale, m_Offset + QPointF(x, y));
  };
  switch (event->key()) {
    case Qt::Key_Left: return move(KeyMove, 0);
    case Qt::Key_Right: return move(-KeyMove, 0);
    case Qt::Key_Up: return move(0, KeyMove);
    case Qt::Key_Down: return move(0, -KeyMove);
    case Qt::Key_Plus:
    case Qt::Key_Equal: return Zoom(Step);
    case Qt::Key_Minus: return Zoom(1 / Step);
    case Qt::Key_0: return Fit();
    case Qt::Key_1: return ShowTrueSize();
    default: QWidget::keyPressEvent(event);
  }
}

void CutCanvas::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  m_Before = {};
  if (m_IsFitted) Fit();
}

void CutCanvas::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) update();
}

}  // namespace rastrel::qt
