#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rastrel::jobspool {

/// A color whose paths are to be cut, as the job header names it.
struct CutLine {
  enum class Kind { Rgb, Cmyk, Separation };
  Kind kind = Kind::Rgb;
  std::array<double, 4> values{};  ///< three or four of them, from 0 to 1
  std::string name;                ///< of a separation; Windows-1252

  bool operator==(const CutLine&) const = default;
};

/// A size that is wanted of the picture, in points.
struct PictureSize {
  double width = 0;
  double height = 0;
};

/// The comment block in front of a file that goes to the queue program, or alone in the file beside
/// a PDF (docs/formats/job-header.md).
struct JobHeader {
  /// Bytes of the text that belong to the block; 0 if the text begins with none. The file proper
  /// follows them.
  std::uint64_t length = 0;
  std::optional<PictureSize> size;
  std::optional<int> resolution;        ///< dots per inch, from 1 to ResolutionLimit
  std::vector<CutLine> cutLines;        ///< CutLineLimit at most
  double flatness = 10;                 ///< hundredths of a millimetre; above 0
  std::vector<std::string> complaints;  ///< sentences about lines that can't be used

  static constexpr int ResolutionLimit = 100000;
  static constexpr std::size_t CutLineLimit = 2;
};

/// Bytes of a file's beginning that a header can take. A longer one ends there.
inline constexpr std::size_t JobHeaderLimit = 65536;

/// Reads the block at the text's beginning. Lines end in CR LF, CR or LF; a last line without an
/// end is passed over. The block ends after "%#End Job", or in front of the first line that
/// doesn't begin with "%#". Lines with unknown keys are passed over; of equal keys the last counts.
[[nodiscard]] JobHeader ReadJobHeader(std::string_view text);

}  // namespace rastrel::jobspool
