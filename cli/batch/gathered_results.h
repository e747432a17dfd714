#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <optional>

#include "cli/batch/batch_record.h"
#include "cli/console/exit_status.h"

namespace rastrel::cli {

/// The results of a batch's files on their way to the user: they come in any order, and are written
/// in that of the files, each as soon as those before it are. Any thread.
class GatheredResults {
 public:
  /// `shows` is whether progress is shown on the terminal.
  GatheredResults(std::size_t files, bool shows) : m_Files(files), m_Shows(shows) {}

  /// Takes a file's result. One that is there already stays.
  void Add(std::size_t index, FileResult result);
  [[nodiscard]] bool Has(std::size_t index) const;
  /// The first index from `from` on without a result; the number of files if there is none.
  [[nodiscard]] std::size_t NextWithout(std::size_t from) const;

  [[nodiscard]] std::size_t Ended() const;
  [[nodiscard]] std::size_t Failed() const;
  /// The status of the first file that has another one than Done.
  [[nodiscard]] ExitStatus Status() const;

 private:
  mutable std::mutex m_Mutex;
  std::size_t m_Files;
  bool m_Shows;
  std::map<std::size_t, std::optional<FileResult>> m_Results;  // written ones are empty
  std::size_t m_Written = 0;
  std::size_t m_Failed = 0;
  std::map<std::size_t, int> m_Bad;
};

}  // namespace rastrel::cli
