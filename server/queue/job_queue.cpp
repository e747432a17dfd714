#include "server/queue/job_queue.h"

#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/platform/os/trusted_file.h"
#include "server/queue/job_queue_parts.h"
#include "server/queue/schema.h"

namespace rastrel::server {
namespace {

Expected<void> MakeDirectories(const std::string& dataRoot) {
  const std::string directory = dataRoot + "/server";
  if (auto made = os::MakePath(os::FromNative(directory + "/jobs"), os::Access::Private); !made)
    return made;
  // A directory that somebody else may change could hold any database.
  return os::CheckTrusted(directory + "/jobs", directory);
}

std::string OwnIdentity() {
  const auto identity = os::IdentityOfProcess(os::CurrentProcessId());
  return identity ? os::FormatIdentity(*identity) : std::string();
}

// The text that LIKE looks for, with its signs as they are.
std::string PatternOf(const std::string& text) {
  std::string pattern = "%";
  for (const char character : text) {
    if (character == '%' || character == '_' || character == '\\') pattern += '\\';
    pattern += character;
  }
  return pattern + "%";
}

/// A filter as the WHERE of a query, and the values for its marks.
class FilterClause {
 public:
  explicit FilterClause(const JobFilter& filter) : m_Filter(filter) {
    for (const JobState state : filter.states)
      m_States += std::string(m_States.empty() ? "" : ", ") + "'" + NameOf(state) + "'";
    if (!m_States.empty()) Add("state IN (" + m_States + ")");
    if (!filter.owner.empty()) Add("owner = ?");
    if (!filter.device.empty()) Add("device = ?");
    if (!filter.text.empty()) Add("title LIKE ? ESCAPE '\\'");
    if (filter.from != 0) Add("submitted >= ?");
    if (filter.until != 0) Add("submitted < ?");
  }

  [[nodiscard]] const std::string& Text() const { return m_Text; }
  void BindTo(Query& query) const {
    if (!m_Filter.owner.empty()) query.Bind(m_Filter.owner);
    if (!m_Filter.device.empty()) query.Bind(m_Filter.device);
    if (!m_Filter.text.empty()) query.Bind(PatternOf(m_Filter.text));
    if (m_Filter.from != 0) query.Bind(m_Filter.from);
    if (m_Filter.until != 0) query.Bind(m_Filter.until);
  }

 private:
  void Add(const std::string& condition) {
    m_Text += (m_Text.empty() ? " WHERE " : " AND ") + condition;
  }

