#pragma once

#include <optional>
#include <string>

#include "interpreter/job_kind.h"
#include "interpreter/page_area.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::interpreter {

/// An open job.
struct JobFile {
  os::FileDescriptor file;
  JobLayout layout;
  /// Of PostScript: the box of its bounding box comment, if it holds anything.
  std::optional<PageArea> declared{};
};

/// An open prefix.
struct PrefixFile {
  os::FileDescriptor file;
  std::string title;          ///< of its "%%Title:" line; may be empty
  bool setsCutColor = false;  ///< it has a line that sets one
};

/// Reads up to `count` bytes of an open file from `offset` on, fewer at its end. The failure names
/// the call and the system's error; the caller knows which file it is.
[[nodiscard]] Expected<std::string> ReadPart(int file, std::uint64_t offset, std::size_t count);

/// Opens a job, given by its native path, and finds its kind and extent from byte `start` on;
/// offsets count from the file's beginning all the same. It fails if the file can't be read, is no
/// regular one, or holds neither PostScript nor PDF: a sentence without its full stop, with the
/// code BadInput.
[[nodiscard]] Expected<JobFile> OpenJob(const std::string& path, std::uint64_t start = 0);

/// Leaves out an end-of-job byte at the job's end, and whitespace after it: the interpreter could
/// not put a page out after it that the job left open. Of a PDF nothing. Fails like ReadPart.
[[nodiscard]] Expected<void> DropEndOfJob(JobFile& job);

/// Opens a prefix, given by its native path. It fails in the same way, if it can't be read or is no
/// regular file.
[[nodiscard]] Expected<PrefixFile> OpenPrefix(const std::string& path);

}  // namespace rastrel::interpreter
