#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "host/document/shapes.h"
#include "rastrel/platform/os/expected.h"

/// The painted paths of a vector file, on their way from the drawing program to a document.
namespace rastrel::graphics {

/// Limits of a vector file.
inline constexpr std::size_t MaximumVectorPaths = 1'000'000;
inline constexpr std::size_t MaximumVectorPoints = 5'000'000;  ///< of all its paths

/// A path as the file paints it.
struct VectorPath {
  using Rgb = std::array<double, 3>;  ///< red, green and blue, 0 to 255 each

  /// World units, from the lower left corner of the file's page or from the origin of a drawing
  /// without one.
  document::PathShape shape;
  std::optional<Rgb> fill;  ///< of the inside; nothing: it is not filled
  std::optional<Rgb> line;  ///< of the outline; nothing: it has none
  double lineWidth = 0;     ///< world units; 0 for the thinnest line
  bool operator==(const VectorPath&) const = default;
};

/// The points of a path, as MaximumVectorPoints counts them.
[[nodiscard]] std::size_t PointCount(const document::PathShape& shape);

/// A path as the body of a record (drawing_records.h). All numbers are doubles in the machine's own
/// order, since both ends are one machine:
///
///     +-------+-----------+-----------+-------+--------------------------------------------+
///     | flags | fill      | line      | width | steps: 'm' x y | 'l' x y | 'h' |           |
///     | 1     | 3 numbers | 3 numbers | 1     | 'c' x1 y1 x2 y2 x y, one after another     |
///     | byte  | if bit 0  | if bit 1  |       | (1 byte, and the numbers)                  |
///     +-------+-----------+-----------+-------+--------------------------------------------+
///
/// Bit 2 of the flags is the non-zero rule, bit 3 says that open runs are filled.
[[nodiscard]] std::string PathRecord(const VectorPath& path);

/// Reads it. The writer may be in a foreign file's hands: a body that is no whole path, or has a
/// number that is not finite or is out of range, is a failure.
[[nodiscard]] Expected<VectorPath> ReadPathRecord(std::string_view body);

}  // namespace rastrel::graphics
