#pragma once

#include "cli/batch/piece_runner.h"

namespace rastrel::cli {

/// Does a batch on this machine, in so many programs at a time.
class LocalPieces : public PieceRunner {
 public:
  /// A piece takes about `seconds`.
  LocalPieces(unsigned atOnce, double seconds) : m_AtOnce(atOnce), m_Seconds(seconds) {}

  [[nodiscard]] ExitStatus Run(const BatchRecord& record, GatheredResults& results) override;

 private:
  unsigned m_AtOnce;
  double m_Seconds;
};

}  // namespace rastrel::cli
