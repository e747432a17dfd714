#pragma once

#include <QColor>
#include <QHash>
#include <QImage>
#include <QPoint>
#include <vector>

#include "cutting/view/cut_scene.h"
#include "cutting/view/cut_window.h"

class QPainter;

namespace rastrel::qt {

/// The parts of a cut job's picture that stay: page, print, marks, strokes and the ways between
/// them, as squares of pixels for one scale. Pixels count from the page's origin, y downward.
class CutTiles {
 public:
  static constexpr int Edge = 256;  ///< of a tile, in the window's units
  static constexpr int MaximumTiles = 400;

  /// Layers that are drawn besides the strokes.
  struct Layers {
    bool print = true;
    bool marks = true;
    bool travel = true;
    bool operator==(const Layers&) const = default;
  };

  /// `scene` and `print` outlive this. `ratio`: the screen's pixels for one of the window's units.
  CutTiles(const cutting::CutScene& scene, const cutting::ShownPrint& print, double ratio);

  /// Pixels for a millimetre; drops all tiles if it is another, as do the others.
  void SetScale(double pixelsPerMillimetre);
  void SetLayers(const Layers& layers);
  void SetSurroundings(const QColor& color);
  void DropAll() { m_Tiles.clear(); }

  /// The tile if it is there already; null if not.
  [[nodiscard]] const QImage* Find(QPoint tile) const;
  /// Draws the tile.
  const QImage& Make(QPoint tile);

 private:
  void PaintPage(QPainter& painter, const cutting::Box& box) const;
  void PaintMarks(QPainter& painter) const;
  void PaintTravel(QPainter& painter, const cutting::Box& box) const;
  void PaintStrokes(QPainter& painter, const cutting::Box& box) const;
  [[nodiscard]] QPointF At(cutting::Point point) const;

  const cutting::CutScene& m_Scene;
  cutting::Box m_PrintPlace;
  std::vector<QImage> m_Prints;  // each half as large as the one before it
  double m_Ratio;
  double m_Scale = 1;
  Layers m_Layers;
  QColor m_Surroundings = Qt::gray;
  QHash<QPoint, QImage> m_Tiles;
};

/// The color that an operation has in all pictures.
[[nodiscard]] QColor ColorOf(cutting::Operation operation);

}  // namespace rastrel::qt
