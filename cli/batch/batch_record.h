#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "cli/console/standard_streams.h"
#include "rastrel/platform/os/expected.h"

/// The record of a batch, in the hidden directory ".rastrel-batch" of its results until all are
/// there: whoever goes on after a kill finds the ended files in it. docs/batches.md has its
/// format.
namespace rastrel::cli {

/// Name of the record in the directory of a batch's results.
inline constexpr const char* BatchRecordName = ".rastrel-batch";

/// The work of a batch: each file is a run of `rastrel WORDS -- FILE`.
struct BatchPlan {
  std::vector<std::string> words;  ///< the command, and its options for each file
  std::vector<std::string> files;  ///< native paths, as given; or other names of parts of the work
  /// Each run has its results in a directory of its own first (staged_results.h), which is its last
  /// option, `--output=DIR`.
  bool staged = false;
  bool replaces = false;  ///< staged results replace others of their names
  bool operator==(const BatchPlan&) const = default;
};

/// The end of one file's run.
struct FileResult {
  int status = 0;  ///< as exit_status.h has it
  HeldText text;   ///< all that it wrote
};

/// A batch's record. Any number of processes may store at the same time, each pieces of its own.
class BatchRecord {
 public:
  /// Begins one for a directory of results, which is there; it belongs to this process. Fails if
  /// there is one already, unless `resume`: then that one is taken up, if it is of the same plan
  /// and no living process has it.
  [[nodiscard]] static Expected<BatchRecord> Begin(const std::string& results, BatchPlan plan,
                                                   bool resume);
  /// That of a batch which another process has begun.
  [[nodiscard]] static Expected<BatchRecord> Open(const std::string& results);

  [[nodiscard]] const BatchPlan& Plan() const { return m_Plan; }
  [[nodiscard]] const std::string& Directory() const { return m_Directory; }
  [[nodiscard]] const std::string& Results() const { return m_Results; }

  /// Notes that the files from `first` on have ended so, after so many seconds of work. On the disk
  /// after success.
  [[nodiscard]] Expected<void> Store(std::size_t first, const std::vector<FileResult>& results,
                                     double seconds = 0) const;
  /// The results of the piece that begins with `first`; none if it was not stored, or not whole.
  [[nodiscard]] std::vector<FileResult> Load(std::size_t first) const;
  /// The seconds that were stored with that piece; 0 without one.
  [[nodiscard]] double SecondsOf(std::size_t first) const;
  /// All that was stored, by the files' indices.
  [[nodiscard]] Expected<std::map<std::size_t, FileResult>> LoadAll() const;

  /// Removes it, when all results were written.
  [[nodiscard]] Expected<void> Remove() const;

 private:
  BatchRecord(const std::string& results, BatchPlan plan);
  [[nodiscard]] std::string PieceFile(std::size_t first) const;

  std::string m_Results;
  std::string m_Directory;
  BatchPlan m_Plan;
};

}  // namespace rastrel::cli
