#include "cli/batch/array_cutter.h"

#include <algorithm>

#include "cli/batch/lost_file.h"

namespace rastrel::cli {
namespace {

constexpr double MaximumFiles = 10'000;
constexpr double ShortestRun = 1e-6;  // seconds

}  // namespace

std::vector<BatchPiece> ArrayCutter::Next() const {
  const bool isSample = m_MeasuredFiles == 0;
  std::size_t wanted = 1;
  if (!isSample) {
    const double each =
        std::max(m_MeasuredSeconds / static_cast<double>(m_MeasuredFiles), ShortestRun);
    wanted = static_cast<std::size_t>(std::clamp(m_Seconds / each, 1.0, MaximumFiles));
  }
  const std::size_t limit = isSample ? SamplePieces : MaximumPieces;
  const std::size_t files = m_Attempts.size();
  std::vector<BatchPiece> pieces;
  for (std::size_t at = m_Results.NextWithout(0); at < files && pieces.size() < limit;
       at = m_Results.NextWithout(at)) {
    BatchPiece piece{at, 0};
    const std::size_t most = m_Attempts[at] > 0 ? 1 : wanted;
    while (at < files && piece.count < most && !m_Results.Has(at) &&
           (piece.count == 0 || m_Attempts[at] == 0)) {
      ++piece.count;
      ++at;
    }
    pieces.push_back(piece);
  }
  return pieces;
}

void ArrayCutter::Measured(std::size_t files, double seconds) {
  m_MeasuredFiles += files;
  m_MeasuredSeconds += seconds;
}

bool ArrayCutter::Again(std::size_t file) { return ++m_Attempts[file] < PieceAttempts; }

}  // namespace rastrel::cli
