#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "server/web/api/job_json.h"
#include "server/web/api/job_request.h"
#include "server/web/api/job_routes.h"

namespace rastrel::server::web {
namespace {

using Json = nlohmann::ordered_json;

const char* NameOfWay(DeviceWay way) {
  switch (way) {
    case DeviceWay::Folder: return "folder";
    case DeviceWay::Program: return "program";
    case DeviceWay::Socket: return "socket";
    case DeviceWay::PrintQueue: return "queue";
    case DeviceWay::Files: break;
  }
  return "files";
}

// As far as the caller sees its jobs.
Expected<Json> JsonOf(Shop& shop, const Request& request, const std::string& name) {
  JobFilter filter;
  filter.owner = request.caller.VisibleOwner();
  filter.device = name;
  filter.limit = 1;
  filter.states = {JobState::Delivering};
  const auto now = shop.queue.List(filter);
  if (!now) return now.Error();
  filter.states = {JobState::Queued, JobState::Interpreting, JobState::Ready};
  const auto waiting = shop.queue.Count(filter);
  if (!waiting) return waiting.Error();
  return Json{{"name", name},
              {"way", NameOfWay(shop.settings.DeviceNamed(name).way)},
              {"state", now->empty() ? "idle" : "working"},
              {"job", now->empty() ? Json() : Json(now->front().id)},
              {"percent", now->empty() ? 0 : now->front().percent},
              {"waiting", *waiting}};
}

Response ListDevices(Shop& shop, const Request& request) {
  const auto names = shop.devices();
  if (!names) return ErrorResponse(500, "failed", "the devices can't be read");
  Json list = Json::array();
  for (const std::string& name : *names) {
    auto device = JsonOf(shop, request, name);
    if (!device) return AnswerTo(device.Error());
    list.push_back(*std::move(device));
  }
  return JsonResponse(200, TextOf({{"devices", std::move(list)}}));
}

Response ListModes(Shop& shop, const Request&) {
  return JsonResponse(200, TextOf({{"modes", shop.modes()}}));
}

}  // namespace

void AddDevices(Router& router, Shop& shop) {
  router.Add({Method::Get, "/api/v1/devices", Role::See, Body::None,
              [&shop](const Request& request) { return ListDevices(shop, request); }});
  router.Add({Method::Get, "/api/v1/modes", Role::See, Body::None,
              [&shop](const Request& request) { return ListModes(shop, request); }});
}

}  // namespace rastrel::server::web
