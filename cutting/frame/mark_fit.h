#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cutting/frame/frame_map.h"
#include "rastrel/platform/os/expected.h"

/// The map from the printed marks of a job to the places where a cutter's eye has found them.
namespace rastrel::cutting {

/// Which maps are tried. Each has the ones before it.
enum class MapKind {
  Similar,    ///< move, turn, and one scale: 2 marks
  Affine,     ///< two scales and shear as well: 3 marks
  Projective  ///< perspective as well: 4 marks and more
};

/// "move, turn and scale", "move, turn, scales and shear", "projective map".
[[nodiscard]] std::string_view NameOf(MapKind kind);

/// Of all marks, unless the rules or the caller say otherwise: how far a mark may lie from the
/// place where the map has it, millimetres.
inline constexpr double UsualResidual = 0.3;

/// At most so many marks are measured.
inline constexpr std::size_t MaximumFittedMarks = 256;

struct MarkFit {
  FrameMap map;  ///< from the page to the measured frame; Weight is above 0 at all marks
  MapKind kind = MapKind::Similar;
  std::vector<double> residuals;  ///< distance of each mark from its image, in order, millimetres
  double turn = 0;                ///< at the middle of the marks, degrees counterclockwise
  double scaleX = 1;              ///< of a length that was horizontal on the page, there
  double scaleY = 1;              ///< across it, there
  double shear = 0;               ///< by how much the right angle there is less, degrees
  /// Whether there are more marks than the map needs, so that the residuals say anything.
  bool isChecked = false;

  [[nodiscard]] double LargestResidual() const;
};

/// The map for which the sum of the squares of the residuals is smallest. Two marks fix a Similar
/// map, three an Affine one, four and more a Projective one. Two, three and four marks fix it
/// exactly: their residuals are 0.
///
/// Fails, with the marks' numbers from 1, if:
/// - there are fewer than 2 marks, or than `kind` takes, or more than MaximumFittedMarks, or not as
/// many measured as printed
///   ones, or a number is not finite;
/// - two marks are measured less than half or more than twice as far apart as they are printed;
/// - all marks lie on one line (three and more; within a hundredth of their spread), or so many of
///   them do that they fix no projective map;
/// - the measured marks run the other way round, as in a mirror;
/// - a residual is above `limit`. The failure names the mark without which all others fit, if there
///   is one and no other serves nearly as well, and else the mark that is furthest off.
///
/// `kind` chooses another map than the number of marks does: an Affine one of four marks leaves
/// residuals that say something, where a Projective one takes any fault for perspective.
[[nodiscard]] Expected<MarkFit> FitMarks(const std::vector<Point>& printed,
                                         const std::vector<Point>& measured,
                                         double limit = UsualResidual,
                                         std::optional<MapKind> kind = {});

/// A report for a person: the kind of map, turn, scales, and the residual of each mark. Lines
/// without their end.
[[nodiscard]] std::vector<std::string> Describe(const MarkFit& fit);

/// Reads a decimal number with a point and perhaps a sign, at most a million. Nothing else: no
/// unit, no exponent, no whitespace.
[[nodiscard]] std::optional<double> ParseMillimetres(std::string_view text);

/// Reads "X,Y": two decimal numbers, millimetres, with a point and perhaps a sign. Blanks around
/// them count for nothing. Fails for anything else: units, a comma as decimal point, exponents,
/// more than a million millimetres.
[[nodiscard]] Expected<Point> ParseMeasured(std::string_view text);

/// Reads a text with one such place in each line, in the order of the marks. Empty lines, and those
/// that begin with '#', count for nothing; lines end in LF or CR LF. The failure has `name`, and
/// the line.
[[nodiscard]] Expected<std::vector<Point>> ParseMeasurements(std::string_view text,
                                                             const std::string& name);

}  // namespace rastrel::cutting
