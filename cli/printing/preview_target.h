#pragma once

#include <string>

#include "cli/console/options.h"
#include "cli/installation/printers.h"
#include "rastrel/platform/os/output_file.h"

namespace rastrel::cli {

/// The name of a preview's first file.
struct PreviewTarget {
  std::string path;       ///< native
  os::Existing existing;  ///< the fate of an entry that has the name
};

/// The name that --output asks for, for the preview of a file: the name itself, or with {name} in
/// it the file's own name there, or in a directory ("previews/", or one that is there) that name
/// with
/// ".png". A name that is not the option's own replaces nothing without --force. `name` is the
/// file's name without its extension, as a job has it.
[[nodiscard]] PreviewTarget TargetOfPreview(const Invocation& invocation, const std::string& name);

/// The format of that file. Throws CommandError(WrongUse) if the name has no extension of one.
[[nodiscard]] devices::FileFormat FormatOfPreview(const std::string& target);

/// Checks that the file can be made, and makes the directory that the option names. Throws
/// CommandError.
void CheckPreviewTarget(const Invocation& invocation, const PreviewTarget& target);

/// Checks the names of the previews of all operands: that each file has its own. Throws
/// CommandError(WrongUse).
void CheckPreviewNames(const Invocation& invocation);

/// Ends the command for a preview that can't be written.
[[noreturn]] void ThrowUnwrittenPreview(const Failure& failure);

}  // namespace rastrel::cli
