#pragma once

#include <string>

#include "cli/console/exit_status.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/output_file.h"

/// Messages about a file that a command can't make for its user.
namespace rastrel::cli {

struct Invocation;

/// The fate of entries that have the name of a result, where the user gave no such name: they are
/// replaced with --force only.
[[nodiscard]] os::Existing UnnamedExisting(const Invocation& invocation);

/// Whether the machine fails, a full disk say, and not the name of a file.
[[nodiscard]] bool IsMachineTrouble(int error);

/// Why a file can't be made, from a failure of OutputFile or CheckPlace, without the file's name.
[[nodiscard]] std::string WhyUnwritten(const Failure& failure);

/// Ends the command: "can't write 'out/sign.cut': No space left on device". The status is WrongUse
/// if the file is refused because the name is taken, else JobFailed.
[[noreturn]] void ThrowUnwritten(const Failure& failure);
/// The same with another beginning in place of "can't write".
[[noreturn]] void ThrowUnwritten(const std::string& beginning, const Failure& failure);

}  // namespace rastrel::cli
