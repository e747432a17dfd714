// Tool paths of any contours: numbers of every kind, settings and options.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "cutting/toolpath/toolpath.h"

namespace {

using namespace rastrel::cutting;

// Takes the input apart, and is all zeros at its end.
class Source {
 public:
  Source(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
  [[nodiscard]] bool IsEmpty() const { return m_size == 0; }
  std::uint8_t Byte() {
    if (m_size == 0) return 0;
    --m_size;
    return *m_data++;
  }
  // Small numbers by a byte, and any by eight.
  double Number() {
    const std::uint8_t first = Byte();
    if (first < 250 || m_size < sizeof(double)) return first;
    double value = 0;
    std::memcpy(&value, m_data, sizeof(double));
    m_data += sizeof(double);
    m_size -= sizeof(double);
    return value;
  }
  Point Place() {
    const double x = Number();
    return {x, Number()};
  }

 private:
  const std::uint8_t* m_data;
  std::size_t m_size;
};

Contour ContourFrom(Source& source) {
  const std::uint8_t head = source.Byte();
  Contour contour{.start = source.Place(), .segments = {}, .closed = (head & 1) != 0};
  for (int i = head >> 4; i > 0; --i) {
    const Point end = source.Place();
    if ((head & 2) == 0) {
      contour.segments.push_back(LineTo(end));
    } else {
      const Point first = source.Place();
      contour.segments.push_back(CurveTo(first, source.Place(), end));
    }
  }
  return contour;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Source source(data, size);
  CutJob job{.width = source.Number(), .height = source.Number(), .paths = {}};
  ToolPathOptions options;
  options.corners = static_cast<Corners>(source.Byte() % 3);
  const std::uint8_t head = source.Byte();
  if ((head & 1) != 0) options.weeding.boxGap = source.Number();
  if ((head & 2) != 0) options.weeding.step = source.Number();
  options.order = (head & 4) == 0;
  while (!source.IsEmpty() && job.paths.size() < 50) {
    CutPath path{.contours = {}, .operation = static_cast<Operation>(source.Byte() % 9)};
    path.settings.order = source.Byte() % 3;
    path.settings.kerf = source.Number();
    path.settings.overcut = source.Number();
    path.settings.leadIn = source.Number();
    path.settings.bridges = source.Byte() % 5;
    path.settings.bridgeWidth = source.Number();
    for (int i = source.Byte() % 6; i > 0; --i) path.contours.push_back(ContourFrom(source));
    job.paths.push_back(path);
  }
  if (const auto result = MakeToolPaths(job, options)) {
    // Settings that were worked are not worked again.
    for (const CutPath& path : result->job.paths) {
      if (HasTool(path.operation) && path.settings != ToolSettings{.order = path.settings.order})
        __builtin_trap();
    }
  }
  return 0;
}
