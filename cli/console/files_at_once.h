#pragma once

#include <cstddef>
#include <functional>

#include "cli/console/exit_status.h"
#include "rastrel/platform/os/expected.h"

/// Commands of many files that work on several of them at a time.
namespace rastrel::cli {

struct Invocation;

/// The value of --jobs, 1 to 256; without the option, the number of processors that this process
/// may use. The failure is a message for the user.
[[nodiscard]] Expected<unsigned> FilesAtOnce(const Invocation& invocation);

/// The work of a command on its files.
struct FilesWork {
  /// Works on the file of this index, and writes its lines. Throws CommandError if it can't. On a
  /// thread of its own if there is more than one file; its lines are held back then.
  std::function<void(std::size_t)> work;
  /// Called on the caller's thread for a file that can't be worked on, after its lines were
  /// written. It may throw to end all work.
  std::function<void(std::size_t, const CommandError&)> failed;
};

/// Works on files 0 to `count` - 1, up to `atOnce` at a time. Their lines (standard_streams.h)
/// appear file by file, in the order of the indices, each as soon as those before it are done. So
/// the output is that of one file after the other. The work runs ahead of the output by a limited
/// number of files, and waits where it writes much before its turn. Other exceptions than
/// CommandError come out of the call. It returns, or throws, when no work is under way any more.
void WorkOnFiles(std::size_t count, unsigned atOnce, const FilesWork& work);

}  // namespace rastrel::cli
