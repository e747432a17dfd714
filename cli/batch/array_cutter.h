#pragma once

#include <cstddef>
#include <vector>

#include "cli/batch/gathered_results.h"
#include "cli/batch/piece_cutter.h"

namespace rastrel::cli {

/// Cuts the files of a batch without a result into the pieces of one array after the other. The
/// first array is a few single files, until the time of one is known; then all are given out at
/// once, in pieces of about so many seconds. Files of a piece that died come again one by one, up
/// to PieceAttempts.
class ArrayCutter {
 public:
  static constexpr std::size_t SamplePieces = 4;
  /// A cluster takes arrays of 1001 as it comes.
  static constexpr std::size_t MaximumPieces = 1000;

  /// `results` is not owned, and outlives this.
  ArrayCutter(const GatheredResults& results, std::size_t files, double seconds)
      : m_Results(results), m_Seconds(seconds), m_Attempts(files, 0) {}

  /// The pieces of the next array, in order of the files. Empty if each file has a result.
  [[nodiscard]] std::vector<BatchPiece> Next() const;
  /// A piece of so many files took so long.
  void Measured(std::size_t files, double seconds);
  /// A file's piece died. False if it had all its attempts.
  [[nodiscard]] bool Again(std::size_t file);

 private:
  const GatheredResults& m_Results;
  double m_Seconds;
  std::vector<int> m_Attempts;
  std::size_t m_MeasuredFiles = 0;
  double m_MeasuredSeconds = 0;
};

}  // namespace rastrel::cli
