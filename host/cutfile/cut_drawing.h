#pragma once

#include <vector>

#include "host/document/document.h"
#include "host/document/shapes.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/values/color.h"
#include "rastrel/platform/values/world.h"

/// The lines of a document as files for cutters: docs/formats/cut-files.md has the forms.
namespace rastrel::cutfile {

/// The work of a cutter along a line.
enum class CutKind {
  Line,       ///< nothing: it is drawn
  Cut,        ///< a contour cut
  CutThrough  ///< a contour cut through the material
};

/// Straight lines through points, from the first to the last, and back to the first if closed.
struct CutRun {
  std::vector<CWorldPoint> points;  ///< two or more; centimetres from the page's lower left corner
  bool closed = false;
  bool operator==(const CutRun&) const = default;
};

/// An object of the document.
struct CutObject {
  CutKind kind = CutKind::Line;
  CVKColor color;  ///< of its inside, or of its outline where nothing is painted inside
  std::vector<CutRun> runs;
  bool operator==(const CutObject&) const = default;
};

/// A page.
struct CutDrawing {
  double width = 0;   ///< centimetres
  double height = 0;  ///< centimetres
  std::vector<CutObject> objects;
};

/// How far a straight line may lie from the curve that it replaces, in centimetres.
inline constexpr double CurveTolerance = 0.001;
/// The maximum distance of a point from the page's lower left corner along each side, centimetres.
inline constexpr double FarthestPoint = 1e6;

/// The visible paths of a page, counted from 1, in the order in which they are drawn, those of
/// groups among them. A point that equals the one before it is left out, and so are runs of a
/// single point and objects without runs. Fails for a point that is not finite or farther away than
/// FarthestPoint.
[[nodiscard]] Expected<CutDrawing> CutDrawingOf(const document::Document& document, int page);

}  // namespace rastrel::cutfile
