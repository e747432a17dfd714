#include "server/web/pages/list_pages.h"

#include <algorithm>
#include <array>
#include <utility>

#include "server/web/api/device_state.h"
#include "server/web/api/job_request.h"
#include "server/web/pages/html.h"
#include "server/web/pages/job_table.h"
#include "server/web/pages/layout.h"

namespace rastrel::server::web {
namespace {

constexpr int JobsOfPage = 50;
constexpr int JobsOfOverview = 200;
constexpr const char* OpenStates =
    "queued,held,interpreting,ready,delivering,failed,uncertain,quarantined";
constexpr std::array<JobState, 10> AllStates{
    JobState::Queued,     JobState::Held,       JobState::Interpreting, JobState::Ready,
    JobState::Delivering, JobState::Done,       JobState::Failed,       JobState::Canceled,
    JobState::Uncertain,  JobState::Quarantined};

Response Unusable(const Request& request, const Words& words, const Failure& failure) {
  const bool isBad = failure.code == FailureCode::BadInput;
  const std::string why =
      isBad ? Escaped(Describe(failure)) : words("The queue can not be used now.");
  return PageResponse(isBad ? 400 : 500, request, words,
                      {words("Failure"),
                       "failure",
                       {},
                       "<h1>" + words("That did not work") + "</h1>\n<p>" + why + "</p>\n"});
}

std::string Option(const std::string& value, const std::string& shown, const std::string& chosen) {
  return "<option value=\"" + Escaped(value) + "\"" + (value == chosen ? " selected" : "") + ">" +
         shown + "</option>";
}

std::string Field(const std::string& label, const std::string& input) {
  return "<label><span>" + label + "</span>" + input + "</label>\n";
}

std::string DeviceChoice(Shop& shop, const std::string& nothing, const std::string& chosen) {
  std::string choice = "<select name=\"device\">" + Option("", nothing, chosen);
  const auto names = shop.devices();
  if (names)
    for (const std::string& name : *names) choice += Option(name, Escaped(name), chosen);
  return choice + "</select>";
}

// What only a person who may bring jobs sees, and only with the script.
std::string UploadForm(Shop& shop, const Request& request, const Words& words) {
  if (request.caller.role < Role::Print) return {};
  std::string modes = "<select name=\"mode\">" + Option("", words("the usual one"), "");
  if (shop.modes)
    for (const std::string& mode : shop.modes()) modes += Option(mode, Escaped(mode), "");
  return "<section aria-labelledby=\"bring\">\n<h2 id=\"bring\">" + words("Bring files") +
         "</h2>\n<form id=\"upload\" hidden>\n<p class=\"drop-hint\">" +
         words("Drop PostScript, EPS, PDF, PNG or JPEG files anywhere on this page, or choose some.") +
         "</p>\n" +
         Field(words("Files"),
               "<input type=\"file\" name=\"file\" multiple "
               "accept=\".ps,.eps,.pdf,.png,.jpg,.jpeg,application/pdf,application/postscript,"
               "image/png,image/jpeg\">") +
         Field(words("Device"), DeviceChoice(shop, words("the usual one"), "")) +
         Field(words("Print mode"), modes + "</select>") +
         Field(words("Copies"), "<input type=\"number\" name=\"copies\" min=\"1\" max=\"999\">") +
         "<label class=\"check\"><input type=\"checkbox\" name=\"hold\" value=\"true\"><span>" +
         words("Hold until released") + "</span></label>\n<button class=\"main\">" +
         words("Bring") + "</button>\n</form>\n<noscript><p>" +
         words("To bring files here, the browser has to run this page's scripts.") +
         "</p></noscript>\n<ul id=\"uploads\"></ul>\n</section>\n";
}

std::string DeviceList(Shop& shop, const Request& request, const Words& words) {
  const auto names = shop.devices();
  if (!names || names->empty()) return "<p>" + words("No device is set up.") + "</p>\n";
  std::string list = "<ul class=\"devices\">\n";
  for (const std::string& name : *names) {
    const auto state = StateOfDevice(shop, request, name).ValueOr({});
    list += std::string("<li class=\"device device-") + (state.job ? "working" : "idle") +
            "\"><h3>" + Isolated(name) + "</h3><span class=\"doing\">";
    if (state.job) {
      const std::string id = std::to_string(state.job->id);
      list += "<a href=\"/jobs/" + id + "\">" + words("Job {0}", id) + "</a>";
    } else {
      list += words("idle");
    }
    list += "</span><a href=\"/jobs?device=" + QueryValue(name) + "\">" +
            words("Waiting: {0}", std::to_string(state.waiting)) + "</a></li>\n";
  }
  return list + "</ul>\n";
}

// The query of the interface for the same list, but for these fields.
std::string QueryWith(const Request& request, int offset) {
  std::string query;
  for (const auto& [name, value] : request.query)
    if (!value.empty() && name != "offset" && name != "limit")
      query += QueryValue(name) + "=" + QueryValue(value) + "&";
  return query + "limit=" + std::to_string(JobsOfPage) + "&offset=" + std::to_string(offset);
}

std::string FilterForm(Shop& shop, const Request& request, const Words& words) {
  const auto input = [&](const char* name, const char* type) {
    return std::string("<input type=\"") + type + "\" name=\"" + name + "\" value=\"" +
           Escaped(request.Query(name)) + "\">";
  };
  std::string states = "<select name=\"state\">" + Option("", words("all"), "") +
                       Option(OpenStates, words("not over"), request.Query("state"));
  for (const JobState state : AllStates)
    states += Option(NameOf(state), words(NameOf(state)), request.Query("state"));
  std::string orders = "<select name=\"order\">";
  for (const auto& [order, text] :
       std::array<std::pair<const char*, const char*>, 7>{{{"id", "Number"},
                                                           {"ended", "Ended"},
                                                           {"title", "Title"},
                                                           {"owner", "Owner"},
                                                           {"device", "Device"},
                                                           {"state", "State"},
                                                           {"priority", "Priority"}}})
    orders += Option(order, words(text), request.Query("order"));
  std::string directions = "<select name=\"descending\">" +
                           Option("true", words("falling"), request.Query("descending")) +
                           Option("false", words("rising"), request.Query("descending")) +
                           "</select>";
  return "<form class=\"filter\" role=\"search\" action=\"/jobs\">\n" +
         Field(words("Title has"), input("text", "search")) +
         Field(words("State"), states + "</select>") +
         (request.caller.role == Role::Manage ? Field(words("Owner"), input("owner", "text"))
                                              : std::string()) +
         Field(words("Device"), DeviceChoice(shop, words("all"), request.Query("device"))) +
         Field(words("From"), input("from", "date")) +
         Field(words("Until"), input("until", "date")) +
         Field(words("Sorted by"), orders + "</select>") + Field(words("Order"), directions) +
         "<button class=\"main\">" + words("Show") + "</button> <a href=\"/jobs\">" +
         words("Show all") + "</a>\n</form>\n";
}

std::string Paging(const Request& request, const Words& words, int offset, std::int64_t total) {
  std::string links;
  if (offset > 0)
    links += "<a rel=\"prev\" href=\"/jobs?" +
             Escaped(QueryWith(request, std::max(0, offset - JobsOfPage))) + "\">" +
             words("Newer") + "</a> ";
  if (offset + JobsOfPage < total)
    links += "<a rel=\"next\" href=\"/jobs?" + Escaped(QueryWith(request, offset + JobsOfPage)) +
             "\">" + words("Older") + "</a>";
  return "<nav class=\"paging\" aria-label=\"" + words("Further jobs") + "\"><span id=\"total\">" +
         words("Jobs: {0}", std::to_string(total)) + "</span> " + links + "</nav>\n";
}

}  // namespace

Response OverviewPage(Shop& shop, const Request& request, const Words& words) {
  JobFilter filter;
  filter.owner = request.caller.VisibleOwner();
  filter.limit = JobsOfOverview;
  for (const JobState state : AllStates)
    if (state != JobState::Done && state != JobState::Canceled) filter.states.push_back(state);
  const auto jobs = shop.queue.List(filter);
  if (!jobs) return Unusable(request, words, jobs.Error());
  const std::string query =
      std::string("state=") + OpenStates + "&limit=" + std::to_string(JobsOfOverview);
  return PageResponse(200, request, words,
                      {words("Overview"),
                       "overview",
                       {},
                       "<h1>" + words("Overview") + "</h1>\n" + UploadForm(shop, request, words) +
                           "<section aria-labelledby=\"devices\">\n<h2 id=\"devices\">" +
                           words("Devices") + "</h2>\n" + DeviceList(shop, request, words) +
                           "</section>\n<section aria-labelledby=\"open\">\n<h2 id=\"open\">" +
                           words("Jobs that are not over") + "</h2>\n" +
                           JobTable(*jobs, words("Jobs that are not over"), query,
                                    request.caller.VisibleOwner(), words) +
                           "<p><a href=\"/jobs\">" + words("All jobs") + "</a></p>\n</section>\n"});
}

Response JobsPage(Shop& shop, const Request& request, const Words& words) {
  auto filter = FilterOf(request, JobsOfPage, JobsOfPage);
  if (!filter) return Unusable(request, words, filter.Error());
  const auto jobs = shop.queue.List(*filter);
  if (!jobs) return Unusable(request, words, jobs.Error());
  const auto total = shop.queue.Count(*filter);
  if (!total) return Unusable(request, words, total.Error());
  return PageResponse(200, request, words,
                      {words("All jobs"),
                       "jobs",
                       {},
                       "<h1>" + words("All jobs") + "</h1>\n" + FilterForm(shop, request, words) +
                           JobTable(*jobs, words("All jobs"), QueryWith(request, filter->offset),
                                    request.caller.VisibleOwner(), words) +
                           Paging(request, words, filter->offset, *total)});
}

Response DevicesPage(Shop& shop, const Request& request, const Words& words) {
  return PageResponse(200, request, words,
                      {words("Devices"),
                       "devices",
                       {},
                       "<h1>" + words("Devices") + "</h1>\n" + DeviceList(shop, request, words)});
}

}  // namespace rastrel::server::web
