#pragma once

#include <cstddef>
#include <string>

#include "cli/batch/batch_record.h"
#include "cli/console/standard_streams.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The results of a file whose names nobody knows before its run, as those of a printer: the run
/// puts them into an empty directory of the record, and they get their places when it has ended. So
/// a run that died and is done again leaves no page twice.
///
///     RESULTS/.rastrel-batch/staged-7-93a0/sign-1.tif    ->    RESULTS/sign-1.tif
///
/// Each run has a directory of its own: programs of one that was killed may still write. Those of
/// killed runs go with the record. One thread.
class StagedResults {
 public:
  StagedResults(const BatchRecord& record, std::size_t file);

  /// Makes a directory for the next run.
  [[nodiscard]] Expected<void> Prepare();
  /// Its native path, without a slash at its end. REQUIRES: Prepare.
  [[nodiscard]] const std::string& Directory() const { return m_Directory; }
  /// Moves all files of it to their places. Unless the plan replaces, none takes the place of a
  /// file that this file's earlier run did not put there: then it fails with EEXIST, and moves
  /// none.
  [[nodiscard]] Expected<void> Deliver() const;
  /// The text with the places of the results.
  [[nodiscard]] HeldText WithPlaces(HeldText text) const;

 private:
  const BatchRecord& m_Record;
  std::string m_Begin;  // of the directories' names
  std::string m_Name;
  std::string m_Directory;
};

}  // namespace rastrel::cli
