#include "host/drawing/exchange_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/drawing/exchange_entity.h"
#include "host/drawing/exchange_pairs.h"
#include "host/drawing/path_builder.h"
#include "host/drawing/spline.h"
#include "host/graphics/indexed_color.h"

namespace rastrel::drawing {

namespace {

constexpr double Radians = 3.14159265358979323846 / 180;
constexpr double FullTurn = 360 * Radians;
constexpr int DeepestBlock = 32;
constexpr std::size_t MaximumInsertions = 100'000;
constexpr std::size_t MaximumBlockText = std::size_t{64} << 20;  // read again for each insertion
constexpr std::size_t MaximumNotedKinds = 16;
constexpr std::size_t MaximumKindLength = 32;
constexpr double SplineTolerance = 1e-5;  // world units
constexpr double LineWeightUnit = 0.001;  // centimetres: weights are hundredths of a millimetre

constexpr int ByLayer = 256;
constexpr int ByBlock = 0;

// Centimetres of the units that $INSUNITS numbers; a file without one is in millimetres.
double UnitOf(int number) {
  constexpr std::array<double, 15> units = {
      0.1, 2.54, 30.48, 160'934.4, 0.1, 1, 100, 1e5, 2.54e-6, 2.54e-3, 91.44, 1e-8, 1e-7, 1e-4, 10};
  return number > 0 && number < 15 ? units[static_cast<std::size_t>(number)] : units[0];
}

struct Layer {
  VectorPath::Rgb color{};
  double lineWidth = 0;
  bool hidden = false;
};

struct Block {
  std::size_t place = 0;  // of its first entity
  CWorldPoint base;
};

// The place where entities are drawn, and the attributes that they take over.
struct Setting {
  TM matrix;
  VectorPath::Rgb color{};  // of the insertion, for entities that say so
  std::string_view layer;   // of the insertion, for entities on layer 0 of a block
  int depth = 0;
};

class ExchangeReader {
 public:
  ExchangeReader(std::string_view bytes, PathSink& sink) : m_Bytes(bytes), m_Sink(sink) {}
  Expected<void> Read();

 private:
  using Corners = std::vector<ExchangeEntity::Corner>;

  void FindParts();
  void ReadSetting(ExchangePairs& pairs);
  void ReadLayer(ExchangePairs& pairs);
  void ReadBlock(ExchangePairs& pairs);
  void DrawAll(std::size_t place, const Setting& setting);
  void Draw(const ExchangeEntity& entity, ExchangePairs& pairs, const Setting& setting);
  void Insert(const ExchangeEntity& entity, const Setting& setting);
  void InsertBlock(std::string_view name, const Setting& setting);
  [[nodiscard]] Corners ReadVertices(ExchangePairs& pairs) const;
  static void AddPolyline(const Corners& corners, bool closed, PathBuilder& path);
  static void AddRound(const ExchangeEntity& entity, PathBuilder& path);
  void AddSplineOf(const ExchangeEntity& entity, const TM& matrix, PathBuilder& path) const;
  [[nodiscard]] const Layer& LayerOf(const ExchangeEntity& entity, const Setting& setting) const;
  [[nodiscard]] VectorPath::Rgb ColorOf(const ExchangeEntity& entity, const Setting& setting) const;
  [[nodiscard]] double WidthOf(const ExchangeEntity& entity, const Setting& setting) const;

  std::string_view m_Bytes;
  PathSink& m_Sink;
  double m_Unit = UnitOf(0);
  std::map<std::string_view, Layer> m_Layers;
  std::map<std::string_view, Block> m_Blocks;
  std::vector<std::size_t> m_Entities;  // places of the sections' first
  std::size_t m_Insertions = 0;
  std::size_t m_BlockText = 0;
  std::set<std::string> m_LeftOut;
};

// --- The file's parts ---

void ExchangeReader::ReadSetting(ExchangePairs& pairs) {
  if (pairs.Value() != "$INSUNITS" || !pairs.Next()) return;
  m_Unit = UnitOf(pairs.Int());
}

VectorPath::Rgb TrueColor(int number) {
  return {static_cast<double>(number >> 16 & 0xFF), static_cast<double>(number >> 8 & 0xFF),
          static_cast<double>(number & 0xFF)};
}

double WidthOfWeight(int weight) { return weight > 0 ? weight * LineWeightUnit : 0; }

void ExchangeReader::ReadLayer(ExchangePairs& pairs) {
  ExchangeEntity entity;
  const bool more = entity.Read(pairs);
  Layer layer;
  const int index = entity.Int(62, 7);
  layer.color =
      entity.Has(420) ? TrueColor(entity.Int(420)) : graphics::IndexedColor(std::abs(index));
  layer.hidden = index < 0 || (entity.Int(70) & 1) != 0;
  layer.lineWidth = WidthOfWeight(entity.Int(370));
  m_Layers.insert_or_assign(entity.Text(2), layer);
  if (more) pairs.GoTo(pairs.Place());
}

void ExchangeReader::ReadBlock(ExchangePairs& pairs) {
  ExchangeEntity entity;
  if (!entity.Read(pairs)) return;
  m_Blocks.insert_or_assign(entity.Text(2), Block{pairs.Place(), entity.Point(10)});
  pairs.GoTo(pairs.Place());
}

// Layers and blocks may come after the entities that need them.
void ExchangeReader::FindParts() {
  ExchangePairs pairs(m_Bytes);
  std::string_view section;
  bool named = true;
  while (pairs.Next()) {
    if (pairs.Begins("SECTION")) {
      named = false;
    } else if (!named && pairs.Code() == 2) {
      named = true;
      section = pairs.Value();
      if (section == "ENTITIES" && pairs.Next()) {
        m_Entities.push_back(pairs.Place());
        pairs.GoTo(pairs.Place());
      }
    } else if (section == "HEADER" && pairs.Code() == 9) {
      ReadSetting(pairs);
    } else if (section == "TABLES" && pairs.Begins("LAYER")) {
      ReadLayer(pairs);
    } else if (section == "BLOCKS" && pairs.Begins("BLOCK")) {
      ReadBlock(pairs);
    }
  }
}

// --- Attributes ---

const Layer& ExchangeReader::LayerOf(const ExchangeEntity& entity, const Setting& setting) const {
  static const Layer usual;
  const std::string_view own = entity.Text(8);
  const auto found = m_Layers.find(own == "0" && setting.depth > 0 ? setting.layer : own);
  return found == m_Layers.end() ? usual : found->second;
}

VectorPath::Rgb ExchangeReader::ColorOf(const ExchangeEntity& entity,
                                        const Setting& setting) const {
  if (entity.Has(420)) return TrueColor(entity.Int(420));
  const int index = entity.Int(62, ByLayer);
  if (index == ByBlock) return setting.color;
  if (index == ByLayer) return LayerOf(entity, setting).color;
  return graphics::IndexedColor(index);
}

double ExchangeReader::WidthOf(const ExchangeEntity& entity, const Setting& setting) const {
  if (entity.Kind() == "LWPOLYLINE" && entity.Number(43) > 0) {
    const TM& m = setting.matrix;
    return entity.Number(43) * std::sqrt(std::abs(m.a * m.d - m.b * m.c));
  }
  constexpr int weightByLayer = -1;
  const int weight = entity.Int(370, weightByLayer);
  return weight == weightByLayer ? LayerOf(entity, setting).lineWidth : WidthOfWeight(weight);
}

// --- Entities ---

void ExchangeReader::DrawAll(std::size_t place, const Setting& setting) {
  ExchangePairs pairs(m_Bytes);
  pairs.GoTo(place);
  ExchangeEntity entity;
  bool more = pairs.Next();
  while (more && m_Sink.Taken() && m_BlockText <= MaximumBlockText) {
    const std::size_t begun = pairs.Place();
    more = entity.Read(pairs);
    if (setting.depth > 0) m_BlockText += std::max(pairs.Place(), begun) - begun;
    if (entity.Kind() == "ENDSEC" || entity.Kind() == "ENDBLK" || entity.Kind() == "EOF") return;
    constexpr int onPaper = 67;
    constexpr int invisible = 60;
    if (entity.Int(onPaper) == 0 && entity.Int(invisible) == 0 &&
        !LayerOf(entity, setting).hidden) {
      Draw(entity, pairs, setting);
    }
  }
}

// The corners of a POLYLINE, which come as entities of their own.
ExchangeReader::Corners ExchangeReader::ReadVertices(ExchangePairs& pairs) const {
  Corners corners;
  ExchangeEntity vertex;
  while (pairs.Begins("VERTEX")) {
    const bool more = vertex.Read(pairs);
    constexpr int frameOrMesh = 16 | 64 | 128;
    if ((vertex.Int(70) & frameOrMesh) == 0) {
      corners.push_back({vertex.Point(10), vertex.Number(42)});
    }
    if (!more || !m_Sink.HasRoomFor(corners.size())) break;
  }
  return corners;
}

void ExchangeReader::AddPolyline(const Corners& corners, bool closed, PathBuilder& path) {
  const auto goTo = [&](const ExchangeEntity::Corner& from, const CWorldPoint& to) {
    const double bulge = from.bulge;
    const CWorldPoint& p = from.point;
    if (std::abs(bulge) < 1e-9 || p == to) return path.LineTo(to);
    const double away = (1 - bulge * bulge) / (4 * bulge);
    const CWorldPoint centre{(p.x + to.x) / 2 - away * (to.y - p.y),
                             (p.y + to.y) / 2 + away * (to.x - p.x)};
    const CWorldPoint u{p.x - centre.x, p.y - centre.y};
    path.ArcTo(centre, u, {-u.y, u.x}, 0, 4 * std::atan(bulge));
  };
  if (corners.empty()) return;
  path.MoveTo(corners.front().point);
  for (std::size_t i = 1; i < corners.size(); ++i) goTo(corners[i - 1], corners[i].point);
  if (!closed) return;
  goTo(corners.back(), corners.front().point);
  path.Close();
}

// ARC, CIRCLE and ELLIPSE.
void ExchangeReader::AddRound(const ExchangeEntity& entity, PathBuilder& path) {
  const CWorldPoint centre = entity.Point(10);
  double start = 0;
  double end = FullTurn;
  CWorldPoint u{entity.Number(40), 0};
  CWorldPoint v{0, entity.Number(40)};
  if (entity.Kind() == "ARC") {
    start = entity.Number(50) * Radians;
    end = entity.Number(51) * Radians;
  } else if (entity.Kind() == "ELLIPSE") {
    u = entity.Point(11);
    const double ratio = entity.Number(40, 1) * (entity.Number(230, 1) < 0 ? -1 : 1);
    v = {-u.y * ratio, u.x * ratio};
    start = entity.Number(41);
    end = entity.Number(42, FullTurn);
  }
  double sweep = std::fmod(end - start, FullTurn);
  if (sweep <= 1e-9) sweep += FullTurn;
  path.MoveTo(PointOnEllipse(centre, u, v, start));
  path.ArcTo(centre, u, v, start, sweep);
  if (sweep > FullTurn - 1e-6) path.Close();
}

void ExchangeReader::AddSplineOf(const ExchangeEntity& entity, const TM& matrix,
                                 PathBuilder& path) const {
  const auto pointsOf = [&](int code) {
    const std::vector<double> x = entity.Numbers(code);
    const std::vector<double> y = entity.Numbers(code + 10);
    std::vector<CWorldPoint> points(std::min(x.size(), y.size()));
    for (std::size_t i = 0; i < points.size(); ++i) points[i] = {x[i], y[i]};
    return points;
  };
  Spline spline;
  spline.degree = entity.Int(71, 3);
  spline.knots = entity.Numbers(40);
  spline.points = pointsOf(10);
  spline.weights = entity.Numbers(41);
  const double scale = std::max(std::hypot(matrix.a, matrix.b), std::hypot(matrix.c, matrix.d));
  if (AddSpline(spline, SplineTolerance / (scale > 0 ? scale : 1), path)) {
    if ((entity.Int(70) & 1) != 0) path.CloseIfBack();
    return;
  }
  // One that only says which points it goes through.
  for (const CWorldPoint& point : pointsOf(11)) path.LineTo(point);
}

void ExchangeReader::InsertBlock(std::string_view name, const Setting& setting) {
  const auto block = m_Blocks.find(name);
  if (block == m_Blocks.end() || setting.depth > DeepestBlock) return;
  if (++m_Insertions > MaximumInsertions) return;
  Setting inner = setting;
  inner.matrix =
      Combined(setting.matrix, {1, 0, 0, 1, -block->second.base.x, -block->second.base.y});
  DrawAll(block->second.place, inner);
}

void ExchangeReader::Insert(const ExchangeEntity& entity, const Setting& setting) {
  Setting inner = setting;
  ++inner.depth;
  inner.color = ColorOf(entity, setting);
  if (entity.Text(8) != "0" || setting.depth == 0) inner.layer = entity.Text(8);
  const double angle = entity.Number(50) * Radians;
  const double cosine = std::cos(angle);
  const double sine = std::sin(angle);
  const double sx = entity.Number(41, 1);
  const double sy = entity.Number(42, 1);
  const int columns = std::max(entity.Int(70, 1), 1);
  const int rows = std::max(entity.Int(71, 1), 1);
  const CWorldPoint at = entity.Point(10);
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      if (m_Insertions > MaximumInsertions || !m_Sink.Taken()) return;
      const double x = column * entity.Number(44);
      const double y = row * entity.Number(45);
      const TM place{sx * cosine,
                     sx * sine,
                     -sy * sine,
                     sy * cosine,
                     at.x + x * cosine - y * sine,
                     at.y + x * sine + y * cosine};
      inner.matrix = Combined(setting.matrix, place);
      InsertBlock(entity.Text(2), inner);
      // One that draws nothing would be tried for each place.
      if (!m_Blocks.contains(entity.Text(2))) return;
    }
  }
}

void ExchangeReader::Draw(const ExchangeEntity& entity, ExchangePairs& pairs,
                          const Setting& setting) {
  const std::string_view kind = entity.Kind();
  Setting own = setting;
  const bool inWorld = kind == "LINE" || kind == "SPLINE" || kind == "ELLIPSE";
  // Seen from below: the coordinates of flat entities are mirrored.
  if (!inWorld && entity.Number(230, 1) < 0) {
    own.matrix = Combined(setting.matrix, {-1, 0, 0, 1, 0, 0});
  }
  PathBuilder path(own.matrix);
  bool filled = false;
  if (kind == "LINE") {
    path.MoveTo(entity.Point(10));
    path.LineTo(entity.Point(11));
  } else if (kind == "LWPOLYLINE") {
    const Corners corners = entity.Corners();
    if (!m_Sink.HasRoomFor(corners.size())) return;
    AddPolyline(corners, (entity.Int(70) & 1) != 0, path);
  } else if (kind == "POLYLINE") {
    constexpr int mesh = 16 | 64;
    const Corners corners = ReadVertices(pairs);
    if ((entity.Int(70) & mesh) == 0) AddPolyline(corners, (entity.Int(70) & 1) != 0, path);
  } else if (kind == "CIRCLE" || kind == "ARC" || kind == "ELLIPSE") {
    AddRound(entity, path);
  } else if (kind == "SPLINE") {
    AddSplineOf(entity, own.matrix, path);
  } else if (kind == "SOLID" || kind == "TRACE") {
    const CWorldPoint third = entity.Point(12);
    const CWorldPoint fourth = entity.Has(13) ? entity.Point(13) : third;
    AddPolyline({{entity.Point(10), 0}, {entity.Point(11), 0}, {fourth, 0}, {third, 0}}, true,
                path);
    filled = true;
  } else if (kind == "INSERT") {
    Insert(entity, own);
  } else if (kind == "DIMENSION") {
    ++own.depth;
    InsertBlock(entity.Text(2), own);
  } else if (kind != "SEQEND" && kind != "VERTEX" && kind != "VIEWPORT" && kind != "ATTDEF" &&
             m_LeftOut.size() < MaximumNotedKinds) {
    m_LeftOut.insert(std::string(kind.substr(0, MaximumKindLength)));
  }
  if (path.IsEmpty()) return;
  const VectorPath::Rgb color = ColorOf(entity, setting);
  if (filled) {
    path.Finish(m_Sink, color, std::nullopt, 0);
  } else {
    path.Finish(m_Sink, std::nullopt, color, WidthOf(entity, own));
  }
}

Expected<void> ExchangeReader::Read() {
  FindParts();
  Setting setting;
  setting.matrix = {m_Unit, 0, 0, m_Unit, 0, 0};
  for (const std::size_t place : m_Entities) DrawAll(place, setting);
  if (!m_Sink.Taken()) return m_Sink.Taken().Error();
  if (m_Insertions > MaximumInsertions) {
    return FailureOf("its blocks are drawn more than " + std::to_string(MaximumInsertions) +
                     " times");
  }
  if (m_BlockText > MaximumBlockText) {
    return FailureOf("its blocks are drawn so often that they have more than " +
                     std::to_string(MaximumBlockText >> 20) + " MiB of text together");
  }
  if (!m_LeftOut.empty()) {
    std::string names;
    for (const std::string& name : m_LeftOut) names += (names.empty() ? "" : ", ") + name;
    m_Sink.Note("entities that are no lines are left out: " + names);
  }
  if (m_Sink.Paths() == 0) return FailureOf("it draws nothing");
  return {};
}

}  // namespace

Expected<void> ReadExchangeFile(std::string_view bytes, PathSink& sink) {
  return ExchangeReader(bytes, sink).Read();
}

}  // namespace rastrel::drawing
