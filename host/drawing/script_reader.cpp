#include "host/drawing/script_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>
#include <utility>

#include "host/graphics/drawing_records.h"

namespace rastrel::drawing {

using document::PathSegment;
using document::PathShape;
using document::SubPath;
using graphics::VectorPath;

namespace {

// Device units by which a path may exceed a clip that was rounded.
constexpr double Slack = 1;
// ... and by which its own corners may be off, since they are rounded.
constexpr double ClipNoise = 0.05;
// A line of one device unit is the thinnest.
constexpr double ThinnestWidth = 1.0005;
constexpr std::size_t MaximumOperands = 64;
constexpr std::size_t MaximumToken = 4096;

constexpr std::string_view Whitespace = " \t\r\n";

// Operators that change nothing that paths have. Joins and caps are the document's own.
constexpr std::array<std::string_view, 15> Harmless = {"%!CairoScript",
                                                       "<<",
                                                       ">>",
                                                       "surface",
                                                       "context",
                                                       "/content",
                                                       "/width",
                                                       "/height",
                                                       "set-tolerance",
                                                       "set-antialias",
                                                       "set-line-cap",
                                                       "/format",
                                                       "set-line-join",
                                                       "set-miter-limit",
                                                       "dup"};

// The meaning of the others for the drawing.
constexpr std::array<std::pair<std::string_view, std::string_view>, 11> Reasons = {{
    {"linear", "it has a gradient"},
    {"radial", "it has a gradient"},
    {"mesh", "it has a gradient"},
    {"/source", "it has an image"},
    {"image", "it has an image"},
    {"/type", graphics::LettersReason},
    {"set-font-matrix", graphics::LettersReason},
    {"show-glyphs", graphics::LettersReason},
    {"show-text-glyphs", graphics::LettersReason},
    {"similar", "it has opacity, a mask, a filter or a pattern"},
    {"paint", "it paints a whole area"},
}};

std::optional<double> NumberOf(std::string_view token) {
  double number = 0;
  const auto [end, error] = std::from_chars(token.data(), token.data() + token.size(), number);
  if (error != std::errc() || end != token.data() + token.size()) return std::nullopt;
  return number;
}

// How far a point is to the left of the line from `a` to `b`.
double LeftOf(const CWorldPoint& a, const CWorldPoint& b, const CWorldPoint& point) {
  const double x = b.x - a.x;
  const double y = b.y - a.y;
  const double length = std::hypot(x, y);
  return length > 0 ? (x * (point.y - a.y) - y * (point.x - a.x)) / length : 0;
}

// The corners of a path that is one convex area with straight sides, which are then to the right of
// none; empty for any other.
std::vector<CWorldPoint> ConvexCorners(const PathShape& shape) {
  if (shape.subPaths.size() != 1) return {};
  const SubPath& run = shape.subPaths.front();
  if (run.segments.size() < 2 || run.segments.size() > 16) return {};
  std::vector<CWorldPoint> corners{run.start};
  for (const PathSegment& segment : run.segments) {
    if (segment.curve) return {};
    corners.push_back(segment.points[2]);
  }
  const auto isConvex = [&] {
    for (std::size_t i = 0; i < corners.size(); ++i) {
      const CWorldPoint& next = corners[(i + 1) % corners.size()];
      const bool all = std::ranges::all_of(corners, [&](const CWorldPoint& corner) {
        return LeftOf(corners[i], next, corner) > -ClipNoise;
      });
      if (!all) return false;
    }
    return true;
  };
  if (isConvex()) return corners;
  std::ranges::reverse(corners);
  return isConvex() ? corners : std::vector<CWorldPoint>();
}

std::vector<CWorldPoint> PointsOf(const PathShape& shape) {
  std::vector<CWorldPoint> points;
  for (const SubPath& run : shape.subPaths) {
    points.push_back(run.start);
    for (const PathSegment& segment : run.segments) {
      for (std::size_t i = segment.curve ? 0 : 2; i < 3; ++i) points.push_back(segment.points[i]);
    }
  }
  return points;
}

// Whether the points are all within the area, or all beyond one of its sides.
struct Place {
  bool within = true;
  bool beyond = false;
};
Place PlaceOf(std::span<const CWorldPoint> points, const std::vector<CWorldPoint>& area) {
  Place place;
  for (std::size_t i = 0; i < area.size(); ++i) {
    const CWorldPoint& next = area[(i + 1) % area.size()];
    bool allBeyond = true;
    for (const CWorldPoint& point : points) {
      const double left = LeftOf(area[i], next, point);
      if (left < -Slack) place.within = false;
      // Also for a side without a length, which all points are on.
      if (left >= 0) allBeyond = false;
    }
    if (allBeyond) place.beyond = true;
  }
  return place;
}

}  // namespace

ScriptReader::ScriptReader(double width, double height, const TM& toPage, bool dashes,
                           TakePaint take)
    : m_Width(width),
      m_Height(height),
      m_ToPage(toPage),
      m_Dashes(dashes),
      m_Take(std::move(take)) {
  ResetClip();
}

bool ScriptReader::End(std::string reason) {
  m_Reason = std::move(reason);
  m_Ended = true;
  return false;
}

bool ScriptReader::Write(std::string_view piece) {
  while (!m_Ended && !piece.empty()) {
    const std::size_t end = std::min(piece.find_first_of(Whitespace), piece.size());
    const bool whole = end < piece.size();
    if (!whole || !m_Partial.empty()) m_Partial.append(piece.substr(0, end));
    if (m_Partial.size() > MaximumToken) return End("it has parts that are no paths");
    if (whole) {
      const std::string joined = std::exchange(m_Partial, {});
      const std::string_view token = joined.empty() ? piece.substr(0, end) : joined;
      if (!token.empty()) TakeToken(token);
    }
    piece.remove_prefix(std::min(end + 1, piece.size()));
  }
  return !m_Ended;
}

bool ScriptReader::Finish() { return !m_Ended && Flush(); }

bool ScriptReader::TakeToken(std::string_view token) {
  if (token.starts_with('[')) {
    m_List.clear();
    m_InList = true;
    token.remove_prefix(1);
  }
  const bool closes = m_InList && token.ends_with(']');
  if (closes) token.remove_suffix(1);
  if (const auto number = NumberOf(token)) {
    std::vector<double>& to = m_InList ? m_List : m_Operands;
    if (to.size() == MaximumOperands) return End("it has parts that are no paths");
    to.push_back(*number);
    token = {};
  }
  if (closes) m_InList = false;
  return token.empty() || TakeOperator(token);
}

bool ScriptReader::TakeOperator(std::string_view name) {
  if (name.starts_with("//")) {
    m_Name = name.substr(2);
    return true;
  }
  if (name == "fill+" || name == "fill") return Fill();
  if (name == "stroke+" || name == "stroke") return Stroke();
  if (const auto found =
          std::ranges::find(Reasons, name, [](const auto& row) { return row.first; });
      found != Reasons.end()) {
    return End(std::string(found->second));
  }
  constexpr std::array<std::string_view, 17> states = {
      "g",        "rgb",           "a",          "rgba",         "set-source", "set-line-width",
      "set-dash", "set-fill-rule", "scale",      "translate",    "set-matrix", "identity",
      "clip+",    "clip",          "reset-clip", "set-operator", "pop"};
  if (std::ranges::find(states, name) != states.end()) {
    TakeState(name);
  } else if (!TakePathStep(name)) {
    return false;
  }
  m_Operands.clear();
  return true;
}

double ScriptReader::Operand(std::size_t count, std::size_t index) const {
  return m_Operands.size() < count ? 0 : m_Operands[m_Operands.size() - count + index];
}

CWorldPoint ScriptReader::OnPage(double x, double y) const {
  const auto mapped = [](const TM& m, const CWorldPoint& point) {
    return CWorldPoint{m.a * point.x + m.c * point.y + m.tx, m.b * point.x + m.d * point.y + m.ty};
  };
  return mapped(m_ToPage, mapped(m_Matrix, {x, y}));
}

CWorldPoint ScriptReader::PointOf(std::size_t count, std::size_t index) const {
  return OnPage(Operand(count, index), Operand(count, index + 1));
}

// The run that lines are added to. After one is closed the next begins where that began.
SubPath& ScriptReader::Run() {
  if (m_Path.subPaths.empty()) m_Path.subPaths.emplace_back();
  if (m_Path.subPaths.back().closed) {
    const CWorldPoint start = m_Path.subPaths.back().start;
    m_Path.subPaths.emplace_back().start = start;
  }
  return m_Path.subPaths.back();
}

bool ScriptReader::TakePathStep(std::string_view name) {
  if (name == "n") {
    m_Path = {};
    m_Points = 0;
    ++m_PathNumber;
    return true;
  }
  if (++m_Points > graphics::MaximumVectorPoints) return End("it has too many points");
  if (name == "m") {
    m_Path.subPaths.emplace_back().start = PointOf(2, 0);
  } else if (name == "l") {
    Run().segments.push_back({false, {CWorldPoint(), CWorldPoint(), PointOf(2, 0)}});
  } else if (name == "c") {
    Run().segments.push_back({true, {PointOf(6, 0), PointOf(6, 2), PointOf(6, 4)}});
  } else if (name == "h") {
    if (!m_Path.subPaths.empty()) m_Path.subPaths.back().closed = true;
  } else if (name == "rectangle") {
    const double left = Operand(4, 0);
    const double top = Operand(4, 1);
    const double right = left + Operand(4, 2);
    const double bottom = top + Operand(4, 3);
    SubPath& run = m_Path.subPaths.emplace_back();
    run.start = OnPage(left, top);
    run.closed = true;
    m_Points += 3;
    for (const CWorldPoint& corner :
         {OnPage(right, top), OnPage(right, bottom), OnPage(left, bottom)}) {
      run.segments.push_back({false, {CWorldPoint(), CWorldPoint(), corner}});
    }
  } else if (std::ranges::find(Harmless, name) == Harmless.end()) {
    return End("it has parts that are no paths");
  }
  return true;
}

// --- State ---

void ScriptReader::TakeSource(std::string_view name) {
  if (name == "set-source") {
    m_Color = m_NextColor;
    m_Alpha = m_NextAlpha;
    return;
  }
  m_NextAlpha = 1;
  if (name == "g") {
    m_NextColor.fill(Operand(1, 0));
  } else if (name == "a") {
    m_NextColor.fill(0);
    m_NextAlpha = Operand(1, 0);
  } else {
    const std::size_t count = name == "rgba" ? 4 : 3;
    for (std::size_t i = 0; i < 3; ++i) m_NextColor[i] = Operand(count, i);
    if (count == 4) m_NextAlpha = Operand(4, 3);
  }
}

// The library scales and moves the identity alone.
void ScriptReader::TakeMatrix(std::string_view name) {
  const auto part = [&](std::size_t i) { return i < m_List.size() ? m_List[i] : 0; };
  if (name == "identity") {
    m_Matrix = {};
    m_List = {1, 0, 0, 1, 0, 0};
  } else if (name == "set-matrix") {
    m_Matrix = {part(0), part(1), part(2), part(3), part(4), part(5)};
  } else if (name == "scale") {
    m_Matrix = {Operand(2, 0), 0, 0, Operand(2, 1), 0, 0};
  } else {
    m_Matrix.tx = Operand(2, 0);
    m_Matrix.ty = Operand(2, 1);
  }
}

void ScriptReader::TakeState(std::string_view name) {
  if (name == "set-line-width") {
    m_LineWidth = Operand(1, 0);
  } else if (name == "set-dash") {
    m_Dashed = !m_List.empty();
  } else if (name == "set-fill-rule") {
    m_EvenOdd = m_Name == "EVEN_ODD";
  } else if (name == "set-operator") {
    m_PlainOperator = m_Name == "OVER";
  } else if (name == "clip+" || name == "clip") {
    Clip();
  } else if (name == "reset-clip") {
    ResetClip();
  } else if (name == "scale" || name == "translate" || name == "set-matrix" || name == "identity") {
    TakeMatrix(name);
  } else if (name != "pop") {
    TakeSource(name);
  }
}

void ScriptReader::ResetClip() {
  m_Clips = {{{0, 0}, {m_Width, 0}, {m_Width, m_Height}, {0, m_Height}}};
}

void ScriptReader::Clip() {
  std::erase_if(m_Path.subPaths, [](const SubPath& run) { return run.segments.empty(); });
  m_Clips.push_back(ConvexCorners(m_Path));
}

// --- Painting ---

// The box of a curve is tighter than its control points, and they are where the box is not within
// a clip that is turned.
ScriptReader::Sight ScriptReader::SightOf(const PathShape& shape) const {
  const BOUNDS bounds = document::BoundsOf(shape, TM());
  const std::array<CWorldPoint, 4> box = {{{bounds.xmin, bounds.ymin},
                                           {bounds.xmax, bounds.ymin},
                                           {bounds.xmax, bounds.ymax},
                                           {bounds.xmin, bounds.ymax}}};
  std::vector<CWorldPoint> points;
  Sight sight = Sight::Whole;
  for (const Corners& clip : m_Clips) {
    if (clip.empty()) {
      sight = Sight::Cut;
      continue;
    }
    Place place = PlaceOf(box, clip);
    if (!place.within && !place.beyond) {
      if (points.empty()) points = PointsOf(shape);
      place = PlaceOf(points, clip);
    }
    if (place.beyond) return Sight::None;
    if (!place.within && sight == Sight::Whole) sight = IsPage(clip) ? Sight::Page : Sight::Part;
  }
  return sight;
}

// Pages come with a clip of their own size, too.
bool ScriptReader::IsPage(const Corners& clip) const {
  const std::array<CWorldPoint, 4> page = {
      {{0, 0}, {m_Width, 0}, {m_Width, m_Height}, {0, m_Height}}};
  return PlaceOf(page, clip).within;
}

ScriptReader::Check ScriptReader::CheckPaint() {
  m_Operands.clear();
  std::erase_if(m_Path.subPaths, [](const SubPath& run) { return run.segments.empty(); });
  if (m_Path.subPaths.empty() || m_Alpha <= 0) return Check::Hidden;
  const auto ended = [&](const char* reason) {
    End(reason);
    return Check::Ended;
  };
  const Sight sight = SightOf(m_Path);
  if (sight == Sight::None) return Check::Hidden;
  if (!m_PlainOperator) return ended("it mixes the colours of parts that lie above each other");
  // The library writes six digits.
  if (m_Alpha < 1 - 1e-6) return ended("it is translucent");
  if (sight == Sight::Cut) return ended("a path cuts out a part of it");
  if (sight == Sight::Page) return ended("the edge of its page cuts off a part of it");
  if (sight == Sight::Part) return ended("a clip with straight edges cuts off a part of it");
  return Check::Paints;
}

namespace {

VectorPath::Rgb RgbOf(const std::array<double, 3>& color) {
  VectorPath::Rgb rgb{};
  for (std::size_t i = 0; i < 3; ++i) {
    const double value = std::clamp(color[i], 0.0, 1.0) * 255;
    // Eight bits are the usual, of which the library wrote six digits.
    rgb[i] = std::abs(value - std::round(value)) < 0.001 ? std::round(value) : value;
  }
  return rgb;
}

}  // namespace

bool ScriptReader::Flush() {
  if (m_Pending && !m_Take(*std::exchange(m_Pending, std::nullopt))) m_Ended = true;
  return !m_Ended;
}

bool ScriptReader::Fill() {
  const Check check = CheckPaint();
  if (check != Check::Paints) return check == Check::Hidden;
  if (!Flush()) return false;
  VectorPath& path = m_Pending.emplace();
  path.shape = m_Path;
  path.shape.fillRule = m_EvenOdd ? document::FillRule::EvenOdd : document::FillRule::NonZero;
  path.shape.fillsOpen = true;
  path.fill = RgbOf(m_Color);
  m_PendingPath = m_PathNumber;
  return true;
}

bool ScriptReader::Stroke() {
  const Check check = CheckPaint();
  if (check != Check::Paints) return check == Check::Hidden;
  if (m_Dashed && !m_Dashes) return End("it has dashed lines");
  // A path that is filled and then outlined is one object.
  if (!m_Pending || m_PendingPath != m_PathNumber) {
    if (!Flush()) return false;
    m_Pending.emplace().shape = m_Path;
    m_Pending->shape.fillRule = document::FillRule::NonZero;
    m_Pending->shape.fillsOpen = true;
  }
  m_Pending->line = RgbOf(m_Color);
  const TM& m = m_Matrix;
  const double width = m_LineWidth * std::sqrt(std::abs(m.a * m.d - m.b * m.c));
  m_Pending->lineWidth = width <= ThinnestWidth ? 0 : width;
  return Flush();
}

}  // namespace rastrel::drawing
