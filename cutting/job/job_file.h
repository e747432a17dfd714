#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

/// A cut job as a file (docs/formats/cut-job.md): JSON, in millimetres, with curves as curves.
namespace rastrel::cutting {

/// Bounds of a file. What is beyond them is refused, so that a hostile file costs memory in
/// proportion to its size.
inline constexpr std::size_t MaximumJobBytes = std::size_t{1} << 30;
inline constexpr std::size_t MaximumPaths = 1'000'000;
inline constexpr std::size_t MaximumContours = 2'000'000;   ///< of all paths together
inline constexpr std::size_t MaximumSegments = 20'000'000;  ///< of all contours together
inline constexpr std::size_t MaximumMarks = 10'000;
inline constexpr std::size_t MaximumTextBytes = 1000;  ///< of a name in it
inline constexpr double MaximumLength = 1'000'000;     ///< of a coordinate or length, millimetres

/// The job's text, one path a line, with the digits that read back as the same numbers. Texts of
/// the job that are not UTF-8 get U+FFFD for each fault, and control characters become blanks.
[[nodiscard]] std::string JobFileText(const CutJob& job);

/// Reads such a text. It is strict: an unknown key, a key twice, a missing one, a value of another
/// type or out of its range fails with `name`, line, column and reason, as BadInput.
[[nodiscard]] Expected<CutJob> ReadJobFile(std::string_view text, const std::string& name);

}  // namespace rastrel::cutting
