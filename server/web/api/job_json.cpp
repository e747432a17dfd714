#include "server/web/api/job_json.h"

#include <nlohmann/json.hpp>

#include "server/web/api/job_request.h"

namespace rastrel::server::web {
namespace {

using Json = nlohmann::ordered_json;

// The coverage of the pages, as the run wrote it.
Json InkOf(const std::string& text) {
  Json ink = Json::parse(text, nullptr, false);
  return ink.is_discarded() ? Json() : ink;
}

}  // namespace

// The table of docs/server.md.
std::vector<std::string> ActionsOf(const Job& job, const Caller& caller) {
  if (caller.role < Role::Print) return {};
  using enum JobState;
  const JobState state = job.state;
  const bool runs = state == Interpreting || state == Delivering;
  std::vector<std::string> actions;
  const auto add = [&](const char* name, bool may) {
    if (may) actions.emplace_back(name);
  };
  add("hold", state == Queued || state == Interpreting || state == Ready);
  add("release", state == Held || state == Failed || state == Canceled || state == Uncertain ||
                     state == Quarantined);
  add("cancel", state != Done && state != Canceled);
  add("accept", state == Uncertain);
  add("move", !runs && state != Done);
  add("priority", !HasEnded(state));
  add("reprint", !job.spool.empty());
  add("remove", !runs);
  return actions;
}

Json JsonOf(const Job& job, const Caller& caller) {
  Json options = Json::object();
  for (const auto& [name, value] : job.options)
    options[name] = OptionFor(caller.VisibleOwner(), name, value);
  return {{"id", job.id},
          {"title", job.title},
          {"owner", job.owner},
          {"source", job.source},
          {"device", job.device},
          {"work", NameOf(job.work)},
          {"options", options},
          {"priority", job.priority},
          {"state", NameOf(job.state)},
          {"bytes", job.bytes},
          {"submitted", job.submitted},
          {"started", job.started},
          {"ended", job.ended},
          {"attempts", job.attempts},
          {"failures", job.failures},
          {"percent", job.percent},
          {"pages", job.pages},
          {"ink", InkOf(job.ink)},
          {"keptPages", !job.spool.empty()},
          {"sent", job.sentBytes},
          {"result", job.result},
          {"message", MessageFor(caller.VisibleOwner(), job.message)},
          {"actions", ActionsOf(job, caller)}};
}

Json JsonOf(const JobEvent& event, const std::string& owner) {
  return {{"number", event.number},
          {"job", event.job},
          {"time", event.time},
          {"kind", event.kind},
          {"text", MessageFor(owner, event.text)}};
}

std::string TextOf(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace rastrel::server::web
