#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// Finished files of a job on their way to a directory, so that each comes there once, whatever is
/// killed in between. They are made in a hidden directory of the job; that gets the name "outbox"
/// when all are whole and on the disk; then each is moved to its place, in one step.
///
///     jobs/7/making-0f3a.../sign-1.tif   the engine writes; begun again after a kill
///     jobs/7/outbox/sign-1.tif           all are whole: from here on they are only moved
///     OUTPUT/sign-1.tif                  delivered; it is in the outbox no more
///
/// Each attempt makes files in a directory of its own, since the engine of a killed worker may
/// write a moment longer.
class Outbox {
 public:
  /// `directory` is the job's own, by native path, which is made if it is missing.
  explicit Outbox(std::string directory);

  /// Whether an earlier run made all files whole.
  [[nodiscard]] bool IsWhole() const;
  /// Makes an empty directory for the files, and returns its path. Removes those of
  /// earlier attempts.
  [[nodiscard]] Expected<std::string> Begin();
  /// All files are whole: has them and their names written to the disk.
  [[nodiscard]] Expected<void> Finish();
  /// Moves each file to its place below `target`, under its name or, unless `overwrite`, the next
  /// free one with a number. Returns their paths, which are on the disk. To another file system
  /// they are copied; a file that was copied before a kill is known by its content. REQUIRES:
  /// IsWhole.
  [[nodiscard]] Expected<std::vector<std::string>> MoveTo(const std::string& target,
                                                          bool overwrite);

 private:
  std::string m_Directory;
  std::string m_Making;  // of this attempt
};

}  // namespace rastrel::cli
