#pragma once

#include <string>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

/// A picture for a person of how a job is cut: the page, its marks, each path in its operation's
/// color with its place in the order and an arrow along its direction, the ways between the paths
/// as thin dashes, and a legend with lengths. Letters, arrows and lines grow with the page, so that
/// a small plate and a sign of three metres are equally readable. Crowded numbers and arrows are
/// left out. The same job gives the same bytes.
///
/// Fails for coordinates that are not finite or farther than a kilometre from the page's corner.
namespace rastrel::cutting {

/// In millimetres; curves stay curves.
[[nodiscard]] Expected<std::string> CutPictureSvg(const CutJob& job);

inline constexpr int SmallestPicture = 16;
inline constexpr int LargestPicture = 8192;

/// `pixels` along the longer edge, within the limits above.
[[nodiscard]] Expected<std::string> CutPicturePng(const CutJob& job, int pixels);

}  // namespace rastrel::cutting
