#include "cutting/dxf/dxf_reader.h"

#include <cmath>
#include <cstddef>
#include <numbers>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "cutting/drawing/maps.h"
#include "cutting/dxf/dxf_color.h"
#include "cutting/dxf/dxf_file.h"
#include "cutting/dxf/dxf_shapes.h"
#include "cutting/job/job_file.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cutting {
namespace {

constexpr int MaximumDepth = 16;              // of blocks within blocks
constexpr std::size_t MaximumTypeBytes = 40;  // of a message
constexpr int ByBlock = 0;
constexpr int ByLayer = 256;
constexpr double AlmostFlat = 1e-6;

// The appearance that an object takes over from the block that it is in, or is inserted with.
struct Look {
  std::string_view layer{};  // empty: none
  PaintColor color = DxfColor(7);
  double lineWidth = 0;
};

struct Frame {
  Transform map;  // to millimetres
  Look look;
  int depth = 0;
};

// Millimetres of a unit of $INSUNITS; 0 of an unknown one.
double UnitOf(int unit) {
  switch (unit) {
    case 0: return 1;
    case 1: return 25.4;
    case 2: return 304.8;
    case 4: return 1;
    case 5: return 10;
    case 6: return 1000;
    case 7: return 1e6;
    case 8: return 25.4e-6;
    case 9: return 25.4e-3;
    case 10: return 914.4;
    case 11: return 1e-7;
    case 12: return 1e-6;
    case 13: return 1e-3;
    case 14: return 100;
    case 15: return 1e4;
    case 16: return 1e5;
    case 21: return 1200.0 / 3937 * 1000;
    default: return 0;
  }
}

// A character U+XXXX may be written as \U+XXXX in files of any code page.
std::string WithCharacters(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    if (text.starts_with("\\U+") && text.size() >= 7) {
      const std::string digits(text.substr(3, 4));
      if (digits.find_first_not_of("0123456789abcdefABCDEF") == digits.npos) {
        plain += os::Utf8FromWide(
            std::wstring(1, static_cast<wchar_t>(std::stoul(digits, nullptr, 16))));
        text.remove_prefix(7);
        continue;
      }
    }
    plain += text.front();
    text.remove_prefix(1);
  }
  return plain;
}

class Reader {
 public:
  Reader(std::string_view text, const std::string& name) : m_Limits(text.size()), m_Name(name) {}

  Expected<Drawing> Read(std::string_view text);

 private:
  bool Fail(int line, std::string why);
  bool Failed(const DxfGroups& groups) {
    return groups.HasFailed() && !Fail(groups.FaultLine(), groups.Why());
  }
  bool DrawAll(std::span<const DxfObject> objects, const Frame& frame);
  bool DrawPolyline(std::span<const DxfObject> objects, std::size_t& index, const Frame& frame);
  bool DrawInsert(DxfGroups& groups, const DxfObject& object, const Frame& frame, const Look& look);
  bool DrawBlock(const DxfBlock& block, DxfGroups& groups, const Frame& frame, const Look& look);
  bool DrawShape(DxfGroups& groups, const DxfObject& object, const Frame& frame, const Look& look);
  [[nodiscard]] std::optional<Look> LookOf(DxfGroups& groups, const Frame& frame) const;
  [[nodiscard]] bool IsDrawn(DxfGroups& groups, const DxfObject& object);
  [[nodiscard]] std::optional<Transform> OwnFrame(DxfGroups& groups, const DxfObject& object);
  bool Add(std::vector<Contour> contours, int line, const Look& look);
  [[nodiscard]] std::string NameOf(std::string_view text) const;

  DxfFile m_File;
  DrawingLimits m_Limits;
  const std::string& m_Name;
  Findings m_Findings;
  CutJob m_Job;
  Failure m_Failure;
};

bool Reader::Fail(int line, std::string why) {
  m_Failure = FailureOf(std::move(why), FailureCode::BadInput);
  m_Failure.where = m_Name;
  m_Failure.line = line;
  m_Failure.column = 1;
  return false;
}

std::string Reader::NameOf(std::string_view text) const {
  const std::string plain = os::Utf8FromUtf8OrAnsi(text);
  return NameWithin(m_File.isUtf8 ? plain : WithCharacters(plain), MaximumTextBytes);
}

// Objects of another space and invisible ones are left out, as nobody sees them in the drawing.
bool Reader::IsDrawn(DxfGroups& groups, const DxfObject& object) {
  if (groups.Whole(67) == 0) return groups.Whole(60) == 0;
  m_Findings.Add(object.line, "the objects of the paper space are not read");
  return false;
}

