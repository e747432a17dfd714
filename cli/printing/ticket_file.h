#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

class CJobTicket;

namespace rastrel::cli {

/// The native, absolute path that an argument names as a ticket's. Fails for one that can't be
/// used: an empty one, and one that the library would take for another file.
[[nodiscard]] Expected<std::string> TicketPath(const std::string& text);

/// Reads a ticket file into a fresh ticket. Fails with the fault and its byte.
[[nodiscard]] Expected<void> LoadTicket(CJobTicket& ticket, const std::string& path);

/// Replaces the file as a whole. A job that was printed is saved as one that may be printed again.
[[nodiscard]] Expected<void> SaveTicket(const CJobTicket& ticket, const std::string& path);

}  // namespace rastrel::cli
