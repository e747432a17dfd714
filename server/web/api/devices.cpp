#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "server/web/api/device_state.h"
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

Json JsonOf(Shop& shop, const std::string& name, const DeviceState& state) {
  return Json{{"name", name},
              {"way", NameOfWay(shop.settings.DeviceNamed(name).way)},
              {"state", state.job ? "working" : "idle"},
              {"job", state.job ? Json(state.job->id) : Json()},
              {"percent", state.job ? state.job->percent : 0},
              {"waiting", state.waiting}};
}

Response ListDevices(Shop& shop, const Request& request) {
  const auto names = shop.devices();
  if (!names) return ErrorResponse(500, "failed", "the devices can't be read");
  Json list = Json::array();
  for (const std::string& name : *names) {
    const auto state = StateOfDevice(shop, request, name);
    if (!state) return AnswerTo(state.Error());
    list.push_back(JsonOf(shop, name, *state));
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