// Nothing for an object whose layer is hidden.
std::optional<Look> Reader::LookOf(DxfGroups& groups, const Frame& frame) const {
  Look look = frame.look;
  look.layer = groups.Text(8, "0");
  if (look.layer == "0" && !frame.look.layer.empty()) look.layer = frame.look.layer;
  const auto found = m_File.layers.find(DxfKey(look.layer));
  const DxfLayer* const layer = found == m_File.layers.end() ? nullptr : &found->second;
  if (layer != nullptr && layer->isHidden) return {};
  const int color = std::abs(groups.Whole(62, ByLayer));
  if (color == ByLayer) look.color = layer == nullptr ? DxfColor(7) : layer->color;
  if (color != ByLayer && color != ByBlock) look.color = DxfColor(color);
  if (groups.Has(420)) look.color = DxfTrueColor(groups.Whole(420));
  const int weight = groups.Whole(370, -1);
  if (weight == -1) look.lineWidth = layer == nullptr ? 0 : layer->lineWidth;
  if (weight >= 0) look.lineWidth = DxfLineWidth(weight);
  return look;
}

// Most objects lie in the plane, seen from above or, mirrored, from below.
std::optional<Transform> Reader::OwnFrame(DxfGroups& groups, const DxfObject& object) {
  const double z = groups.Number(230, 1);
  const bool isFlat = std::abs(groups.Number(210)) < AlmostFlat &&
                      std::abs(groups.Number(220)) < AlmostFlat && std::abs(z) > AlmostFlat;
  if (!isFlat) {
    m_Findings.Add(object.line, "objects that are turned out of the drawing's plane are not read");
    return {};
  }
  const bool isOfWorld = object.type == "LINE" || object.type == "ELLIPSE" ||
                         object.type == "SPLINE" || object.type == "POINT";
  return Transform{z < 0 && !isOfWorld ? -1.0 : 1.0, 0, 0, 1, 0, 0};
}

bool Reader::Add(std::vector<Contour> contours, int line, const Look& look) {
  if (contours.empty()) return true;
  std::size_t count = 0;
  for (const Contour& contour : contours) count += contour.segments.size() + 1;
  if (!m_Limits.TakeSegments(count) || m_Job.paths.size() >= MaximumPaths)
    return Fail(line, "the drawing has too many objects");
  CutPath path;
  path.contours = std::move(contours);
  path.paint = {.kind = Paint::Kind::Stroke,
                .lineWidth = look.lineWidth,
                .color = look.color,
                .layer = NameOf(look.layer)};
  m_Job.paths.push_back(std::move(path));
  return true;
}

bool Reader::DrawShape(DxfGroups& groups, const DxfObject& object, const Frame& frame,
                       const Look& look) {
  const auto own = OwnFrame(groups, object);
  if (Failed(groups)) return false;
  if (!own) return true;
  DxfShape shape = ShapeOf(object.type, groups, Then(*own, frame.map));
  if (Failed(groups)) return false;
  const std::string type = NameOf(object.type.substr(0, MaximumTypeBytes));
  if (shape.result == DxfShape::Result::Unknown)
    m_Findings.Add(object.line, "objects of the type " + type + " are not read");
  if (shape.result == DxfShape::Result::Unsound)
    m_Findings.Add(object.line, "objects of the type " + type +
                                    " are not read where their numbers make no such curve");
  return Add(std::move(shape.contours), object.line, look);
}

// The vertices are objects of their own that follow, up to SEQEND.
bool Reader::DrawPolyline(std::span<const DxfObject> objects, std::size_t& index,
                          const Frame& frame) {
  const DxfObject& head = objects[index];
  DxfGroups groups(head);
  constexpr int Closed = 1;
  constexpr int Mesh = 16 | 64;
  constexpr int ControlPoint = 16;
  const int flags = groups.Whole(70);
  std::vector<DxfVertex> vertices;
  while (index + 1 < objects.size() && objects[index + 1].type == "VERTEX") {
    const DxfObject& object = objects[++index];
    DxfGroups vertex(object);
    const bool isFrame = (vertex.Whole(70) & ControlPoint) != 0;
    if (!isFrame) vertices.push_back({{vertex.Number(10), vertex.Number(20)}, vertex.Number(42)});
    if (Failed(vertex)) return false;
    if (!m_Limits.TakeWork(object.text.size()))
      return Fail(object.line, "the drawing has too many objects");
  }
  if (index + 1 < objects.size() && objects[index + 1].type == "SEQEND") ++index;
  const auto look = LookOf(groups, frame);
  const auto own = OwnFrame(groups, head);
  const bool isDrawn = look && own && IsDrawn(groups, head);
  if (Failed(groups)) return false;
  if (!isDrawn) return true;
  if ((flags & Mesh) != 0) {
    m_Findings.Add(head.line, "meshes are not read");
    return true;
  }
  return Add(PolylineOf(vertices, (flags & Closed) != 0, Then(*own, frame.map)), head.line, *look);
}

