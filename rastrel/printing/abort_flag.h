#pragma once

#include "rastrel/platform/os/shared_word.h"

namespace PrintingThread {

/// Set once by whoever ends the job early, before the abort semaphore is released; read by the
/// supervisors after each wait.
using AbortFlag = rastrel::os::SharedWord<bool>;

}  // namespace PrintingThread
