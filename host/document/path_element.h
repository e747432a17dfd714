#pragma once

#include <optional>

#include "host/document/shapes.h"
#include "rastrel/platform/host/object_store.h"

namespace rastrel::document {

/// A path that is filled point by point, on its way to an object. Points are joined by straight
/// lines: of a point's values only its place counts. One thread at a time.
class PathElement : public POLYARC {
 public:
  PathElement() = default;
  ~PathElement() override = default;

  /// Appends a sub-path without points.
  void AddSubPath();
  /// Appends a point to a sub-path. A sub-path that is not the last, and a number that is not the
  /// next, change nothing.
  void AddPoint(int subPath, int number, const CWorldPoint& point);
  /// Joins a sub-path's last point to its first; nothing for a sub-path that is not there.
  void Close(int subPath);

  /// A copy of the path, without the sub-paths that have no points. Nothing if there is no point at
  /// all, or a coordinate is no finite number: such a path could be neither drawn nor saved.
  [[nodiscard]] std::optional<PathShape> Shape() const;

 private:
  std::vector<SubPath> m_SubPaths;
  std::vector<std::size_t> m_PointCounts;  // of each sub-path
  bool m_IsFinite = true;
};

}  // namespace rastrel::document
