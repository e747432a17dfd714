#include <fcntl.h>

#include <functional>
#include <optional>
#include <string>

#include "rastrel/platform/os/directory_entries.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"
#include "server/queue/job_queue_parts.h"

namespace rastrel::server {
namespace {

// The step of a job that owners take turns at.
struct Stage {
  const char* name;
  JobState from;
  JobState to;
};
constexpr Stage Interpretation{"interpret", JobState::Queued, JobState::Interpreting};
constexpr Stage Delivery{"deliver", JobState::Ready, JobState::Delivering};

// Of the jobs of the highest priority the oldest of the owner whose turn was longest ago. Owners
// are found by steps through the index, so that 100,000 jobs of one owner cost one step.
constexpr const char* NextToInterpret = R"(
WITH RECURSIVE
  highest(priority) AS (SELECT max(priority) FROM jobs WHERE state = 'queued'),
  owners(name) AS (
    SELECT min(owner) FROM jobs, highest
      WHERE state = 'queued' AND jobs.priority = highest.priority
    UNION ALL
    SELECT (SELECT min(owner) FROM jobs, highest
      WHERE state = 'queued' AND jobs.priority = highest.priority AND owner > owners.name)
    FROM owners WHERE owners.name IS NOT NULL)
SELECT (SELECT min(id) FROM jobs, highest
    WHERE state = 'queued' AND jobs.priority = highest.priority AND owner = owners.name) AS first
  FROM owners LEFT JOIN turns ON turns.stage = 'interpret' AND turns.owner = owners.name
  WHERE owners.name IS NOT NULL
  ORDER BY ifnull(turns.turn, 0), first LIMIT 1)";

// The same while a device has as many ready jobs as it may: its jobs are passed over, which the
// index knows nothing of.
constexpr const char* NextOfOtherDevices = R"(
SELECT id FROM jobs LEFT JOIN turns ON turns.stage = 'interpret' AND turns.owner = jobs.owner
  WHERE state = 'queued' AND device NOT IN (
    SELECT device FROM jobs WHERE state = 'ready' GROUP BY device HAVING count(*) >= ?)
  ORDER BY priority DESC, ifnull(turns.turn, 0), id LIMIT 1)";

// Few jobs wait for one device at a time.
constexpr const char* NextToDeliver = R"(
SELECT id FROM jobs LEFT JOIN turns ON turns.stage = 'deliver' AND turns.owner = jobs.owner
  WHERE device = ?1 AND state = 'ready'
    AND NOT EXISTS (SELECT 1 FROM jobs WHERE device = ?1 AND state = 'delivering')
  ORDER BY priority DESC, ifnull(turns.turn, 0), id LIMIT 1)";

Expected<JobId> FirstNumber(Query& query) {
  const JobId number = query.Next() ? query.Number(0) : 0;
  if (auto fine = query.End(); !fine) return fine.Error();
  return number;
}

// Whether a device has that many ready jobs.
Expected<bool> AnyDeviceHas(Database& database, int limit) {
  Query full = database.Prepare(
      "SELECT 1 FROM jobs WHERE state = 'ready' GROUP BY device HAVING count(*) >= ? LIMIT 1");
  const auto found = FirstNumber(full.Bind(std::int64_t{limit}));
  return found ? Expected<bool>(*found != 0) : Expected<bool>(found.Error());
}

Expected<void> Take(Database& rows, JobId id, const Stage& stage, const std::string& self) {
  auto taken = rows.Prepare(
                       "UPDATE jobs SET state = ?, claim = ?, percent = 0, sending = -1, "
                       "sent = -1, message = '', wish = '', attempts = attempts + 1, "
                       "started = CASE WHEN ? = 'deliver' AND started <> 0 THEN started "
                       "ELSE ? END WHERE id = ?")
                   .Bind(std::string_view(NameOf(stage.to)))
                   .Bind(self)
                   .Bind(std::string_view(stage.name))
                   .Bind(Now())
                   .Bind(id)
                   .Run();
  if (!taken) return taken;
  auto turned =
      rows.Prepare(
              "INSERT INTO turns (stage, owner, turn) "
              "SELECT ?1, owner, 1 + (SELECT ifnull(max(turn), 0) FROM turns) FROM jobs "
              "WHERE id = ?2 ON CONFLICT (stage, owner) DO UPDATE SET turn = excluded.turn")
          .Bind(std::string_view(stage.name))
          .Bind(id)
          .Run();
  if (!turned) return turned;
  return AddEvent(rows, id, "state", NameOf(stage.to));
}

