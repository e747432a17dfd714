#pragma once

#include <QImage>
#include <QPointF>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

#include "cutting/view/knife_way.h"
#include "host/qt/cut_tiles.h"

namespace rastrel::qt {

/// The picture of a cut job: wheel and plus or minus change the scale around the pointer or the
/// middle, dragging and the arrow keys move it. It outlives neither its scene nor its print.
class CutCanvas : public QWidget {
 public:
  explicit CutCanvas(QWidget* parent);
  ~CutCanvas() override;

  /// Shows another job, as large as it fits.
  void SetScene(const cutting::CutScene& scene, const cutting::ShownPrint& print);
  /// After groups of the scene were shown or hidden.
  void ScenesGroupsChanged();
  /// The knife's way, which may be null; and how far it has come.
  void SetKnife(const cutting::KnifeWay* way, double length);
  void SetLayers(const CutTiles::Layers& layers);
  void SetNumbered(bool isNumbered);
  void SetMeasuring(bool isMeasuring);

  void Fit();
  /// A millimetre of the page is one on the screen, as the screen says its size.
  void ShowTrueSize();
  void Zoom(double factor, QPointF around);
  void Zoom(double factor) { Zoom(factor, rect().toRectF().center()); }

  [[nodiscard]] double Scale() const { return m_Scale; }  ///< the window's units for a millimetre
  [[nodiscard]] QPointF OnScreen(cutting::Point point) const;
  [[nodiscard]] cutting::Point OnPage(QPointF point) const;
  [[nodiscard]] QSize sizeHint() const override { return {900, 640}; }

  /// Each may be empty. The place is the pointer's on the page.
  std::function<void(cutting::Point)> m_Pointed;
  std::function<void(std::size_t stroke)> m_Chosen;
  std::function<void(cutting::Point from, cutting::Point to)> m_Measured;
  std::function<void()> m_ScaleChanged;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  bool PaintTiles(QPainter& painter);
  void PaintArrowsAndNumbers(QPainter& painter);
  void PaintKnife(QPainter& painter);
  void PaintMeasure(QPainter& painter);
  void PaintStroke(QPainter& painter, std::size_t stroke, double until, double width);
  [[nodiscard]] cutting::Box InSight() const;
  [[nodiscard]] cutting::Point Snapped(QPointF at) const;
  void SetView(double scale, QPointF offset);
  void KeepPicture();
  void Click(QPointF at);

  const cutting::CutScene* m_Scene = nullptr;
  std::unique_ptr<CutTiles> m_Tiles;
  const cutting::KnifeWay* m_Way = nullptr;
  double m_KnifeLength = 0;
  CutTiles::Layers m_Layers;
  bool m_IsNumbered = true;
  bool m_IsMeasuring = false;
  bool m_IsFitted = true;  // until the user changes the scale
  double m_Scale = 1;
  QPointF m_Offset;  // of the page's origin, whole pixels
  // The last picture, shown until there are tiles of a new scale.
  QImage m_Before;
  double m_BeforeScale = 1;
  QPointF m_BeforeOffset;
  std::optional<QPointF> m_Pressed;
  bool m_IsDragged = false;
  std::optional<cutting::Point> m_From;
  std::optional<cutting::Point> m_To;
  std::optional<std::size_t> m_ChosenStroke;
};

}  // namespace rastrel::qt
