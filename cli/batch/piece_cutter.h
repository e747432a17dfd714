#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

#include "cli/batch/gathered_results.h"
#include "cli/batch/lost_file.h"

namespace rastrel::cli {

/// Neighbouring files of a batch that one program works on.
struct BatchPiece {
  std::size_t first = 0;
  std::size_t count = 0;
};

/// Cuts the files of a batch without a result into pieces of about so many seconds. The first
/// pieces are of one file, until the time of one is known; towards the end they become smaller, so
/// that all workers end together. Files of a piece that died are given out again, one by one, up to
/// the attempt limit. Any thread.
class PieceCutter {
 public:
  /// `results` is not owned, and outlives this.
  PieceCutter(const GatheredResults& results, std::size_t files, double seconds, unsigned workers)
      : m_Results(results),
        m_Files(files),
        m_Seconds(seconds),
        m_Workers(workers),
        m_Attempts(files, 0) {}

  /// The next piece. Nothing if all files were given out.
  [[nodiscard]] std::optional<BatchPiece> Next();
  /// A piece of so many files took so long.
  void Measured(std::size_t files, double seconds);
  /// A file's piece died. False if it had all its attempts: then it is not given out again.
  [[nodiscard]] bool Again(std::size_t file);

 private:
  [[nodiscard]] std::size_t WantedCount(std::size_t left) const;

  const GatheredResults& m_Results;
  const std::size_t m_Files;
  const double m_Seconds;
  const unsigned m_Workers;

  std::mutex m_Mutex;
  std::vector<int> m_Attempts;
  std::deque<std::size_t> m_Again;
  std::size_t m_Next = 0;
  std::size_t m_MeasuredFiles = 0;
  double m_MeasuredSeconds = 0;
};

}  // namespace rastrel::cli
