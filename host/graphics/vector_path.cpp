#include "host/graphics/vector_path.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace rastrel::graphics {

using document::PathSegment;
using document::PathShape;
using document::SubPath;

namespace {

enum Flag : unsigned char { Filled = 1, Lined = 2, NonZero = 4, FillsOpen = 8 };

// Centimetres: far beyond every blank, and far from where numbers lose their millimetres.
constexpr double FarthestCoordinate = 1e9;

void Append(std::string& text, double number) {
  char bytes[sizeof number];
  std::memcpy(bytes, &number, sizeof number);
  text.append(bytes, sizeof bytes);
}

void Append(std::string& text, const CWorldPoint& point) {
  Append(text, point.x);
  Append(text, point.y);
}

// Reads a record from its beginning to its end. Whatever is not there, or not right, ends it.
class RecordReader {
 public:
  explicit RecordReader(std::string_view body) : m_Rest(body) {}

  [[nodiscard]] bool Failed() const { return m_Failed; }
  [[nodiscard]] bool AtEnd() const { return m_Rest.empty(); }
  void Fail() { m_Failed = true; }

  unsigned char Byte() {
    if (m_Rest.empty()) m_Failed = true;
    if (m_Failed) return 0;
    const auto byte = static_cast<unsigned char>(m_Rest.front());
    m_Rest.remove_prefix(1);
    return byte;
  }
  double Number(double least, double largest) {
    double number = 0;
    if (m_Rest.size() < sizeof number) m_Failed = true;
    if (m_Failed) return 0;
    std::memcpy(&number, m_Rest.data(), sizeof number);
    m_Rest.remove_prefix(sizeof number);
    // Written so that NaN fails.
    if (!(number >= least && number <= largest)) m_Failed = true;
    return number;
  }
  CWorldPoint Place() {
    const double x = Number(-FarthestCoordinate, FarthestCoordinate);
    return {x, Number(-FarthestCoordinate, FarthestCoordinate)};
  }
  VectorPath::Rgb Color() {
    VectorPath::Rgb color{};
    for (double& part : color) part = Number(0, 255);
    return color;
  }

 private:
  std::string_view m_Rest;
  bool m_Failed = false;
};

// One step of the path. A run begins with 'm', and nothing follows its 'h'.
void ReadStep(RecordReader& reader, PathShape& shape) {
  const unsigned char step = reader.Byte();
  if (step == 'm') {
    shape.subPaths.emplace_back().start = reader.Place();
    return;
  }
  if (shape.subPaths.empty() || shape.subPaths.back().closed) return reader.Fail();
  SubPath& run = shape.subPaths.back();
  switch (step) {
    case 'l':
      run.segments.push_back({false, {CWorldPoint(), CWorldPoint(), reader.Place()}});
      break;
    case 'c': {
      PathSegment& curve = run.segments.emplace_back();
      curve.curve = true;
      for (CWorldPoint& point : curve.points) point = reader.Place();
      break;
    }
    case 'h': run.closed = true; break;
    default: reader.Fail();
  }
}

}  // namespace

std::size_t PointCount(const PathShape& shape) {
  std::size_t count = 0;
  for (const SubPath& run : shape.subPaths) count += 1 + run.segments.size();
  return count;
}

std::string PathRecord(const VectorPath& path) {
  std::string body(1, static_cast<char>((path.fill ? Filled : 0) | (path.line ? Lined : 0)));
  if (path.shape.fillRule == document::FillRule::NonZero) body[0] |= NonZero;
  if (path.shape.fillsOpen) body[0] |= FillsOpen;
  for (const auto& color : {path.fill, path.line}) {
    for (std::size_t i = 0; color && i < 3; ++i) Append(body, (*color)[i]);
  }
  Append(body, path.lineWidth);
  for (const SubPath& run : path.shape.subPaths) {
    body += 'm';
    Append(body, run.start);
    for (const PathSegment& segment : run.segments) {
      body += segment.curve ? 'c' : 'l';
      for (std::size_t i = segment.curve ? 0 : 2; i < 3; ++i) Append(body, segment.points[i]);
    }
    if (run.closed) body += 'h';
  }
  return body;
}

Expected<VectorPath> ReadPathRecord(std::string_view body) {
  RecordReader reader(body);
  VectorPath path;
  const unsigned char flags = reader.Byte();
  if ((flags & ~(Filled | Lined | NonZero | FillsOpen)) != 0) reader.Fail();
  if ((flags & NonZero) != 0) path.shape.fillRule = document::FillRule::NonZero;
  path.shape.fillsOpen = (flags & FillsOpen) != 0;
  if ((flags & Filled) != 0) path.fill = reader.Color();
  if ((flags & Lined) != 0) path.line = reader.Color();
  path.lineWidth = reader.Number(0, FarthestCoordinate);
  while (!reader.AtEnd() && !reader.Failed()) ReadStep(reader, path.shape);
  if (reader.Failed() || path.shape.subPaths.empty()) {
    return FailureOf("the program that reads it writes no paths");
  }
  return path;
}

}  // namespace rastrel::graphics
