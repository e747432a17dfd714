#pragma once

#include <string_view>

#include "children/coreodalis/exit_status.h"
#include "interpreter/guardian.h"

namespace rastrel::odalis {

/// The options of the command line.
struct EngineOptions {
  bool planar = false;  ///< "-tp": each plane as a file of its own
};

/// Prints a CFM2 text: delivers its pages in order, and removes page directories as the ticket
/// types say. Reports on standard error. Reads $RASTREL_PRINTER, $RASTREL_OUTPUT, the data root's
/// devices.txt and the page directories.
///
/// Before anything is delivered, every page directory of the text is looked for. The first page
/// that can't be delivered ends the run; the ones before it stay.
[[nodiscard]] ExitStatus RunEngine(std::string_view text, const EngineOptions& options,
                                   interpreter::Guardian& guardian);

}  // namespace rastrel::odalis
