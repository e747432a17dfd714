#include <chrono>
#include <nlohmann/json.hpp>

#include "server/queue/job_queue_parts.h"

namespace rastrel::server {
namespace {

// A state that nobody knows comes of a damaged row, which nothing touches by itself.
JobState StateNamed(const std::string& name) {
  JobState state = JobState::Quarantined;
  return StateOf(name, state) ? state : JobState::Quarantined;
}

JobWork WorkNamed(const std::string& name) {
  JobWork work = JobWork::Print;
  return WorkOf(name, work) ? work : JobWork::Print;
}

}  // namespace

const char* const JobColumns =
    "id, title, owner, source, device, work, options, priority, state, file, bytes, submitted, "
    "started, ended, attempts, failures, percent, pages, ink, spool, sent, result, message";

Job JobOfRow(const Query& row) {
  Job job;
  int column = 0;
  const auto text = [&] { return row.Text(column++); };
  const auto number = [&] { return row.Number(column++); };
  const auto whole = [&] { return static_cast<int>(row.Number(column++)); };
  job.id = number();
  job.title = text();
  job.owner = text();
  job.source = text();
  job.device = text();
  job.work = WorkNamed(text());
  job.options = OptionsOfText(text());
  job.priority = whole();
  job.state = StateNamed(text());
  job.file = text();
  job.bytes = number();
  job.submitted = number();
  job.started = number();
  job.ended = number();
  job.attempts = whole();
  job.failures = whole();
  job.percent = whole();
  job.pages = whole();
  job.ink = text();
  job.spool = text();
  job.sentBytes = number();
  job.result = whole();
  job.message = text();
  return job;
}

std::string TextOfOptions(const JobOptions& options) {
  nlohmann::json object = nlohmann::json::object();
  for (const auto& [name, value] : options) object[name] = value;
  return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

JobOptions OptionsOfText(const std::string& text) {
  JobOptions options;
  const auto object = nlohmann::json::parse(text, nullptr, false);
  if (!object.is_object()) return options;
  for (const auto& [name, value] : object.items())
    if (value.is_string()) options[name] = value.get<std::string>();
  return options;
}

Time Now() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

Expected<void> AddEvent(Database& database, JobId job, const char* kind, const std::string& text) {
  return database.Prepare("INSERT INTO events (job, time, kind, text) VALUES (?, ?, ?, ?)")
      .Bind(job)
      .Bind(Now())
      .Bind(std::string_view(kind))
      .Bind(text)
      .Run();
}

Expected<JobStanding> StandingOf(Database& database, JobId id) {
  Query row = database.Prepare(
      "SELECT state, claim, wish, spool, device, failures, pages, sending, sent, title FROM "
      "jobs "
      "WHERE id = ?");
  if (row.Bind(id).Next()) {
    JobStanding standing;
    standing.state = StateNamed(row.Text(0));
    standing.claim = row.Text(1);
    standing.wish = row.Text(2);
    standing.spool = row.Text(3);
    standing.device = row.Text(4);
    standing.failures = static_cast<int>(row.Number(5));
    standing.pages = static_cast<int>(row.Number(6));
    standing.sending = row.Number(7);
    standing.sent = row.Number(8);
    standing.title = row.Text(9);
    return standing;
  }
  if (auto fine = row.End(); !fine) return fine.Error();
  return FailureOf("there is no job " + std::to_string(id));
}

Failure RefusedIn(JobId id, JobState state) {
  return FailureOf("job " + std::to_string(id) + " is " + NameOf(state));
}

Expected<void> SetState(Database& database, JobId id, JobState state, const std::string& message) {
  const Time ended = HasEnded(state) ? Now() : 0;
  auto done = database
                  .Prepare(
                      "UPDATE jobs SET state = ?, message = ?, ended = ?, claim = '', "
                      "wish = '' WHERE id = ?")
                  .Bind(std::string_view(NameOf(state)))
                  .Bind(message)
                  .Bind(ended)
                  .Bind(id)
                  .Run();
  if (!done) return done;
  return AddEvent(database, id, "state", NameOf(state));
}

}  // namespace rastrel::server
