#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/document/bitmap.h"
#include "host/document/plane_pixels.h"
#include "rastrel/platform/values/color.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/paragraph.h"
#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/tm.h"
#include "rastrel/platform/values/world.h"

/// The objects of a document, as values that can be copied, compared, saved and drawn. Lengths are
/// world units (centimetres, y upward from the blank's lower left corner) unless a field says
/// otherwise.
namespace rastrel::document {

using host::ObjectHandle;

/// Holds other objects, which are drawn in this order.
struct GroupShape {
  std::vector<ObjectHandle> members;
  bool operator==(const GroupShape&) const = default;
};

/// One piece of a path: a straight line to its last point, or a cubic Bézier curve with two control
/// points before it.
struct PathSegment {
  bool curve = false;
  std::array<CWorldPoint, 3> points{};  ///< a line uses the last alone
  bool operator==(const PathSegment&) const = default;
};

/// A run of joined segments.
struct SubPath {
  CWorldPoint start;
  std::vector<PathSegment> segments;
  bool closed = false;
  bool operator==(const SubPath&) const = default;
};

/// Which parts of a plane overlapping runs of a path enclose.
enum class FillRule {
  EvenOdd,  ///< those that an odd number of runs goes around
  NonZero,  ///< those that runs go around more often in one direction than in the other
};

/// Whether a path is the way of a knife, and how deep that goes. Such a path has no inside and is
/// drawn as a line of its own kind.
enum class CutLine {
  None,     ///< a drawing
  Cut,      ///< the knife cuts into the material
  Through,  ///< the knife cuts through the material
};

/// Lines and curves: a drawing, or the way of a knife.
struct PathShape {
  std::vector<SubPath> subPaths;
  CutLine cutLine = CutLine::None;
  FillRule fillRule = FillRule::EvenOdd;
  /// Open runs are filled as if a straight line closed them; without it closed ones alone are.
  bool fillsOpen = false;
  bool operator==(const PathShape&) const = default;
};

/// Text in one style.
struct TextRun {
  std::wstring text;  ///< without line ends
  std::wstring font;  ///< a file's name without extension, or a family with its style, as asked for
  int fontType = 2;   ///< a host::FontType
  std::wstring replacement;  ///< the font in place of a missing `font`, by name; else empty
  double size = 0;           ///< text units
  CVKFullColor color;        ///< counts where `colored` is set; else the object's own color
  bool colored = false;
  bool operator==(const TextRun&) const = default;
};

/// A line of a paragraph.
struct TextLine {
  std::vector<TextRun> runs;
  int justification = JUSTIFY_LEFT;  ///< a LineJustification
  int spacingKind = 0;               ///< 0: `leading` counts where it is above 0
  double size = 0;     ///< text units, as it was set; letters are as large as their runs say
  double leading = 0;  ///< text units from base line to base line; 0 for the font's own
  bool operator==(const TextLine&) const = default;
};

/// A paragraph in a frame.
struct TextShape {
  CWorldRect frame;           ///< top above bottom, without regard to margins
  paragraphStruct paragraph;  ///< margins and fits, in text units as the record has them
  int lineMode = 0;           ///< mode of the line list
  int justifyMode = 0;        ///< 2: lines are in the frame less its margins
  std::vector<TextLine> lines;
  bool operator==(const TextShape& other) const;
};

/// The maximum number of characters of a text on a circle.
inline constexpr std::size_t MaximumArcText = 4096;

/// Text on a circle, which is its base line. Letters are outside of it, upright on their radius,
/// and read clockwise. A text that is longer than the circle is squeezed in width to its length.
struct ArcTextShape {
  CWorldPoint center;
  double radius = 0;  ///< above 0
  /// The mark on the circle, in degrees counter-clockwise from its top.
  double rotation = 0;
  /// The part of the text at the mark: a LineJustification. JUSTIFY_LEFT is its beginning, RIGHT
  /// its end.
  int justification = JUSTIFY_CENTER;
  TextRun run;  ///< at most MaximumArcText characters
  bool operator==(const ArcTextShape&) const = default;
};

/// Panes of one size on a page.
struct PlateShape {
  int wanted = 0;      ///< panes that it was built for
  double width = 0;    ///< of a pane
  double height = 0;   ///< of a pane
  CWorldRect margins;  ///< distances inward from the blank's edges
  double horizontalGap = 0;
  double verticalGap = 0;
  bool fromBottom = false;        ///< rows go upward from the lower left corner
  CWorldPoint start;              ///< the first pane's upper left corner, or lower left one
  bool placed = false;            ///< true once it was given its place beside the other plates
  std::vector<CWorldRect> panes;  ///< those that have a place, in layout order
  ObjectHandle continuation = 0;  ///< the plate on a further page with the panes that did not fit
  bool operator==(const PlateShape&) const = default;
};

/// The kinds of placed file.
enum class GraphicKind {
  Svg,
  Png,
  Jpeg,
  Tiff,
  Pdf,
  Eps,         ///< also PostScript that was loaded as a drawing
  PostScript,  ///< placed as a program: its first page counts
};

/// The kinds of color of a GraphicCut.
enum class CutColor { Rgb, Cmyk, Named };

/// The cut line that a user chose for a placed file: which of its colors the conversion takes out
/// of the artwork.
struct GraphicCut {
  static constexpr int LowestResolution = 1;
  static constexpr int HighestResolution = 100'000;

