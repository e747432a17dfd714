#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "server/queue/job.h"
#include "server/web/http/request.h"

/// Jobs and events as the interface writes them; docs/formats/http-interface.md has the fields.
namespace rastrel::server::web {

/// What a caller may do with a job in its state: "hold", "release", "cancel", "accept", "move",
/// "priority", "reprint", "remove".
[[nodiscard]] std::vector<std::string> ActionsOf(const Job& job, const Caller& caller);

/// `owner`: Caller::VisibleOwner.
[[nodiscard]] nlohmann::ordered_json JsonOf(const Job& job, const Caller& caller);
[[nodiscard]] nlohmann::ordered_json JsonOf(const JobEvent& event, const std::string& owner);

/// The text of a value; bytes that are no UTF-8 are replaced.
[[nodiscard]] std::string TextOf(const nlohmann::ordered_json& value);

}  // namespace rastrel::server::web
