#pragma once

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

struct CutRun;

/// The stage of --bleed: whether the print reaches so far over each closed path that is cut
/// through, by the pixels of the page without its tools' paths. With --check the places where it
/// does not are a part of the report, else warnings. Throws CommandError(WrongUse) for a file that
/// has no print, and without --rules, since then nothing of the page is printed.
[[nodiscard]] Expected<void> CheckPrintBleed(CutRun& run);

}  // namespace rastrel::cli
