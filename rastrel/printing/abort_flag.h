#pragma once

#include "rastrel/platform/os/shared_word.h"

namespace PrintingThread {

/// Set once by the thread that aborts the job, before it releases the abort semaphore. The
/// supervisors read it after each wait.
using AbortFlag = rastrel::os::SharedWord<bool>;

}  // namespace PrintingThread
