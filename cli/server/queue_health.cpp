#include "cli/server/queue_health.h"

#include "cli/server/job_filter.h"
#include "server/queue/database.h"
#include "server/queue/schema.h"

namespace rastrel::cli {
namespace {

using State = HealthCheck::State;

constexpr std::int64_t Minute = 60'000;  // of a clock that is set while jobs come
const char* const Restore = "end the server, put the file aside, and take it from a backup";

Expected<std::int64_t> NumberOf(server::Database& database, const std::string& question) {
  server::Query row = database.Prepare(question);
  const std::int64_t number = row.Next() ? row.Number(0) : 0;
  if (auto fine = row.End(); !fine) return fine.Error();
  return number;
}

HealthCheck CheckDatabase(server::Database& database, const std::string& path) {
  HealthCheck check{"queue", State::Good, {}, path, {}};
  const auto version = NumberOf(database, "PRAGMA user_version");
  server::Query row = database.Prepare("PRAGMA quick_check(1)");
  const std::string fault = row.Next() ? row.Text(0) : Describe(row.End().Error());
  if (!version || fault != "ok") {
    check.state = State::Bad;
    check.text = "damaged: " + (version ? fault : Describe(version.Error()));
    check.mend = Restore;
  } else if (*version > server::QueueVersion) {
    check.state = State::Bad;
    check.text = "of version " + std::to_string(*version) + ", and this Rastrel knows " +
                 std::to_string(server::QueueVersion) + " at most";
    check.mend = "install the younger Rastrel that made it";
  } else {
    const auto jobs = NumberOf(database, "SELECT count(*) FROM jobs");
    check.text = "version " + std::to_string(*version) + ", sound";
    if (jobs) check.text += "; jobs: " + std::to_string(*jobs);
  }
  return check;
}

HealthCheck CheckClock(server::Database& database, std::int64_t now) {
  HealthCheck check{"clock", State::Good, "not before the newest job", {}, {}};
  const auto newest = NumberOf(database, "SELECT max(max(submitted, started, ended)) FROM jobs");
  if (newest && *newest > now + Minute) {
    check.state = State::Warning;
    check.text = "it is before the newest job, " + TimeText(*newest);
    check.mend = "set the clock: jobs are kept too long, or go too early";
  }
  return check;
}

}  // namespace

std::vector<HealthCheck> ExamineQueue(const std::string& dataRoot, std::int64_t now) {
  const std::string path = dataRoot + "/server/queue.db";
  const auto database = server::Database::Open(path, server::Database::Safety::Normal);
  if (!database)
    return {{"queue", State::Bad, "damaged: " + Describe(database.Error()), path, Restore}};
  std::vector<HealthCheck> checks{CheckDatabase(**database, path)};
  if (checks.front().state == State::Good) checks.push_back(CheckClock(**database, now));
  return checks;
}

}  // namespace rastrel::cli
