#pragma once

#include "rastrel/platform/os/expected.h"

/// Why a document, or the file made of one, was refused. Operations of the interface return only a
/// false or a null; whoever wants the reason asks here.
namespace rastrel::xml {

/// Keeps the failure for TakeXmlFailure and writes "[XML] " and its description (Describe) to the
/// application log. `where` is the library path as it was given, in UTF-8, and empty for a document
/// in memory; `why` is one sentence without a full stop.
void ReportXmlFailure(Failure failure);

/// Returns the failure that this thread reported last, and forgets it; success if there was none
/// since the last call. A later success does not clear it.
[[nodiscard]] Expected<void> TakeXmlFailure();

}  // namespace rastrel::xml
