#include "cli/batch/piece_cutter.h"

#include <algorithm>

namespace rastrel::cli {
namespace {

// The rest is given out in at least so many pieces for each worker.
constexpr std::size_t PiecesOfRest = 2;
constexpr std::size_t MaximumPiece = 10'000;

}  // namespace

std::size_t PieceCutter::WantedCount(std::size_t left) const {
  if (m_MeasuredFiles == 0) return 1;
  const double each = std::max(m_MeasuredSeconds / static_cast<double>(m_MeasuredFiles), 1e-6);
  const double wanted = std::clamp(m_Seconds / each, 1.0, static_cast<double>(MaximumPiece));
  const std::size_t share = std::max<std::size_t>(1, left / (m_Workers * PiecesOfRest));
  return std::min({static_cast<std::size_t>(wanted), share, left});
}

std::optional<BatchPiece> PieceCutter::Next() {
  const std::scoped_lock lock(m_Mutex);
  if (!m_Again.empty()) {
    const std::size_t file = m_Again.front();
    m_Again.pop_front();
    return BatchPiece{file, 1};
  }
  m_Next = m_Results.NextWithout(m_Next);
  if (m_Next >= m_Files) return std::nullopt;
  const std::size_t wanted = WantedCount(m_Files - m_Next);
  BatchPiece piece{m_Next, 0};
  while (piece.count < wanted && m_Next < m_Files && !m_Results.Has(m_Next)) {
    ++piece.count;
    ++m_Next;
  }
  return piece;
}

void PieceCutter::Measured(std::size_t files, double seconds) {
  const std::scoped_lock lock(m_Mutex);
  m_MeasuredFiles += files;
  m_MeasuredSeconds += seconds;
}

bool PieceCutter::Again(std::size_t file) {
  const std::scoped_lock lock(m_Mutex);
  if (++m_Attempts[file] >= PieceAttempts) return false;
  m_Again.push_back(file);
  return true;
}

}  // namespace rastrel::cli
