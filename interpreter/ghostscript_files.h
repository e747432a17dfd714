#pragma once

#include <string>
#include <vector>

#include "interpreter/wall.h"

namespace rastrel::interpreter {

/// Whether the program is a script, which starts programs of the machine's.
[[nodiscard]] bool IsScript(const std::string& program);

/// The files that an interpreter needs whatever its job is: the program and its loader, libraries,
/// resources, color profiles, the machine's fonts and the user's, and a few devices. The user's own
/// files besides fonts and their settings are not among them.
///
/// `program` is its native path. If it is a script, the machine's programs are among them, and the
/// directory that it lies in.
[[nodiscard]] std::vector<WallPath> GhostscriptFiles(const std::string& program);

}  // namespace rastrel::interpreter
