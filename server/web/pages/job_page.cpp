#include "server/web/pages/job_page.h"

#include <algorithm>

#include "server/web/api/job_request.h"
#include "server/web/pages/html.h"
#include "server/web/pages/job_table.h"
#include "server/web/pages/layout.h"

namespace rastrel::server::web {
namespace {

constexpr int EventsOfPage = 200;
constexpr int LinkedPages = 1000;

std::string Fact(const Words& words, const char* label, const char* field,
                 const std::string& value) {
  return "<div><dt>" + words(label) + "</dt><dd data-field=\"" + field + "\">" + value +
         "</dd></div>\n";
}

std::string Facts(const Job& job, const std::string& owner, const Words& words) {
  std::string facts = "<dl class=\"facts\">\n" +
                      Fact(words, "Owner", "owner", Isolated(job.owner)) +
                      Fact(words, "Device", "device", Isolated(job.device)) +
                      Fact(words, "Priority", "priority", std::to_string(job.priority)) +
                      Fact(words, "Brought by", "source", Isolated(job.source)) +
                      Fact(words, "Brought", "submitted", TimeElement(job.submitted)) +
                      Fact(words, "Begun", "started", TimeElement(job.started)) +
                      Fact(words, "Ended", "ended", TimeElement(job.ended)) +
                      Fact(words, "Attempts", "attempts", std::to_string(job.attempts));
  for (const auto& [name, value] : job.options)
    facts += "<div><dt>" + Escaped(name) + "</dt><dd>" +
             Isolated(value.empty() ? "✓" : OptionFor(owner, name, value)) + "</dd></div>\n";
  return facts + "</dl>\n";
}

std::string Pages(const Job& job, const Request& request, const Words& words) {
  const std::string id = std::to_string(job.id);
  const int last = std::max(1, std::min(job.pages, LinkedPages));
  const int shown = static_cast<int>(WholeNumber(request.Query("page"), 1, last).value_or(1));
  std::string thumbnails;
  for (int page = 1; page <= std::min(job.pages, LinkedPages); ++page) {
    const std::string number = std::to_string(page);
    thumbnails += "<li><a href=\"?page=" + number + "\"" +
                  (page == shown ? " aria-current=\"true\"" : "") + "><img src=\"/api/v1/jobs/" +
                  id + "/pages/" + number + ".png?width=128\" alt=\"\" loading=\"lazy\"><span>" +
                  words("Page {0}", number) + "</span></a></li>\n";
  }
  const std::string number = std::to_string(shown);
  return "<p id=\"no-pages\"" + std::string(job.spool.empty() ? "" : " hidden") + ">" +
         words("There is no picture of this job's pages.") + "</p>\n<div id=\"pages\"" +
         (job.spool.empty() ? " hidden" : "") + ">\n<ul id=\"thumbnails\">\n" + thumbnails +
         "</ul>\n<div class=\"sheet-view\">\n<fieldset id=\"inks\"></fieldset>\n"
         "<p id=\"page-size\"></p>\n<div id=\"viewer\" class=\"viewer\">" +
         (job.spool.empty() ? std::string()
                            : "<img src=\"/api/v1/jobs/" + id + "/pages/" + number +
                                  ".png?width=1024\" alt=\"" + words("Page {0}", number) + "\">") +
         "</div>\n</div>\n</div>\n";
}

std::string Story(Shop& shop, const Request& request, const Job& job, const Words& words) {
  std::string story = "<ol id=\"story\">\n";
  const auto events = shop.queue.Events(0, job.id, EventsOfPage);
  if (events)
    for (const JobEvent& event : *events) {
      if (event.kind == "progress") continue;
      const std::string text =
          event.kind == "state" ? words(event.text)
                                : Isolated(MessageFor(request.caller.VisibleOwner(), event.text));
      story += "<li class=\"" + Escaped(event.kind) + "\">" + TimeElement(event.time) + " " + text +
               "</li>\n";
    }
  return story + "</ol>\n";
}

Response NoJob(const Request& request, const Words& words) {
  return PageResponse(404, request, words,
                      {words("No such job"),
                       "failure",
                       {},
                       "<h1>" + words("There is no such job") + "</h1>\n<p><a href=\"/jobs\">" +
                           words("All jobs") + "</a></p>\n"});
}

}  // namespace

Response JobPage(Shop& shop, const Request& request, const Words& words) {
  const FoundJob found = JobOf(shop, request);
  if (!found.job) return NoJob(request, words);
  const Job& job = *found.job;
  const std::string id = std::to_string(job.id);
  const std::string body =
      "<h1>" + Isolated(job.title) + " <span class=\"number\">" + words("Job {0}", id) +
      "</span></h1>\n<p id=\"state\">" + StateMarkup(job, words) + "</p>\n<p id=\"message\"" +
      (job.message.empty() ? " hidden" : "") + ">" +
      Escaped(MessageFor(request.caller.VisibleOwner(), job.message)) +
      "</p>\n<div id=\"actions\" class=\"buttons\" role=\"group\" aria-label=\"" +
      words("What to do with it") +
      "\"></div>\n<section aria-labelledby=\"pages-title\">\n<h2 id=\"pages-title\">" +
      words("Pages") + "</h2>\n" + Pages(job, request, words) +
      "</section>\n<section aria-labelledby=\"facts-title\">\n<h2 id=\"facts-title\">" +
      words("Settings") + "</h2>\n" + Facts(job, request.caller.VisibleOwner(), words) +
      "<p><a href=\"/api/v1/jobs/" + id + "/file\">" + words("Its file") +
      "</a></p>\n</section>\n<section aria-labelledby=\"story-title\">\n<h2 id=\"story-title\">" +
      words("Story") + "</h2>\n" + Story(shop, request, job, words) + "</section>\n";
  return PageResponse(200, request, words,
                      {Escaped(job.title), "job", " data-job=\"" + id + "\"", body});
}

Response SignInPage(const Request& request, const Words& words) {
  // A path of this server; where it is none, the first page.
  const std::string& asked = request.Query("next");
  const bool isOwn = asked.starts_with('/') && !asked.starts_with("//");
  const std::string body =
      "<h1>" + words("Sign in") +
      "</h1>\n<form class=\"sign-in\" method=\"post\" action=\"/api/v1/session\">\n"
      "<input type=\"hidden\" name=\"next\" value=\"" +
      Escaped(isOwn ? asked : "/") + "\">\n<label><span>" + words("Name") +
      "</span><input name=\"name\" autocomplete=\"username\"></label>\n<label><span>" +
      words("Password") +
      "</span><input name=\"password\" type=\"password\" autocomplete=\"current-password\">"
      "</label>\n<button class=\"main\">" +
      words("Sign in") + "</button>\n</form>\n<p>" +
      words("On the server's own machine, \"rastrel serve --open\" opens this page signed in.") +
      "</p>\n<form class=\"sign-in\" method=\"post\" action=\"/api/v1/session\">\n"
      "<input type=\"hidden\" name=\"next\" value=\"" +
      Escaped(isOwn ? asked : "/") + "\">\n<label><span>" + words("Or the server's token") +
      "</span><input name=\"token\" type=\"password\" autocomplete=\"off\"></label>\n<button>" +
      words("Sign in") + "</button>\n</form>\n";
  return PageResponse(200, request, words, {words("Sign in"), "sign-in", {}, body});
}

}  // namespace rastrel::server::web
