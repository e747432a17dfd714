#pragma once

#include <string>

#include "rastrel/export.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::job {

/// Whether the path of the RIP directory can be passed to the children, the programs and settings
/// of a print can be trusted (CheckTrustedParts), and the files that every print and conversion
/// writes can be written: the application log, and whatever is made in the RIP directory and in the
/// spool. For a host to call before it prints: an application log that can't be opened keeps its
/// lock, so that the second thread that logs waits for ever, and with it EndPrint. Does not log,
/// and leaves no file but the log.
///
/// The failure is one line for a person (Describe): which file or directory, and why. The host's
/// Directories must be in force (SetHost). Any thread; costs two files.
[[nodiscard]] RASTREL_API Expected<void> CheckPrintFiles();

/// Whether nobody but this user and the superuser may change the RIP, the output engine, the queue
/// program, or the data root's settings.ini and devices.txt, or replace them (os::CheckTrusted).
/// Those that are missing are passed over. No program that fails this is started. The failure is
/// one line for a person.
[[nodiscard]] Expected<void> CheckTrustedParts();

/// Why a file can't be made in a directory, a native path, as a message; empty if one can. Leaves
/// nothing there.
[[nodiscard]] std::string WhyNotWritable(const std::string& directory);

}  // namespace rastrel::job
