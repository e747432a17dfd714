#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

/// A picture for the people who put a sign together of panels: the whole job in gray, and each
/// panel's edge with its number in the middle. Where panels overlap both edges are seen. The same
/// job gives the same bytes.
namespace rastrel::cutting {

struct AssemblyPart {
  std::size_t column = 0;  ///< from the left
  std::size_t row = 0;     ///< from the bottom
  Box area{};              ///< on the job's page, millimetres
  std::string number;      ///< printable ASCII, large
  std::string note;        ///< printable ASCII, small below it; may be empty
};

/// In millimetres. Fails for coordinates that are not finite or farther than a kilometre from the
/// page's corner.
[[nodiscard]] Expected<std::string> AssemblyPictureSvg(const CutJob& job,
                                                       const std::vector<AssemblyPart>& parts);

/// `pixels` along the longer edge, within the limits of cut_picture.h. Fails likewise.
[[nodiscard]] Expected<std::string> AssemblyPicturePng(const CutJob& job,
                                                       const std::vector<AssemblyPart>& parts,
                                                       int pixels);

}  // namespace rastrel::cutting
