#pragma once

#include "cli/batch/batch_record.h"
#include "cli/batch/piece_cutter.h"
#include "cli/console/exit_status.h"

namespace rastrel::cli {

/// The first argument of a run that does a piece of a batch, which no command has.
inline constexpr const char* BatchPieceWord = ":batch-piece";

/// Runs the batch's command for the files of a piece, one after the other, and stores their ends.
/// Those that had ended are stored when a signal asks for an end, too: Cancelled then, and else
/// Done. Throws CommandError. REQUIRES: no other thread runs yet.
[[nodiscard]] ExitStatus DoPiece(const BatchRecord& record, const BatchPiece& piece);

/// Does a piece of a batch, in a program of its own: `rastrel :batch-piece RESULTS FIRST COUNT`
/// runs the batch's command for COUNT files from the index FIRST on, one after the other, and
/// stores their ends in the record. Those that had ended are stored when a signal asks for an end,
/// too. A run that dies is begun anew, twice. Returns the exit status of main.
[[nodiscard]] int RunBatchPiece(int count, const char* const* arguments);

}  // namespace rastrel::cli