  const JobFilter& m_Filter;
  std::string m_States;
  std::string m_Text;
};

Expected<std::string> OrderOf(const JobFilter& filter) {
  static constexpr std::array<std::string_view, 9> Columns{
      "id", "submitted", "ended", "title", "owner", "device", "state", "priority", "pages"};
  const std::string direction = filter.descending ? " DESC" : " ASC";
  for (const std::string_view column : Columns)
    if (column == filter.orderBy)
      return " ORDER BY " + std::string(column) + direction +
             (column == "id" ? std::string() : ", id" + direction);
  return FailureOf("jobs can't be sorted by '" + filter.orderBy + "'", FailureCode::BadInput);
}

}  // namespace

JobQueue::JobQueue(std::unique_ptr<Parts> parts) : m_Parts(std::move(parts)) {}
JobQueue::~JobQueue() = default;

Expected<std::unique_ptr<JobQueue>> JobQueue::Open(const std::string& dataRoot,
                                                   QueuePolicy policy) {
  if (auto made = MakeDirectories(dataRoot); !made) return made.Error();
  const std::string directory = dataRoot + "/server";
  const std::string path = directory + "/queue.db";
  auto rows = Database::Open(path, Database::Safety::Full);
  if (!rows) return rows.Error();
  if (auto current = BringUpToDate(**rows); !current) return current.Error();
  auto quick = Database::Open(path, Database::Safety::Normal);
  if (!quick) return quick.Error();
  auto views = Database::Open(path, Database::Safety::Normal);
  if (!views) return views.Error();
  auto bell = server::Bell::Open(directory + "/bell");
  if (!bell) return bell.Error();
  // The database's own name, and those of its log, are to outlive a power cut.
  if (auto flushed = os::FlushNamesIn(directory); !flushed) return flushed.Error();
  std::unique_ptr<Parts> parts(new Parts{directory, std::move(policy), *std::move(rows),
                                         *std::move(quick), *std::move(views), *std::move(bell),
                                         OwnIdentity()});
  return std::unique_ptr<JobQueue>(new JobQueue(std::move(parts)));
}

Expected<std::optional<Job>> JobQueue::Find(JobId id, const std::string& owner) {
  Database& views = *m_Parts->views;
  const auto lock = views.Lock();
  Query row = views.Prepare(std::string("SELECT ") + JobColumns + " FROM jobs WHERE id = ?" +
                            (owner.empty() ? "" : " AND owner = ?"));
  row.Bind(id);
  if (!owner.empty()) row.Bind(owner);
  if (row.Next()) return std::optional(JobOfRow(row));
  if (auto fine = row.End(); !fine) return fine.Error();
  return std::optional<Job>();
}

Expected<std::vector<Job>> JobQueue::List(const JobFilter& filter) {
  const FilterClause clause(filter);
  const auto order = OrderOf(filter);
  if (!order) return order.Error();
  Database& views = *m_Parts->views;
  const auto lock = views.Lock();
  Query rows = views.Prepare(std::string("SELECT ") + JobColumns + " FROM jobs" + clause.Text() +
                             *order + " LIMIT ? OFFSET ?");
  clause.BindTo(rows);
  rows.Bind(std::int64_t{filter.limit}).Bind(std::int64_t{filter.offset});
  std::vector<Job> jobs;
  while (rows.Next()) jobs.push_back(JobOfRow(rows));
  if (auto fine = rows.End(); !fine) return fine.Error();
  return jobs;
}

Expected<std::int64_t> JobQueue::Count(const JobFilter& filter) {
  const FilterClause clause(filter);
  Database& views = *m_Parts->views;
  const auto lock = views.Lock();
  Query rows = views.Prepare("SELECT count(*) FROM jobs" + clause.Text());
  clause.BindTo(rows);
  const std::int64_t count = rows.Next() ? rows.Number(0) : 0;
  if (auto fine = rows.End(); !fine) return fine.Error();
  return count;
}

Expected<std::int64_t> JobQueue::EndedBytes() {
  Database& views = *m_Parts->views;
  const auto lock = views.Lock();
  Query sum =
      views.Prepare("SELECT total(bytes) FROM jobs WHERE state IN ('done', 'failed', 'canceled')");
  const std::int64_t bytes = sum.Next() ? sum.Number(0) : 0;
  if (auto fine = sum.End(); !fine) return fine.Error();
  return bytes;
}

Expected<std::vector<JobEvent>> JobQueue::Events(std::int64_t after, JobId job, int limit,
                                                 const std::string& owner) {
  Database& views = *m_Parts->views;
  const auto lock = views.Lock();
  Query rows =
      views.Prepare(std::string("SELECT number, job, time, kind, text FROM events WHERE ") +
                    (job == 0 ? "" : "job = ? AND ") +
                    (owner.empty() ? "" : "job IN (SELECT id FROM jobs WHERE owner = ?) AND ") +
                    "number > ? ORDER BY number LIMIT ?");
  if (job != 0) rows.Bind(job);
  if (!owner.empty()) rows.Bind(owner);
  rows.Bind(after).Bind(std::int64_t{limit});
  std::vector<JobEvent> events;
  while (rows.Next())
    events.push_back({rows.Number(0), rows.Number(1), rows.Number(2), rows.Text(3), rows.Text(4)});
  if (auto fine = rows.End(); !fine) return fine.Error();
  return events;
}

Expected<std::int64_t> JobQueue::LastEvent() {
  Database& views = *m_Parts->views;
  const auto lock = views.Lock();
  Query last = views.Prepare("SELECT coalesce(max(number), 0) FROM events");
  const std::int64_t number = last.Next() ? last.Number(0) : 0;
  if (auto fine = last.End(); !fine) return fine.Error();
  return number;
}

Expected<std::string> JobQueue::Mark(const std::string& owner) {
  Database& views = *m_Parts->views;
  const auto lock = views.Lock();
  Query sums = views.Prepare(
      std::string("SELECT count(*) || ' ' || coalesce(sum(id), 0) || ' ' || coalesce(sum(id % "
                  "1000003 * priority), 0) FROM jobs") +
      (owner.empty() ? "" : " WHERE owner = ?"));
  if (!owner.empty()) sums.Bind(owner);
  const std::string mark = sums.Next() ? sums.Text(0) : std::string();
  if (auto fine = sums.End(); !fine) return fine.Error();
  return mark;
}

int JobQueue::Bell() const { return m_Parts->bell.Descriptor(); }

void JobQueue::RestBell() const { m_Parts->bell.Rest(); }

std::string JobQueue::DirectoryOf(JobId id) const {
  return m_Parts->directory + "/jobs/" + std::to_string(id);
}

}  // namespace rastrel::server
