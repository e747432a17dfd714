#pragma once

#include <vector>

#include "cutting/job/contour.h"

namespace rastrel::cutting {

/// A contour with places on it named by their length from the start, millimetres. Lengths on curves
/// are those of 64 chords. Keeps a copy. Any thread.
class MeasuredContour {
 public:
  explicit MeasuredContour(const Contour& contour);

  [[nodiscard]] double Length() const { return m_ends.empty() ? 0 : m_ends.back(); }
  [[nodiscard]] Point At(double length) const;
  /// Lengths where the direction changes by more than `degrees`; the start of a closed contour is
  /// one at 0 if it is a corner.
  [[nodiscard]] std::vector<double> Corners(double degrees) const;
  /// The part between two lengths as an open contour; of a closed one on past the start if `to` is
  /// beyond the length, twice round at most. Whole segments are kept as they are.
  [[nodiscard]] Contour Part(double from, double to) const;
  /// The direction with which it leaves, or comes to, the place: of length 1, or 0 if it has none.
  [[nodiscard]] Point DirectionAfter(double length) const;
  [[nodiscard]] Point DirectionBefore(double length) const;

 private:
  [[nodiscard]] std::size_t SegmentAt(double length) const;
  [[nodiscard]] double ParameterAt(std::size_t segment, double length) const;
  [[nodiscard]] Point StartOf(std::size_t segment) const;
  void AddPart(Contour& part, std::size_t segment, double from, double to) const;

  Contour m_contour;                         // with the line back to its start as a segment
  std::vector<double> m_ends;                // length up to the end of each segment
  std::vector<std::vector<double>> m_steps;  // of each curve: length within it at each chord's end
};

}  // namespace rastrel::cutting
