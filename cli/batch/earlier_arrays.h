#pragma once

#include "cli/batch/batch_record.h"

namespace rastrel::cli {

/// Cancels the arrays of a cluster that a killed batch may have left, and takes them out of its
/// record, before its work goes on, wherever that is. The cluster's programs are looked for only if
/// there is an array; without them it throws CommandError, which has the command that cancels it.
void EndEarlierArrays(const BatchRecord& record);

}  // namespace rastrel::cli
