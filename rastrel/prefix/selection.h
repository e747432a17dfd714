#pragma once

#include <string>

#include "rastrel/job/job_data.h"

/// The sections of the prefix that leave the server loop, select printer and print mode, and end
/// the prefix. Names are not changed: nothing is escaped for PostScript strings.
namespace rastrel::prefix {

/// Leaves the server loop, so that the prefix's definitions outlive its own job.
inline constexpr const char* ExitServer = "\nserverdict begin 0 exitserver\n\n";
/// The end-of-job byte.
inline constexpr const char* EndOfJob = "\x04";
/// Redefines the selection of a print mode to take its argument and do nothing. The alias keeps the
/// real operator for the RIP's own procedures.
inline constexpr const wchar_t* DisablePrintMode =
    L"% Disable Select Print mode\n"
    L"/SelectPrintMode load /$SelectPrintMode$ exch def\n"
    L"/SelectPrintMode {pop} def\n"
    L"% -- End of Print Mode Selection Override --\n";

/// Selects the printer, then disables the selection for the job that follows.
[[nodiscard]] std::wstring PrinterSelection(const CJobData& settings);
/// Selects the print mode, then disables the selection.
[[nodiscard]] std::wstring PrintModeSelection(const CJobData& settings);

}  // namespace rastrel::prefix
