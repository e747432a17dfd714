#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "server/web/api/job_json.h"
#include "server/web/api/job_request.h"
#include "server/web/api/job_routes.h"

namespace rastrel::server::web {
namespace {

using Json = nlohmann::ordered_json;

constexpr int UsualJobs = 100;
constexpr int MaximumJobs = 1000;
constexpr int MaximumRows = 100'000;
constexpr int RowsAtOnce = 1000;
constexpr int UsualEvents = 100;
constexpr int MaximumEvents = 1000;

Response ListJobs(Shop& shop, const Request& request) {
  const auto filter = FilterOf(request, UsualJobs, MaximumJobs);
  if (!filter) return AnswerTo(filter.Error());
  const auto jobs = shop.queue.List(*filter);
  if (!jobs) return AnswerTo(jobs.Error());
  const auto total = shop.queue.Count(*filter);
  if (!total) return AnswerTo(total.Error());
  Json list = Json::array();
  for (const Job& job : *jobs) list.push_back(JsonOf(job, request.caller));
  return JsonResponse(200, TextOf({{"jobs", std::move(list)},
                                   {"total", *total},
                                   {"offset", filter->offset},
                                   {"limit", filter->limit}}));
}

Response TableOfJobs(Shop& shop, const Request& request) {
  auto filter = FilterOf(request, MaximumRows, MaximumRows);
  if (!filter) return AnswerTo(filter.Error());
  std::string table = shop.tableHead();
  int left = filter->limit;
  while (left > 0) {
    filter->limit = std::min(left, RowsAtOnce);
    const auto jobs = shop.queue.List(*filter);
    if (!jobs) return AnswerTo(jobs.Error());
    for (Job job : *jobs) {
      job.message = MessageFor(request.caller.VisibleOwner(), job.message);
      table += shop.tableRow(job);
    }
    if (jobs->size() < static_cast<std::size_t>(filter->limit)) break;
    left -= filter->limit;
    filter->offset += filter->limit;
  }
  Response response = TextResponse(200, "text/csv; charset=utf-8; header=present", table);
  response.Add("Content-Disposition", AttachmentOf("jobs.csv"));
  return response;
}

Response ShowJob(Shop& shop, const Request& request) {
  FoundJob found = JobOf(shop, request);
  if (!found.job) return std::move(found.refusal);
  return JsonResponse(200, TextOf(JsonOf(*found.job, request.caller)));
}

Response ShowEvents(Shop& shop, const Request& request) {
  FoundJob found = JobOf(shop, request);
  if (!found.job) return std::move(found.refusal);
  const auto numberOf = [&](const char* name, std::int64_t usual, std::int64_t greatest) {
    const std::string& text = request.Query(name);
    return text.empty() ? usual : WholeNumber(text, 0, greatest).value_or(-1);
  };
  const std::int64_t after = numberOf("after", 0, INT64_MAX);
  const std::int64_t limit = numberOf("limit", UsualEvents, MaximumEvents);
  if (after < 0 || limit < 1)
    return ErrorResponse(400, "bad-request",
                         "after and limit are whole numbers, limit from 1 to 1000");
  const auto events = shop.queue.Events(after, found.job->id, static_cast<int>(limit),
                                        request.caller.VisibleOwner());
  if (!events) return AnswerTo(events.Error());
  Json list = Json::array();
  for (const JobEvent& event : *events)
    list.push_back(JsonOf(event, request.caller.VisibleOwner()));
  const bool isFull = static_cast<std::int64_t>(events->size()) == limit;
  return JsonResponse(200, TextOf({{"events", std::move(list)}, {"more", isFull}}));
}

// The type of a file that the queue keeps, which has nothing of its sender's name but a plain
// extension. It is never shown as a page of ours.
const char* TypeOf(const std::string& extension) {
  if (extension == ".pdf") return "application/pdf";
  if (extension == ".ps" || extension == ".eps") return "application/postscript";
  return "application/octet-stream";
}

Response ShowFile(Shop& shop, const Request& request) {
  FoundJob found = JobOf(shop, request);
  if (!found.job) return std::move(found.refusal);
  const std::string& file = found.job->file;
  const std::string name = file.substr(file.rfind('/') + 1);
  const std::size_t dot = name.rfind('.');
  const std::string extension = dot == name.npos ? std::string() : name.substr(dot);
  std::string shown = found.job->title;
  if (!shown.ends_with(extension)) shown += extension;
  return FileResponse(request, file, {TypeOf(extension), shown, ""});
}

}  // namespace

void AddJobViews(Router& router, Shop& shop) {
  const auto add = [&](const char* pattern, Response (*show)(Shop&, const Request&)) {
    router.Add({Method::Get, pattern, Role::See, Body::None,
                [&shop, show](const Request& request) { return show(shop, request); }});
  };
  add("/api/v1/jobs", ListJobs);
  add("/api/v1/jobs.csv", TableOfJobs);
  add("/api/v1/jobs/{id}", ShowJob);
  add("/api/v1/jobs/{id}/events", ShowEvents);
  add("/api/v1/jobs/{id}/file", ShowFile);
}

}  // namespace rastrel::server::web
