#pragma once

#include <string>

/// Rules of finger sizes in the copyright engraving chart.
namespace rastrel::readers {

/// Finger sizes that differ by no more than this are the same.
inline constexpr double FingerSizeTolerance = 0.01;

/// Whether a finger size satisfies a rule: "L6" means less than 6, "G6" greater than 6, and all
/// else is two numbers with a comma between, either of which it may be, or lie between, whichever
/// of the two is the greater. All numbers are read as _wtof reads them, so that a text that is no
/// number, or is missing, is 0.
[[nodiscard]] bool SatisfiesFingerSizeRule(const std::wstring& fingerSize, std::wstring rule);

}  // namespace rastrel::readers
