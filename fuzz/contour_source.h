#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "cutting/job/cut_job.h"

namespace rastrel::fuzz {

/// Takes the input apart, and is all zeros at its end.
class Source {
 public:
  Source(const std::uint8_t* data, std::size_t size) : m_Data(data), m_Size(size) {}
  [[nodiscard]] bool IsEmpty() const { return m_Size == 0; }
  std::uint8_t Byte() {
    if (m_Size == 0) return 0;
    --m_Size;
    return *m_Data++;
  }
  /// Small numbers by a byte, and any by eight.
  double Number() {
    const std::uint8_t first = Byte();
    if (first < 250 || m_Size < sizeof(double)) return first;
    double value = 0;
    std::memcpy(&value, m_Data, sizeof(double));
    m_Data += sizeof(double);
    m_Size -= sizeof(double);
    return value;
  }
  cutting::Point Place() {
    const double x = Number();
    return {x, Number()};
  }

 private:
  const std::uint8_t* m_Data;
  std::size_t m_Size;
};

/// A head (bit 0: closed; bit 1: of curves; bits 4 to 7: the number of segments), then its places.
inline cutting::Contour ContourFrom(std::uint8_t head, Source& source) {
  cutting::Contour contour{.start = source.Place(), .segments = {}, .closed = (head & 1) != 0};
  for (int i = head >> 4; i > 0; --i) {
    const cutting::Point end = source.Place();
    if ((head & 2) == 0) {
      contour.segments.push_back(cutting::LineTo(end));
    } else {
      const cutting::Point first = source.Place();
      contour.segments.push_back(cutting::CurveTo(first, source.Place(), end));
    }
  }
  return contour;
}

inline cutting::Contour ContourFrom(Source& source) {
  const std::uint8_t head = source.Byte();
  return ContourFrom(head, source);
}

}  // namespace rastrel::fuzz
