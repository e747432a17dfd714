#include "server/queue/database.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

namespace rastrel::server {
namespace {

constexpr auto BusyPause = std::chrono::milliseconds(3);
constexpr int BusyTries = 10000;  // half a minute at least

// SQLite's own waiting sleeps the longer the more often it was in vain, so that whoever came last
// is served first: with fifty clients some had to wait for most of the limit. Here all have the
// same chance each time.
int WaitForTurn(void*, int tries) {
  if (tries >= BusyTries) return 0;
  std::this_thread::sleep_for(BusyPause);
  return 1;
}

std::string ReasonOf(sqlite3* handle, int code) {
  switch (code & 0xff) {
    case SQLITE_FULL: return "the disk is full, or the file may not grow";
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT: return "the queue's database is damaged";
    case SQLITE_READONLY: return "the queue's database can't be written";
    case SQLITE_BUSY: return "another process keeps the queue's database locked";
    default: return handle ? sqlite3_errmsg(handle) : sqlite3_errstr(code);
  }
}

Failure FailureIn(sqlite3* handle, const std::string& path, const std::string& what) {
  Failure failure{what, path, 0};
  failure.why = ReasonOf(handle, handle ? sqlite3_extended_errcode(handle) : SQLITE_NOMEM);
  return failure;
}

}  // namespace

Query::Query(Database* database, sqlite3_stmt* statement, Expected<void> state)
    : m_Database(database), m_Statement(statement), m_State(std::move(state)) {}

Query::Query(Query&& other) noexcept
    : m_Database(other.m_Database),
      m_Statement(std::exchange(other.m_Statement, nullptr)),
      m_Bound(other.m_Bound),
      m_State(std::move(other.m_State)) {}

Query::~Query() {
  if (!m_Statement) return;
  sqlite3_reset(m_Statement);
  sqlite3_clear_bindings(m_Statement);
  // The same text may be in use twice at once; one of them is enough for the next time.
  const auto [kept, isNew] = m_Database->m_Idle.emplace(sqlite3_sql(m_Statement), m_Statement);
  if (!isNew) sqlite3_finalize(m_Statement);
}

Query& Query::Bind(std::int64_t value) {
  if (m_State && sqlite3_bind_int64(m_Statement, ++m_Bound, value) != SQLITE_OK)
    m_State = m_Database->LastFailure("bind");
  return *this;
}

Query& Query::Bind(std::string_view text) {
  // An empty view may have no address, which would bind NULL.
  const char* begin = text.empty() ? "" : text.data();
  if (m_State && sqlite3_bind_text64(m_Statement, ++m_Bound, begin, text.size(), SQLITE_TRANSIENT,
                                     SQLITE_UTF8) != SQLITE_OK)
    m_State = m_Database->LastFailure("bind");
  return *this;
}

bool Query::Next() {
  if (!m_State) return false;
  const int code = sqlite3_step(m_Statement);
  if (code == SQLITE_ROW) return true;
  if (code != SQLITE_DONE) m_State = m_Database->LastFailure("use");
  return false;
}

Expected<void> Query::Run() {
  while (Next()) {
  }
  return m_State;
}

std::int64_t Query::Number(int column) const { return sqlite3_column_int64(m_Statement, column); }

std::string Query::Text(int column) const {
  const void* text = sqlite3_column_text(m_Statement, column);
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_Statement, column));
  return text ? std::string(static_cast<const char*>(text), size) : std::string();
}

Expected<std::unique_ptr<Database>> Database::Open(const std::string& path, Safety safety) {
  sqlite3* handle = nullptr;
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
  const int code = sqlite3_open_v2(path.c_str(), &handle, flags, nullptr);
  std::unique_ptr<Database> database(new Database(handle, path));
  if (code != SQLITE_OK) return FailureIn(handle, path, "open");
  // Before the first write: the log and its index take the file's mode. By its name, since closing
  // another descriptor of the file would drop the locks that SQLite has on it.
  if (::chmod(path.c_str(), S_IRUSR | S_IWUSR) != 0) return Failure{"chmod", path, errno};
  sqlite3_extended_result_codes(handle, 1);
  sqlite3_busy_handler(handle, WaitForTurn, nullptr);
  // The file is data: no function of it runs, and its schema is not trusted.
  sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  const std::string synchronous = safety == Safety::Full ? "FULL" : "NORMAL";
  const std::string settings = "PRAGMA journal_mode = WAL; PRAGMA synchronous = " + synchronous +
                               "; PRAGMA foreign_keys = ON;";
  // Where others make or close the same file, the change to the write-ahead log fails at once
  // without asking the handler whether to wait.
  for (int tries = 0;; ++tries) {
    const auto done = database->Execute(settings);
    if (done) return database;
    const bool isBusy = (sqlite3_extended_errcode(handle) & 0xff) == SQLITE_BUSY;
    if (!isBusy || WaitForTurn(nullptr, tries) == 0) return done.Error();
  }
}

Database::~Database() {
  for (const auto& [text, statement] : m_Idle) sqlite3_finalize(statement);
  sqlite3_close(m_Handle);
}

Query Database::Prepare(const std::string& text) {
  if (const auto found = m_Idle.find(text); found != m_Idle.end()) {
    sqlite3_stmt* statement = found->second;
    m_Idle.erase(found);
    return {this, statement, {}};
  }
  sqlite3_stmt* statement = nullptr;
  const int size = static_cast<int>(text.size()) + 1;
  if (sqlite3_prepare_v3(m_Handle, text.c_str(), size, SQLITE_PREPARE_PERSISTENT, &statement,
                         nullptr) != SQLITE_OK)
    return {this, nullptr, LastFailure("use")};
  return {this, statement, {}};
}

Expected<void> Database::Execute(const std::string& text) {
  if (sqlite3_exec(m_Handle, text.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
    return LastFailure("use");
  return {};
}

int Database::Changes() const { return sqlite3_changes(m_Handle); }

std::int64_t Database::LastRow() const { return sqlite3_last_insert_rowid(m_Handle); }

Failure Database::LastFailure(const std::string& what) const {
  return FailureIn(m_Handle, m_Path, what);
}

Change::Change(Database& database) : m_Database(database), m_Lock(database.Lock()) {
  m_State = database.Execute("BEGIN IMMEDIATE");
  m_Open = static_cast<bool>(m_State);
}

Change::~Change() {
  if (m_Open) static_cast<void>(m_Database.Execute("ROLLBACK"));
}

Expected<void> Change::Commit() {
  auto done = m_Database.Execute("COMMIT");
  if (done) m_Open = false;
  return done;
}

}  // namespace rastrel::server
