#pragma once

#include <cstddef>
#include <string>

#include "cli/console/options.h"
#include "cutting/job/cut_job.h"

/// Commands that read or write several cut jobs.
namespace rastrel::cli {

/// The name of one of several results: "sign.plt" and 3 make "sign-3.plt".
[[nodiscard]] std::string NumberedName(const std::string& path, std::size_t number);

/// The job of one file, by the command's rules. Throws CommandError.
[[nodiscard]] cutting::CutJob JobOfFile(const Invocation& invocation, const std::string& file);

/// Gives the job the way of the tool and writes it to that name in the form of its ending. Throws
/// CommandError.
void WriteJobAs(const Invocation& invocation, cutting::CutJob job, const std::string& name);

}  // namespace rastrel::cli
