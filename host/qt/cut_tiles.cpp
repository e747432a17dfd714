#include "host/qt/cut_tiles.h"

#include <QPainter>
#include <QPen>
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>

#include "cutting/output/operation_look.h"

namespace rastrel::qt {
namespace {

using cutting::Box;
using cutting::CutStroke;
using cutting::Point;

constexpr int BytesPerPixel = 4;
constexpr int SmallestPrint = 256;       // of the halved pictures
constexpr double LeastTravelPixels = 3;  // shorter ways are not to be seen
constexpr double Rim = 4;                // pixels around a tile from which lines reach in

QImage PictureOf(const cutting::ShownPrint& print) {
  const auto bytes = static_cast<std::size_t>(std::max(print.width, 0)) *
                     static_cast<std::size_t>(std::max(print.height, 0)) * BytesPerPixel;
  if (bytes == 0 || print.bgra.size() != bytes) return {};
  return {reinterpret_cast<const uchar*>(print.bgra.data()), print.width, print.height,
          print.width * BytesPerPixel, QImage::Format_RGB32};
}

bool Crosses(Point from, Point to, const Box& box) {
  return std::min(from.x, to.x) <= box.right && std::max(from.x, to.x) >= box.left &&
         std::min(from.y, to.y) <= box.top && std::max(from.y, to.y) >= box.bottom;
}

}  // namespace

QColor ColorOf(cutting::Operation operation) {
  const std::string_view color = cutting::LookOf(operation).color;
  return QColor(QString::fromLatin1(color.data(), static_cast<qsizetype>(color.size())));
}

CutTiles::CutTiles(const cutting::CutScene& scene, const cutting::ShownPrint& print, double ratio)
    : m_Scene(scene), m_PrintPlace(print.place), m_Ratio(ratio) {
  QImage picture = PictureOf(print);
  while (!picture.isNull()) {
    m_Prints.push_back(picture);
    if (std::max(picture.width(), picture.height()) <= SmallestPrint) break;
    picture = picture.scaled(std::max(picture.width() / 2, 1), std::max(picture.height() / 2, 1),
                             Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  }
}

void CutTiles::SetScale(double pixelsPerMillimetre) {
  if (m_Scale != pixelsPerMillimetre) DropAll();
  m_Scale = pixelsPerMillimetre;
}

void CutTiles::SetLayers(const Layers& layers) {
  if (m_Layers != layers) DropAll();
  m_Layers = layers;
}

void CutTiles::SetSurroundings(const QColor& color) {
  if (m_Surroundings != color) DropAll();
  m_Surroundings = color;
}

const QImage* CutTiles::Find(QPoint tile) const {
  const auto found = m_Tiles.constFind(tile);
  return found != m_Tiles.constEnd() ? &*found : nullptr;
}

QPointF CutTiles::At(Point point) const { return {point.x * m_Scale, -point.y * m_Scale}; }

const QImage& CutTiles::Make(QPoint tile) {
  // All of a screen fit; older ones, of other parts of the page, go at once.
  if (m_Tiles.size() >= MaximumTiles) DropAll();
  const int pixels = static_cast<int>(std::ceil(Edge * m_Ratio));
  QImage image(pixels, pixels, QImage::Format_RGB32);
  image.setDevicePixelRatio(m_Ratio);
  image.fill(m_Surroundings);
  QPainter painter(&image);
  painter.translate(-double{Edge} * tile.x(), -double{Edge} * tile.y());
  const Box box{
      (tile.x() * double{Edge} - Rim) / m_Scale, -((tile.y() + 1) * double{Edge} + Rim) / m_Scale,
      ((tile.x() + 1) * double{Edge} + Rim) / m_Scale, -(tile.y() * double{Edge} - Rim) / m_Scale};
  PaintPage(painter, box);
  painter.setRenderHint(QPainter::Antialiasing);
  if (m_Layers.marks) PaintMarks(painter);
  if (m_Layers.travel) PaintTravel(painter, box);
  PaintStrokes(painter, box);
  painter.end();
  return *m_Tiles.insert(tile, image);
}

void CutTiles::PaintPage(QPainter& painter, const Box& box) const {
  const Box page = m_Scene.Page();
  painter.fillRect(QRectF(At({0, page.top}), At({page.right, 0})), Qt::white);
  if (!m_Layers.print || m_Prints.empty() || m_PrintPlace.IsEmpty()) return;
  // The smallest picture that still has a pixel for each of the screen's.
  const double wanted = m_PrintPlace.Width() * m_Scale * m_Ratio;
  std::size_t level = 0;
  while (level + 1 < m_Prints.size() && m_Prints[level + 1].width() >= wanted) ++level;
  const QImage& print = m_Prints[level];
  const double perX = print.width() / m_PrintPlace.Width();
  const double perY = print.height() / m_PrintPlace.Height();
  // Only the pixels in sight, and whole ones, lest tiles show seams.
  const double left = std::floor((box.left - m_PrintPlace.left) * perX) - 1;
  const double right = std::ceil((box.right - m_PrintPlace.left) * perX) + 1;
  const double top = std::floor((m_PrintPlace.top - box.top) * perY) - 1;
  const double bottom = std::ceil((m_PrintPlace.top - box.bottom) * perY) + 1;
  const QRectF part =
      QRectF(QPointF(left, top), QPointF(right, bottom)) & QRectF(QPointF(0, 0), print.size());
  if (part.isEmpty()) return;
  const QRectF place(
      At({m_PrintPlace.left + part.left() / perX, m_PrintPlace.top - part.top() / perY}),
      At({m_PrintPlace.left + part.right() / perX, m_PrintPlace.top - part.bottom() / perY}));
  painter.setRenderHint(QPainter::SmoothPixmapTransform, perX > m_Scale * m_Ratio / 2);
  painter.drawImage(place, print, part);
}

void CutTiles::PaintMarks(QPainter& painter) const {
  using Shape = cutting::RegistrationMark::Shape;
  for (const cutting::RegistrationMark& mark : m_Scene.Marks()) {
    const double half = mark.size / 2 * m_Scale;
    painter.save();
    painter.translate(At(mark.center));
    painter.setPen(QPen(Qt::black, std::clamp(mark.size / 10, 0.3, 1.0) * m_Scale));
    if (mark.shape == Shape::Circle) {
      painter.setPen(Qt::NoPen);
      painter.setBrush(Qt::black);
      painter.drawEllipse(QPointF(0, 0), half, half);
    } else if (mark.shape == Shape::Cross) {
      painter.drawLine(QPointF(-half, 0), QPointF(half, 0));
      painter.drawLine(QPointF(0, -half), QPointF(0, half));
    } else {
      painter.rotate(-mark.rotation);
      painter.drawLine(QPointF(0, 0), QPointF(2 * half, 0));
      painter.drawLine(QPointF(0, 0), QPointF(0, -2 * half));
    }
    painter.restore();
  }
}

void CutTiles::PaintTravel(QPainter& painter, const Box& box) const {
  painter.setPen(QPen(QColor(0x60, 0x60, 0x60), 1, Qt::DotLine));
  Point from{0, 0};
  for (std::size_t i = 0; i < m_Scene.Strokes().size(); ++i) {
    if (!m_Scene.IsShown(i)) continue;
    const Point to = m_Scene.Start(i);
    if (Distance(from, to) * m_Scale >= LeastTravelPixels && Crosses(from, to, box))
      painter.drawLine(At(from), At(to));
    from = m_Scene.End(i);
  }
}

void CutTiles::PaintStrokes(QPainter& painter, const Box& box) const {
  const double mmPerPixel = 1 / (m_Scale * m_Ratio);
  std::vector<QColor> colors;
  for (const cutting::CutGroup& group : m_Scene.Groups())
    colors.push_back(ColorOf(group.operation));
  constexpr double Width = 1.5;
  std::optional<std::size_t> penOf;
  for (const std::size_t index : m_Scene.InSight(box, mmPerPixel)) {
    const CutStroke& stroke = m_Scene.Strokes()[index];
    if (penOf != stroke.group) {
      painter.setPen(QPen(colors[stroke.group], Width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
      penOf = stroke.group;
    }
    if (stroke.box.Width() < mmPerPixel && stroke.box.Height() < mmPerPixel) {
      painter.drawPoint(At(m_Scene.Start(index)));
      continue;
    }
    QPolygonF line;
    for (const Point& point : m_Scene.Outline(index, mmPerPixel)) line << At(point);
    painter.drawPolyline(line);
  }
}

}  // namespace rastrel::qt
