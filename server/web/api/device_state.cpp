#include "server/web/api/device_state.h"

#include <utility>

namespace rastrel::server::web {

Expected<DeviceState> StateOfDevice(Shop& shop, const Request& request, const std::string& name) {
  JobFilter filter;
  filter.owner = request.caller.VisibleOwner();
  filter.device = name;
  filter.limit = 1;
  filter.states = {JobState::Delivering};
  auto now = shop.queue.List(filter);
  if (!now) return now.Error();
  filter.states = {JobState::Queued, JobState::Interpreting, JobState::Ready};
  const auto waiting = shop.queue.Count(filter);
  if (!waiting) return waiting.Error();
  DeviceState state;
  if (!now->empty()) state.job = std::move(now->front());
  state.waiting = *waiting;
  return state;
}

}  // namespace rastrel::server::web
