#pragma once

#include <string>

namespace rastrel::prefix {

/// The prefix file of a job file: the path up to its last dot, in any component, and ".psp".
/// std::length_error if there is no dot.
[[nodiscard]] std::wstring PrefixPathOf(const std::wstring& jobPath);

/// The job's title: the path up to its last dot, and of that the part after its last backslash.
/// std::length_error if there is no dot.
[[nodiscard]] std::wstring TitleOf(const std::wstring& jobPath);

/// The title as a section of the prefix: a comment line between two empty ones.
[[nodiscard]] std::wstring TitleSection(const std::wstring& jobPath);

}  // namespace rastrel::prefix
