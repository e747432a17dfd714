#pragma once

#include <string>
#include <variant>

#include "interpreter/exit_status.h"
#include "interpreter/job_kind.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::interpreter {

/// An open job.
struct JobFile {
  os::FileDescriptor file;
  JobLayout layout;
};

/// An open prefix.
struct PrefixFile {
  os::FileDescriptor file;
  std::string title;    ///< of its "%%Title:" line; may be empty
  bool cutter = false;  ///< it has a line that sets a cut color
};

/// Opens a job and finds out what it holds from `start` on; offsets count from the file's
/// beginning all the same. Failures, all ExitStatus::BadInput: it can't be read, is no regular
/// file, or holds neither PostScript nor PDF.
[[nodiscard]] std::variant<JobFile, RunFailure> OpenJob(const std::string& path,
                                                        std::uint64_t start = 0);

/// Opens a prefix. It fails in the same way, if it can't be read or is no regular file.
[[nodiscard]] std::variant<PrefixFile, RunFailure> OpenPrefix(const std::string& path);

}  // namespace rastrel::interpreter
