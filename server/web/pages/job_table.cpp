#include "server/web/pages/job_table.h"

#include "server/web/api/job_request.h"
#include "server/web/pages/html.h"

namespace rastrel::server::web {
namespace {

std::string Cell(const Words& words, const char* label, const std::string& content) {
  return "<td data-label=\"" + words(label) + "\">" + content + "</td>";
}

std::string Row(const Job& job, const std::string& owner, const Words& words) {
  const std::string id = std::to_string(job.id);
  std::string row = "<tr data-job=\"" + id + "\"><td class=\"thumb\"><a href=\"/jobs/" + id +
                    "\" tabindex=\"-1\" aria-hidden=\"true\"><span class=\"sheet\">";
  if (!job.spool.empty())
    row += "<img src=\"/api/v1/jobs/" + id + "/pages/1.png?width=128\" alt=\"\" loading=\"lazy\">";
  row += "</span></a></td><th scope=\"row\"><a href=\"/jobs/" + id + "\">" + Isolated(job.title) +
         "</a><span class=\"number\"> " + words("Job {0}", id) + "</span>";
  if (!job.message.empty())
    row += "<span class=\"message\">" + Escaped(MessageFor(owner, job.message)) + "</span>";
  return row + "</th>" + Cell(words, "State", StateMarkup(job, words)) +
         Cell(words, "Owner", Isolated(job.owner)) + Cell(words, "Device", Isolated(job.device)) +
         Cell(words, "Priority", std::to_string(job.priority)) +
         Cell(words, "Pages", job.pages > 0 ? std::to_string(job.pages) : std::string()) +
         Cell(words, "Brought", TimeElement(job.submitted)) + "</tr>\n";
}

}  // namespace

std::string StateMarkup(const Job& job, const Words& words) {
  const std::string name = NameOf(job.state);
  std::string markup = "<span class=\"state state-" + name + "\">" + words(name) + "</span>";
  if (job.state != JobState::Interpreting && job.state != JobState::Delivering) return markup;
  const std::string percent = std::to_string(job.percent);
  return markup + "<progress max=\"100\" value=\"" + percent + "\" aria-label=\"" +
         words("Progress") + "\"></progress><span class=\"percent\">" + percent + " %</span>";
}

std::string JobTable(const std::vector<Job>& jobs, const std::string& caption,
                     const std::string& query, const std::string& owner, const Words& words) {
  std::string table = "<table class=\"jobs\" data-query=\"" + Escaped(query) + "\"" +
                      (jobs.empty() ? " hidden" : "") + ">\n<caption>" + caption +
                      "</caption>\n<thead><tr><td></td>";
  for (const char* name : {"Job", "State", "Owner", "Device", "Priority", "Pages", "Brought"})
    table += "<th scope=\"col\">" + words(name) + "</th>";
  table += "</tr></thead>\n<tbody>\n";
  for (const Job& job : jobs) table += Row(job, owner, words);
  return table + "</tbody></table>\n<p id=\"no-jobs\"" + (jobs.empty() ? "" : " hidden") + ">" +
         words("There are no such jobs.") + "</p>\n";
}

}  // namespace rastrel::server::web
