#pragma once

#include <string>

class CJobTicket;

namespace rastrel::cli {

/// The native, absolute path that an argument names as a ticket's. Throws CommandError(WrongUse)
/// for one that can't be used: an empty one, and one that the library would take for another file.
[[nodiscard]] std::string TicketPath(const std::string& text);

/// Reads a ticket file into a fresh ticket. Throws CommandError(BadInput) with the fault and its
/// byte.
void LoadTicket(CJobTicket& ticket, const std::string& path);

/// Replaces the file as a whole. A job that was printed is saved as one that may be printed again.
/// Throws CommandError(JobFailed) if it can't be written.
void SaveTicket(const CJobTicket& ticket, const std::string& path);

}  // namespace rastrel::cli
