#include "cli/batch/local_pieces.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cli/batch/batch_piece.h"
#include "cli/batch/lost_file.h"
#include "cli/batch/piece_cutter.h"
#include "cli/console/command_runs.h"
#include "cli/console/standard_streams.h"
#include "rastrel/platform/os/thread.h"

namespace rastrel::cli {
namespace {

class Workers {
 public:
  Workers(const BatchRecord& record, GatheredResults& results, CommandRuns& runs, unsigned atOnce,
          double seconds)
      : m_Record(record),
        m_Results(results),
        m_Runs(runs),
        m_Cutter(results, record.Plan().files.size(), seconds, atOnce) {}

  void Work() {
    while (!m_Runs.IsStopped()) {
      const auto piece = m_Cutter.Next();
      if (!piece) return;
      Do(*piece);
    }
  }

 private:
  void Do(const BatchPiece& piece) {
    const auto begin = std::chrono::steady_clock::now();
    std::string why;
    HeldText said;
    {
      HeldOutput held;
      const auto status = m_Runs.Run({BatchPieceWord, m_Record.Results(),
                                      std::to_string(piece.first), std::to_string(piece.count)},
                                     false);
      if (!status) why = Describe(status.Error());
      said = held.Take();
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    std::vector<FileResult> results = m_Record.Load(piece.first);
    const std::size_t ended = std::min(results.size(), piece.count);
    if (ended > 0) m_Cutter.Measured(ended, took.count());
    for (std::size_t i = 0; i < ended; ++i) m_Results.Add(piece.first + i, std::move(results[i]));
    if (m_Runs.IsStopped()) return;
    for (std::size_t i = ended; i < piece.count; ++i)
      if (!m_Cutter.Again(piece.first + i))
        m_Results.Add(piece.first + i, LostFile(m_Record.Plan(), piece.first + i, why, said));
  }

  const BatchRecord& m_Record;
  GatheredResults& m_Results;
  CommandRuns& m_Runs;
  PieceCutter m_Cutter;
};

}  // namespace

ExitStatus LocalPieces::Run(const BatchRecord& record, GatheredResults& results) {
  const auto runs = OrEnd(ExitStatus::JobFailed, CommandRuns::Create());
  Workers workers(record, results, *runs, m_AtOnce, m_Seconds);
  std::vector<std::unique_ptr<os::Thread>> threads;
  for (unsigned number = 0; number < m_AtOnce; ++number)
    if (auto thread = os::Thread::Start([&workers] { workers.Work(); }))
      threads.push_back(std::move(thread));
  // Without a thread to be had the work is done here.
  if (threads.empty()) workers.Work();
  for (const auto& thread : threads) thread->Join();
  return runs->IsStopped() ? ExitStatus::Cancelled : ExitStatus::Done;
}

}  // namespace rastrel::cli