// The number of the next job; 0 if there is none.
using FindNext = std::function<Expected<JobId>(Database&)>;

Expected<std::optional<Job>> ClaimBy(JobQueue::Parts& parts, Database& rows, const FindNext& find,
                                     const Stage& stage) {
  if (parts.self.empty()) return FailureOf("this process can't be told from others: no claim");
  {
    // Whoever finds nothing has waited for no writer.
    const auto lock = parts.views->Lock();
    const auto seen = find(*parts.views);
    if (!seen) return seen.Error();
    if (*seen == 0) return std::optional<Job>();
  }
  Change change(rows);
  if (auto begun = change.State(); !begun) return begun.Error();
  const auto next = find(rows);
  if (!next) return next.Error();
  const JobId id = *next;
  if (id == 0) return std::optional<Job>();
  if (auto taken = Take(rows, id, stage, parts.self); !taken) return taken.Error();
  std::optional<Job> job;
  {
    Query row = rows.Prepare(std::string("SELECT ") + JobColumns + " FROM jobs WHERE id = ?");
    if (row.Bind(id).Next()) job = JobOfRow(row);
    if (auto fine = row.End(); !fine) return fine.Error();
  }
  if (auto committed = change.Commit(); !committed) return committed.Error();
  parts.bell.Ring();
  return job;
}

struct DeadClaim {
  JobId id;
  std::string claim;
};

Expected<std::vector<DeadClaim>> DeadClaims(Database& rows) {
  Query claims = rows.Prepare(
      "SELECT id, claim FROM jobs WHERE state IN ('interpreting', 'delivering') ORDER BY id");
  std::vector<DeadClaim> dead;
  while (claims.Next()) {
    const auto owner = os::ParseIdentity(claims.Text(1));
    if (!owner || !os::MayBeAlive(*owner)) dead.push_back({claims.Number(0), claims.Text(1)});
  }
  if (auto fine = claims.End(); !fine) return fine.Error();
  return dead;
}

// State and message of a job whose worker has ended.
struct Recovered {
  JobState state;
  std::string message;
};

Recovered AfterDeath(const JobStanding& job, const QueuePolicy& policy, int failures) {
  const bool maySend = job.state == JobState::Delivering && job.sending >= 0 && job.sent != 0;
  if (maySend && !policy.againAfterCutOff.contains(job.device))
    return {JobState::Uncertain,
            "the delivery was cut off; " + (job.sent < 0
                                                ? "how many bytes went is not known"
                                                : "at least " + std::to_string(job.sent) + " of " +
                                                      std::to_string(job.sending) + " bytes went")};
  if (job.wish == "cancel") return {JobState::Canceled, ""};
  if (policy.quarantineAfter > 0 && failures >= policy.quarantineAfter)
    return {JobState::Quarantined,
            "its worker ended " + std::to_string(failures) + " times without a result"};
  if (job.wish == "hold") return {JobState::Held, ""};
  if (job.state == JobState::Delivering) return {JobState::Ready, ""};
  return {JobState::Queued, ""};
}

Expected<void> Recover(Database& rows, const DeadClaim& dead, const QueuePolicy& policy,
                       bool counts) {
  const auto job = StandingOf(rows, dead.id);
  if (!job) return job.Error();
  const int failures = job->failures + (counts ? 1 : 0);
  auto counted = rows.Prepare("UPDATE jobs SET failures = ? WHERE id = ?")
                     .Bind(std::int64_t{failures})
                     .Bind(dead.id)
                     .Run();
  if (!counted) return counted;
  const Recovered next = AfterDeath(*job, policy, failures);
  return SetState(rows, dead.id, next.state, next.message);
}

