#include "cutting/drawing/drawing.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "cutting/job/job_file.h"

namespace rastrel::cutting {
namespace {

bool IsWithin(Point point) {
  return std::isfinite(point.x) && std::isfinite(point.y) && std::abs(point.x) <= MaximumLength &&
         std::abs(point.y) <= MaximumLength;
}

bool IsWithin(const Contour& contour) {
  return IsWithin(contour.start) &&
         std::ranges::all_of(contour.segments, [](const Segment& segment) {
           return IsWithin(segment.end) && IsWithin(segment.first) && IsWithin(segment.second);
         });
}

}  // namespace

void Findings::Add(int line, std::string_view text) {
  const auto known = std::ranges::find(m_All, text, &Finding::text);
  if (known != m_All.end()) {
    ++known->times;
  } else if (m_All.size() < Limit) {
    m_All.push_back({line, std::string(text)});
  } else if (m_Others++ == 0) {
    m_FirstOther = line;
  }
}

std::vector<Finding> Findings::Take() {
  if (m_Others > 0) m_All.push_back({m_FirstOther, "more of the drawing is not read", m_Others});
  m_Others = 0;
  return std::exchange(m_All, {});
}

std::string NameWithin(std::string_view name, std::size_t bytes) {
  if (name.size() <= bytes) return std::string(name);
  while (bytes > 0 && (static_cast<unsigned char>(name[bytes]) & 0xC0) == 0x80) --bytes;
  return std::string(name.substr(0, bytes));
}

void FitPageToPaths(CutJob& job) {
  Box box;
  for (const CutPath& path : job.paths) box.Add(BoxOf(path));
  job.width = box.Width();
  job.height = box.Height();
  if (box.IsEmpty()) return;
  const Transform move{1, 0, 0, 1, -box.left, -box.bottom};
  for (CutPath& path : job.paths)
    for (Contour& contour : path.contours) contour = Transformed(contour, move);
}

bool IsWithinLengths(const CutJob& job) {
  return std::isfinite(job.width) && std::isfinite(job.height) && job.width <= MaximumLength &&
         job.height <= MaximumLength && std::ranges::all_of(job.paths, [](const CutPath& path) {
           return std::ranges::all_of(path.contours,
                                      [](const Contour& contour) { return IsWithin(contour); });
         });
}

}  // namespace rastrel::cutting
