#pragma once

#include <string>

#include "cli/job/job_event.h"

namespace rastrel::cli {

/// The line of docs/formats/events.md for an event, with a line feed at its end.
[[nodiscard]] std::string EventLine(const JobEvent& event);

}  // namespace rastrel::cli
