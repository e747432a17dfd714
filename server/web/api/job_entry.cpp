#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>

#include "rastrel/platform/os/shown_text.h"
#include "server/web/api/brought_job.h"
#include "server/web/api/job_json.h"
#include "server/web/api/job_request.h"
#include "server/web/api/job_routes.h"

namespace rastrel::server::web {
namespace {

// Fields that are no options of the print.
constexpr std::array<std::string_view, 6> OwnFields{"title", "device", "priority",
                                                    "hold",  "csrf",   "key"};
constexpr const char* UsualDevice = "*";
constexpr std::size_t LongestTitle = 255;

// Of the form, and of the address where the body is the file itself.
std::string FieldOf(const Request& request, std::string_view name) {
  const std::string& form = request.Form(name);
  return form.empty() ? request.Query(name) : form;
}

std::string TitleOf(const Request& request) {
  std::string title = FieldOf(request, "title");
  if (title.empty()) title = request.file.name;
  title = os::CleanLine(title.substr(0, os::WholeCharacters(title.substr(0, LongestTitle))));
  return title.empty() ? "untitled" : title;
}

void TakeOptions(const Fields& fields, JobOptions& options) {
  // A form's field that was left empty is no wish; a flag has a value there.
  for (const auto& [name, value] : fields)
    if (!value.empty() && std::ranges::find(OwnFields, name) == OwnFields.end())
      options[name] = name == "planar" ? std::string() : value;
}

}  // namespace

Expected<JobRequest> BroughtJob(const Request& request) {
  JobRequest job;
  job.path = request.file.path;
  job.title = TitleOf(request);
  job.owner = request.caller.name;
  job.source = "web";
  job.device = FieldOf(request, "device");
  if (job.device.empty()) job.device = UsualDevice;
  const std::string priority = FieldOf(request, "priority");
  if (!priority.empty()) {
    const auto number = WholeNumber(priority, 1, 100);
    if (!number)
      return FailureOf("priority: give a whole number from 1 to 100", FailureCode::BadInput);
    job.priority = static_cast<int>(*number);
  }
  const std::string hold = FieldOf(request, "hold");
  job.hold = !hold.empty() && hold != "false";
  // A key is of its owner: another one's with the same text is another key.
  const std::string key = FieldOf(request, "key");
  if (!key.empty()) job.key = "web " + job.owner + " " + key;
  TakeOptions(request.query, job.options);
  TakeOptions(request.form, job.options);
  return job;
}

Response SubmitJob(Shop& shop, const Request& request, const JobRequest& job) {
  const auto devices = shop.devices();
  if (!devices) return ErrorResponse(500, "failed", "the devices can't be read");
  if (job.device != UsualDevice && std::ranges::find(*devices, job.device) == devices->end())
    return ErrorResponse(400, "bad-request", "there is no device '" + job.device + "'");
  if (auto fine = shop.check(job); !fine)
    return ErrorResponse(400, "bad-request", fine.Error().why);
  const auto id = shop.queue.Submit(job);
  if (!id) return AnswerTo(id.Error());
  const auto made = shop.queue.Find(*id, request.caller.VisibleOwner());
  if (!made) return AnswerTo(made.Error());
  if (!*made) return ErrorResponse(404, "not-found", "the job has gone already");
  Response response = JsonResponse(201, TextOf(JsonOf(**made, request.caller)));
  response.Add("Location", "/api/v1/jobs/" + std::to_string(*id));
  return response;
}

namespace {

Response AddJob(Shop& shop, const Request& request) {
  if (request.file.path.empty())
    return ErrorResponse(400, "bad-request", "the request brings no file");
  const auto job = BroughtJob(request);
  if (!job) return AnswerTo(job.Error());
  return SubmitJob(shop, request, *job);
}

}  // namespace

void AddJobEntry(Router& router, Shop& shop) {
  router.Add({Method::Post, "/api/v1/jobs", Role::Print, Body::Upload,
              [&shop](const Request& request) { return AddJob(shop, request); }});
}

}  // namespace rastrel::server::web
