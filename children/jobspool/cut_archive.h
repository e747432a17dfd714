#pragma once

#include <string>
#include <vector>

#include "children/jobspool/job_header_reader.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::jobspool {

/// The text by which a host finds the paths of that color again; it compares the digits and blanks
/// too. UTF-8.
[[nodiscard]] std::string ColorText(const CutLine& line);

/// Which of the lines a color of a cut paths' file is ("rgb 1.0 0.0 0.0", "separation NAME"); the
/// number of lines if it is none of them.
[[nodiscard]] std::size_t LineOfColor(const std::string& color, const std::vector<CutLine>& lines);

/// Turns the file "cut-paths" of a page into a ".cut" archive (docs/formats/cut-archive.md): a cut
/// object for each of the lines that has paths, in the lines' order. Curves become straight lines
/// that lie at most `tolerance` points beside them. Paths are native; the archive must not exist.
/// Fails with EFBIG if the archive would take more than ArchiveLimit bytes, with EINVAL if the file
/// is none of the RIP's making.
[[nodiscard]] Expected<void> WriteCutArchive(const std::string& cutPaths,
                                             const std::string& archive,
                                             const std::vector<CutLine>& lines, double tolerance);

inline constexpr std::uint64_t ArchiveLimit = std::uint64_t{2} << 30;

}  // namespace rastrel::jobspool