  int resolution = 72;            ///< of the conversion, dots to the inch, within the two above
  CutColor kind = CutColor::Rgb;  ///< how `color` is given in the artwork
  bool enabled = false;           ///< a cut line is wanted
  CVKFullColor color;             ///< black at first
  bool operator==(const GraphicCut&) const = default;
};

/// A file of another program, kept whole. Its lower left corner is at the origin before the
/// object's matrix. Its colors and lines are its own: those of the object do not show.
struct GraphicShape {
  GraphicKind kind = GraphicKind::Png;
  std::wstring name;                         ///< of the file it came from, without folders
  std::shared_ptr<const std::string> bytes;  ///< the file; never null in a document
  double width = 0;
  double height = 0;
  /// The part of it that is painted, which its bounds are; nothing: all of it.
  std::optional<CWorldRect> extent{};
  std::wstring reason{};  ///< why a drawing is no paths: "it has a gradient"; empty for an image
  /// PostScript alone: it is drawn in the area that a conversion makes a picture of, and not in its
  /// finer bounding box.
  bool whole = false;
  GraphicCut cut{};
  GraphicCut halfCut{};
  /// A PNG file that is drawn over its whole box in place of it; null for none.
  std::shared_ptr<const std::string> preview{};
  bool operator==(const GraphicShape& other) const;
};

/// The file that is drawn for a placed one: its preview, if it has one.
struct ShownFile {
  GraphicKind kind;
  const std::shared_ptr<const std::string>& bytes;
};
[[nodiscard]] ShownFile ShownFileOf(const GraphicShape& graphic);
/// Whether a file of that kind has to become PDF before it is drawn.
[[nodiscard]] bool IsPostScript(GraphicKind kind);

/// A bitmap of this host, with its lower left corner at the origin before the object's matrix. Its
/// pixels are the document's own, so that any process may draw them. A document file has it as a
/// placed PNG file, and so it comes back as one.
struct BitmapShape {
  std::shared_ptr<const BitmapPixels> pixels;  ///< never null in a document
  double width = 0;                            ///< above 0
  double height = 0;                           ///< above 0
  bool operator==(const BitmapShape& other) const;
};

/// A hole.
struct DrillShape {
  CWorldPoint centre;
  double diameter = 0;
  bool operator==(const DrillShape&) const = default;
};

/// Pixels along a side of a plane, and of a whole plane.
inline constexpr int MaximumPlaneSide = 400'000;
inline constexpr std::uint64_t MaximumPlanePixels = 1'600'000'000;

/// The separated plane of one ink, in its true size with its lower left corner at the origin before
/// the object's matrix. It prints over the objects below: its ink takes light from them. The colors
/// of the object do not show.
struct SeparationShape {
  CVKFullColor ink;         ///< with the ink's name
  int page = 1;             ///< of the separated file, from 1
  int pixelWidth = 1;       ///< 1 to MaximumPlaneSide; the product at most MaximumPlanePixels
  int pixelHeight = 1;      ///< the same
  double xResolution = 72;  ///< pixels per inch, above 0
  double yResolution = 72;
  std::shared_ptr<const PlanePixels> pixels;  ///< never null in a document
  /// Its size in world units.
  [[nodiscard]] double Width() const;
  [[nodiscard]] double Height() const;
  bool operator==(const SeparationShape& other) const;
};

using Shape = std::variant<GroupShape, PathShape, TextShape, ArcTextShape, PlateShape, GraphicShape,
                           DrillShape, BitmapShape, SeparationShape>;

/// The attributes that every object has besides its shape.
struct Attributes {
  CVKColor layer;      ///< of the inside; of a plate the material
  CVKColor lineColor;  ///< of the outline
  LINESTYLE lineStyle{0, LINESTYLE_HAIRLINE};
  int sheetLayer = 0;
  VK_PAGE_RANGE pages;
  int traits = DBTRAIT_VISIBLE | DBTRAIT_SELECTABLE;  ///< a sum of DBTrait
  CPropertyLocks locks;
  TM matrix;  ///< from the shape's own coordinates to the page's
  bool operator==(const Attributes&) const = default;
};

/// An object of the document.
struct Object {
  Shape shape;
  Attributes attributes;
  ObjectHandle parent = 0;  ///< a group, host::DocumentRoot, or 0 for one that is in neither
  bool operator==(const Object&) const = default;
};

/// The number by which the database names the kind of a shape: a DBObjectType where there is one.
[[nodiscard]] int TypeNumberOf(const Shape& shape);

/// The bounds of a shape on its page: of a path exactly those of its lines and curves, without the
/// width of lines; of all others the box around their own box. Those of a group are empty: its
/// members are the document's. A shape without extent has an empty box at its place.
[[nodiscard]] BOUNDS BoundsOf(const Shape& shape, const TM& matrix);

/// Whether the inside of a shape is painted, where its layer's color is visible.
[[nodiscard]] bool HasInside(const PathShape& path);
[[nodiscard]] bool HasInside(const Shape& shape);

}  // namespace rastrel::document
