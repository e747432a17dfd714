#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "cutting/job/cut_job.h"

/// The parts that the readers of vector drawings share (cutting/svg, cutting/dxf).
namespace rastrel::cutting {

/// A part of a drawing that is not read, or is read otherwise than it is drawn elsewhere.
struct Finding {
  int line = 0;           ///< of the file, from 1, where it comes first
  std::string text;       ///< a sentence without its full stop; may hold text of the file
  std::size_t times = 1;  ///< how often it comes
};

/// The findings of one drawing, each text once.
class Findings {
 public:
  /// Different texts that are kept; of others only the number is.
  static constexpr std::size_t Limit = 100;

  void Add(int line, std::string_view text);
  /// In the order in which they came first.
  [[nodiscard]] std::vector<Finding> Take();

 private:
  std::vector<Finding> m_All;
  std::size_t m_Others = 0;
  int m_FirstOther = 0;
};

/// A drawing as a cut job: a path for each paint, for Operation::Cut, with its layer.
struct Drawing {
  CutJob job;
  std::vector<Finding> findings{};
};

/// Bounds of a file and of its drawing, whose parts may be used many times.
inline constexpr std::size_t MaximumDrawingBytes = std::size_t{64} << 20;
/// Segments besides one for each byte of the file.
inline constexpr std::size_t MaximumRepeatedSegments = 1'000'000;

/// Counts the parts that a drawing repeats, so that a small file makes no large job.
class DrawingLimits {
 public:
  explicit DrawingLimits(std::size_t fileBytes)
      : m_Segments(MaximumRepeatedSegments + fileBytes),
        m_Work(64 * MaximumRepeatedSegments + 4 * fileBytes) {}

  /// Whether that many segments are still allowed. Each contour counts as one.
  [[nodiscard]] bool TakeSegments(std::size_t count) { return Take(m_Segments, count); }
  /// Whether that many bytes may be looked at once more.
  [[nodiscard]] bool TakeWork(std::size_t bytes) { return Take(m_Work, bytes); }

 private:
  static bool Take(std::size_t& left, std::size_t count) {
    if (count > left) return false;
    left -= count;
    return true;
  }

  std::size_t m_Segments;
  std::size_t m_Work;
};

/// The begin of a text in UTF-8, of so many bytes at most and without a part of a character.
[[nodiscard]] std::string NameWithin(std::string_view name, std::size_t bytes);

/// Moves the job so that its page is the box around all its paths.
void FitPageToPaths(CutJob& job);

/// Whether every point of the job and its page are within the lengths of a cut job.
[[nodiscard]] bool IsWithinLengths(const CutJob& job);

}  // namespace rastrel::cutting
