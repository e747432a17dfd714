#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>

#include "server/web/api/job_json.h"
#include "server/web/api/job_request.h"
#include "server/web/api/job_routes.h"

namespace rastrel::server::web {
namespace {

using Change = std::function<Expected<void>(JobQueue&, JobId)>;

// The job as it is after the change.
Response ShowAgain(Shop& shop, const Request& request) {
  FoundJob found = JobOf(shop, request);
  if (!found.job) return std::move(found.refusal);
  return JsonResponse(200, TextOf(JsonOf(*found.job, request.caller)));
}

Response MakeChange(Shop& shop, const Request& request, const Change& change) {
  FoundJob found = JobOf(shop, request);
  if (!found.job) return std::move(found.refusal);
  if (auto done = change(shop.queue, found.job->id); !done) return AnswerTo(done.Error());
  return ShowAgain(shop, request);
}

Response Missing(const char* what) {
  return ErrorResponse(400, "bad-request", std::string("give a JSON object with ") + what);
}

Response Move(Shop& shop, const Request& request) {
  const auto device = BodyField(request, "device");
  if (!device) return Missing("the text \"device\"");
  const auto devices = shop.devices();
  if (!devices) return ErrorResponse(500, "failed", "the devices can't be read");
  bool isKnown = *device == "*";
  for (const std::string& one : *devices) isKnown = isKnown || one == *device;
  if (!isKnown) return ErrorResponse(400, "bad-request", "there is no device '" + *device + "'");
  return MakeChange(shop, request,
                    [&](JobQueue& queue, JobId id) { return queue.Move(id, *device); });
}

Response SetPriority(Shop& shop, const Request& request) {
  const auto text = BodyField(request, "priority");
  const auto priority = text ? WholeNumber(*text, 1, 100) : std::nullopt;
  if (!priority) return Missing("the number \"priority\", from 1 to 100");
  return MakeChange(shop, request, [&](JobQueue& queue, JobId id) {
    return queue.SetPriority(id, static_cast<int>(*priority));
  });
}

Response Reprint(Shop& shop, const Request& request) {
  FoundJob found = JobOf(shop, request);
  if (!found.job) return std::move(found.refusal);
  const std::string text = BodyField(request, "pages").value_or("");
  std::vector<int> pages;
  if (!text.empty()) {
    auto named = shop.pagesOf(text);
    if (!named) return ErrorResponse(400, "bad-request", named.Error().why);
    pages = *std::move(named);
  }
  const auto made = shop.queue.Reprint(found.job->id, pages);
  if (!made) return AnswerTo(made.Error());
  const auto job = shop.queue.Find(*made, request.caller.VisibleOwner());
  if (!job) return AnswerTo(job.Error());
  if (!*job) return ErrorResponse(404, "not-found", "the new job has gone already");
  Response response = JsonResponse(201, TextOf(JsonOf(**job, request.caller)));
  response.Add("Location", "/api/v1/jobs/" + std::to_string(*made));
  return response;
}

Response Remove(Shop& shop, const Request& request) {
  FoundJob found = JobOf(shop, request);
  if (!found.job) return std::move(found.refusal);
  const auto spool = shop.queue.Remove(found.job->id);
  if (!spool) return AnswerTo(spool.Error());
  if (!spool->empty()) shop.removePages(*spool);
  Response response;
  response.status = 204;
  return response;
}

}  // namespace

void AddJobChanges(Router& router, Shop& shop) {
  const auto add = [&](const char* pattern, Response (*change)(Shop&, const Request&)) {
    router.Add({Method::Post, pattern, Role::Print, Body::Small,
                [&shop, change](const Request& request) { return change(shop, request); }});
  };
  const auto act = [&](const char* pattern, Expected<void> (JobQueue::*action)(JobId)) {
    router.Add(
        {Method::Post, pattern, Role::Print, Body::Small, [&shop, action](const Request& request) {
           return MakeChange(shop, request,
                             [action](JobQueue& queue, JobId id) { return (queue.*action)(id); });
         }});
  };
  act("/api/v1/jobs/{id}/hold", &JobQueue::Hold);
  act("/api/v1/jobs/{id}/release", &JobQueue::Release);
  act("/api/v1/jobs/{id}/cancel", &JobQueue::Cancel);
  act("/api/v1/jobs/{id}/accept", &JobQueue::AcceptAsDone);
  add("/api/v1/jobs/{id}/move", Move);
  add("/api/v1/jobs/{id}/priority", SetPriority);
  add("/api/v1/jobs/{id}/reprint", Reprint);
  router.Add({Method::Delete, "/api/v1/jobs/{id}", Role::Print, Body::None,
              [&shop](const Request& request) { return Remove(shop, request); }});
}

}  // namespace rastrel::server::web