// Directories of submissions whose process has ended, and of rows that never came to be.
Expected<void> SweepJobs(Database& rows, const std::string& jobs) {
  auto reader = os::DirectoryReader::Open(AT_FDCWD, jobs.c_str(), false);
  if (!reader) return FailureAt(jobs, reader.Error());
  std::vector<os::DirectoryEntry> entries;
  do {
    if (auto read = reader->ReadPiece(entries); !read) return FailureAt(jobs, read.Error());
    for (const os::DirectoryEntry& entry : entries) {
      bool left = os::IsAbandonedTemporaryName(entry.name);
      if (entry.name.find_first_not_of("0123456789") == entry.name.npos && entry.name.size() < 19) {
        Query row = rows.Prepare("SELECT 1 FROM jobs WHERE id = ?");
        left = !row.Bind(std::int64_t{std::stoll(entry.name)}).Next() && row.End();
      }
      if (left) static_cast<void>(os::RemoveNativeTree(jobs + "/" + entry.name));
    }
  } while (!entries.empty());
  return {};
}

}  // namespace

Expected<std::optional<Job>> JobQueue::ClaimToInterpret() {
  const int limit = m_Parts->policy.readyJobs;
  const auto find = [limit](Database& database) -> Expected<JobId> {
    const auto isFull = limit > 0 ? AnyDeviceHas(database, limit) : Expected<bool>(false);
    if (!isFull) return isFull.Error();
    Query next = database.Prepare(*isFull ? NextOfOtherDevices : NextToInterpret);
    if (*isFull) next.Bind(std::int64_t{limit});
    return FirstNumber(next);
  };
  // A power cut may take this back: then the job waits again, as it does when its claim is found
  // dead. So the RIP starts without waiting for the disk.
  return ClaimBy(*m_Parts, *m_Parts->quick, find, Interpretation);
}

Expected<std::optional<Job>> JobQueue::ClaimToDeliver(const std::string& device) {
  const auto find = [&device](Database& database) {
    Query next = database.Prepare(NextToDeliver);
    return FirstNumber(next.Bind(device));
  };
  // What is sent must never be sent as new again.
  return ClaimBy(*m_Parts, *m_Parts->rows, find, Delivery);
}

Expected<std::vector<std::string>> JobQueue::DevicesToServe() {
  Database& views = *m_Parts->views;
  const auto lock = views.Lock();
  Query rows = views.Prepare(
      "SELECT DISTINCT device FROM jobs WHERE state = 'ready' AND device NOT IN "
      "(SELECT device FROM jobs WHERE state = 'delivering')");
  std::vector<std::string> devices;
  while (rows.Next()) devices.push_back(rows.Text(0));
  if (auto fine = rows.End(); !fine) return fine.Error();
  return devices;
}

Expected<int> JobQueue::RecoverClaims(bool atStart) {
  Database& rows = *m_Parts->rows;
  {
    const auto lock = rows.Lock();
    const auto dead = DeadClaims(rows);
    if (!dead) return dead.Error();
    if (dead->empty() && !atStart) return 0;
  }
  Change change(rows);
  if (auto begun = change.State(); !begun) return begun.Error();
  const auto dead = DeadClaims(rows);
  if (!dead) return dead.Error();
  for (const DeadClaim& one : *dead)
    if (auto done = Recover(rows, one, m_Parts->policy, !atStart); !done) return done.Error();
  if (atStart)
    if (auto swept = SweepJobs(rows, m_Parts->directory + "/jobs"); !swept) return swept.Error();
  if (auto committed = change.Commit(); !committed) return committed.Error();
  if (!dead->empty()) m_Parts->bell.Ring();
  return static_cast<int>(dead->size());
}

}  // namespace rastrel::server
