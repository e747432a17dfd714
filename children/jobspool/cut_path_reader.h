#pragma once

#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "children/jobspool/flatten.h"

namespace rastrel::jobspool {

/// A part of a cut path, its curves flattened. Points, from the page's top left corner, y upward,
/// so that y is below 0 on the page.
struct PathPart {
  std::vector<Point> points;
  bool closed = false;
};

/// Reads a RIP's file "cut-paths" (docs/formats/cut-paths.md) path by path. Memory is that of one
/// part.
class CutPathReader {
 public:
  /// `path` is native. Curves are flattened to `tolerance` points.
  CutPathReader(const std::string& path, double tolerance);

  /// Goes to the next path. False at the end, and when the file can't be read or breaks its form.
  [[nodiscard]] bool NextPath();
  /// The path's color with its escapes resolved: "rgb 1.0 0.0 0.0", "separation CutContour".
  [[nodiscard]] const std::string& Color() const { return m_Color; }
  /// Whether the job's clip hides all of the path.
  [[nodiscard]] bool Hidden() const { return m_Hidden; }
  /// How many parts the path says that it has.
  [[nodiscard]] std::size_t Parts() const { return m_Parts; }
  /// The next part of the path; nothing after the last, or if the file breaks its form.
  [[nodiscard]] std::optional<PathPart> NextPart();
  /// Skips the rest of the path.
  void SkipPath();
  /// Whether the file was read to its last line and kept its form all the way.
  [[nodiscard]] bool Whole() const { return m_Whole; }

 private:
  bool NextLine();
  bool ReadHead();
  [[nodiscard]] std::optional<std::string> Value(const char* key) const;
  bool ReadSegment(PathPart& part);

  std::ifstream m_File;
  double m_Tolerance;
  double m_Height = 0;  // of the page, points
  std::string m_Line;
  std::string m_Color;
  std::size_t m_Parts = 0;
  bool m_Hidden = false;
  bool m_InPath = false;
  bool m_HasLine = false;  // m_Line is to be taken again
  bool m_HeadRead = false;
  bool m_Good = true;
  bool m_Whole = false;
};

}  // namespace rastrel::jobspool