bool Reader::DrawBlock(const DxfBlock& block, DxfGroups& groups, const Frame& frame,
                       const Look& look) {
  const double angle = std::fmod(groups.Number(50), 360) / 180 * std::numbers::pi;
  const Transform scaled{groups.Number(41, 1), 0, 0, groups.Number(42, 1), 0, 0};
  const Transform turned{std::cos(angle), std::sin(angle), -std::sin(angle), std::cos(angle), 0, 0};
  const int columns = std::max(1, groups.Whole(70, 1));
  const int rows = std::max(1, groups.Whole(71, 1));
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      const Point place = turned.Apply({column * groups.Number(44), row * groups.Number(45)});
      Transform map = Then(Transform{1, 0, 0, 1, -block.base.x, -block.base.y}, scaled);
      map = Then(map, turned);
      map = Then(map,
                 Transform{1, 0, 0, 1, groups.Number(10) + place.x, groups.Number(20) + place.y});
      if (!DrawAll(block.objects, {Then(map, frame.map), look, frame.depth + 1})) return false;
      if (!m_Limits.TakeWork(64))
        return Fail(groups.All().front().line, "the block is inserted too often");
    }
  }
  return true;
}

bool Reader::DrawInsert(DxfGroups& groups, const DxfObject& object, const Frame& frame,
                        const Look& look) {
  const auto block = m_File.blocks.find(DxfKey(groups.Text(2)));
  if (block == m_File.blocks.end()) {
    m_Findings.Add(object.line, "blocks that the file does not have are left out");
    return true;
  }
  if (frame.depth == MaximumDepth)
    return Fail(object.line, "blocks lie more than " + std::to_string(MaximumDepth) +
                                 " deep within each other, or in themselves");
  const auto own = OwnFrame(groups, object);
  if (Failed(groups)) return false;
  if (!own) return true;
  Frame inner = frame;
  inner.map = Then(*own, frame.map);
  const bool isDrawn = DrawBlock(block->second, groups, inner, look);
  return isDrawn && !Failed(groups);
}

bool Reader::DrawAll(std::span<const DxfObject> objects, const Frame& frame) {
  for (std::size_t index = 0; index < objects.size(); ++index) {
    const DxfObject& object = objects[index];
    if (!m_Limits.TakeWork(object.text.size() + 16))
      return Fail(object.line, "the blocks of the drawing repeat too many objects");
    if (object.type == "POLYLINE") {
      if (!DrawPolyline(objects, index, frame)) return false;
      continue;
    }
    if (object.type == "SEQEND") continue;
    DxfGroups groups(object);
    const auto look = LookOf(groups, frame);
    const bool isDrawn = look && IsDrawn(groups, object);
    if (Failed(groups)) return false;
    if (!isDrawn) continue;
    const bool isRead = object.type == "INSERT" ? DrawInsert(groups, object, frame, *look)
                                                : DrawShape(groups, object, frame, *look);
    if (!isRead) return false;
  }
  return true;
}

Expected<Drawing> Reader::Read(std::string_view text) {
  auto file = TakeDxfApart(text, m_Name);
  if (!file) return file.Error();
  m_File = *std::move(file);
  const double unit = UnitOf(m_File.unit);
  if (unit == 0) {
    Fail(1, "the drawing's unit is not read: $INSUNITS " + std::to_string(m_File.unit));
    return m_Failure;
  }
  if (m_File.unit == 0)
    m_Findings.Add(1, "the drawing names no unit; its numbers are taken as millimetres");
  if (!DrawAll(m_File.objects, {.map = {unit, 0, 0, unit, 0, 0}, .look = {}})) return m_Failure;
  FitPageToPaths(m_Job);
  if (!IsWithinLengths(m_Job)) {
    Fail(1, "the drawing is larger than 1 km");
    return m_Failure;
  }
  return Drawing{std::move(m_Job), m_Findings.Take()};
}

}  // namespace

Expected<Drawing> ReadDxf(std::string_view text, const std::string& name) {
  return Reader(text, name).Read(text);
}

}  // namespace rastrel::cutting
