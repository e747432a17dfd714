#pragma once

#include <string>
#include <utility>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The inks of a page by their names, in printing order: each the mean of its strength over the
/// page's pixels, from 0 (none) to 1 (the whole page at full strength).
using PageInk = std::vector<std::pair<std::string, double>>;

/// Reads a page's pixels, in `directory` as the RIP or the spool has it, by its native path. A page
/// in RGB has the complements of its channels as Cyan, Magenta and Yellow, and a gray one Black:
/// its device may mix them in its own way. The pixels are read once, in pieces; it takes
/// the memory of one. Fails for a page that is damaged, or not of 8 bits.
[[nodiscard]] Expected<PageInk> MeasureInk(const std::string& directory);

}  // namespace rastrel::cli
