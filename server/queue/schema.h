#pragma once

#include "rastrel/platform/os/expected.h"

namespace rastrel::server {

class Database;

/// The version of the database that this program writes (PRAGMA user_version).
inline constexpr int QueueVersion = 1;

/// Brings the database's tables up to date, in one change: all steps from its version on, or none.
/// Refuses one of a newer version, and leaves it as it is.
[[nodiscard]] Expected<void> BringUpToDate(Database& database);

}  // namespace rastrel::server
