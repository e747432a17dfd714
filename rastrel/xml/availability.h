#pragma once

#include "rastrel/platform/os/expected.h"

namespace rastrel::xml {

/// Loads the XML parser's library, unless this process did so before. Fails if it is not installed
/// or lacks a function, in which case every document is refused. The result stays the same for the
/// life of the process. Thread: any.
[[nodiscard]] Expected<void> LoadXmlParser();

}  // namespace rastrel::xml
