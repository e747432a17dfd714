#pragma once

namespace rastrel::server {

/// Documents whose sender went before their end are no jobs: this program has a function of its own
/// in the place of the one by which the IPP library reads them. Returns whether the system's is
/// found after it; without it nothing can be received.
[[nodiscard]] bool SeesCutDocuments();

}  // namespace rastrel::server
