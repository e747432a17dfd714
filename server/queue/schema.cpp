#include "server/queue/schema.h"

#include <array>
#include <cstddef>
#include <string>

#include "server/queue/database.h"

namespace rastrel::server {
namespace {

// Each step leads from the version of its place to the next. A step that was once released is never
// changed. The indexes end in the id, so that a page of a sorted list is read in order.
constexpr std::array<const char*, QueueVersion> Steps{
    R"(
CREATE TABLE jobs (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  title TEXT NOT NULL,
  owner TEXT NOT NULL,
  source TEXT NOT NULL,
  device TEXT NOT NULL,
  work TEXT NOT NULL,
  options TEXT NOT NULL,
  priority INTEGER NOT NULL,
  state TEXT NOT NULL,
  file TEXT NOT NULL,
  bytes INTEGER NOT NULL,
  submitted INTEGER NOT NULL,
  started INTEGER NOT NULL DEFAULT 0,
  ended INTEGER NOT NULL DEFAULT 0,
  attempts INTEGER NOT NULL DEFAULT 0,
  failures INTEGER NOT NULL DEFAULT 0,
  percent INTEGER NOT NULL DEFAULT 0,
  pages INTEGER NOT NULL DEFAULT 0,
  ink TEXT NOT NULL DEFAULT '',
  spool TEXT NOT NULL DEFAULT '',
  sending INTEGER NOT NULL DEFAULT -1,
  sent INTEGER NOT NULL DEFAULT -1,
  result INTEGER NOT NULL DEFAULT 0,
  message TEXT NOT NULL DEFAULT '',
  key TEXT UNIQUE,
  claim TEXT NOT NULL DEFAULT '',
  wish TEXT NOT NULL DEFAULT ''
) STRICT;
CREATE INDEX jobs_turn ON jobs (state, priority, owner, id);
CREATE INDEX jobs_device ON jobs (device, state, id);
CREATE INDEX jobs_owner ON jobs (owner, id);
CREATE INDEX jobs_submitted ON jobs (submitted, id);
CREATE INDEX jobs_ended ON jobs (ended, id);
CREATE INDEX jobs_title ON jobs (title, id);
CREATE INDEX jobs_priority ON jobs (priority, id);
CREATE INDEX jobs_pages ON jobs (pages, id);
CREATE INDEX jobs_spool ON jobs (spool) WHERE spool <> '';
CREATE TABLE events (
  number INTEGER PRIMARY KEY AUTOINCREMENT,
  job INTEGER NOT NULL REFERENCES jobs (id) ON DELETE CASCADE,
  time INTEGER NOT NULL,
  kind TEXT NOT NULL,
  text TEXT NOT NULL
) STRICT;
CREATE INDEX events_job ON events (job, number);
CREATE TABLE turns (
  stage TEXT NOT NULL,
  owner TEXT NOT NULL,
  turn INTEGER NOT NULL,
  PRIMARY KEY (stage, owner)
) STRICT, WITHOUT ROWID;
)",
};

Expected<int> VersionOf(Database& database) {
  Query query = database.Prepare("PRAGMA user_version");
  const int version = query.Next() ? static_cast<int>(query.Number(0)) : 0;
  if (auto fine = query.End(); !fine) return fine.Error();
  return version;
}

}  // namespace

Expected<void> BringUpToDate(Database& database) {
  // Most times nothing is to be done, and then no other writer is waited for.
  const auto before = VersionOf(database);
  if (!before) return before.Error();
  if (*before == QueueVersion) return {};
  Change change(database);
  if (auto begun = change.State(); !begun) return begun;
  const auto version = VersionOf(database);
  if (!version) return version.Error();
  if (*version > QueueVersion)
    return FailureOf("the queue is of version " + std::to_string(*version) +
                     ", which a newer rastrel made; this one knows up to " +
                     std::to_string(QueueVersion));
  for (auto step = static_cast<std::size_t>(*version); step < Steps.size(); ++step)
    if (auto done = database.Execute(Steps.at(step)); !done) return done;
  if (auto done = database.Execute("PRAGMA user_version = " + std::to_string(QueueVersion)); !done)
    return done;
  return change.Commit();
}

}  // namespace rastrel::server
