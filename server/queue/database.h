#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

struct sqlite3;
struct sqlite3_stmt;

/// SQLite by the calls that the queue needs. Every failure has the database's path as its `where`
/// and SQLite's reason as its `why`.
namespace rastrel::server {

class Database;

/// A prepared statement in use: its parameters are bound in their order, then rows are read. It
/// returns to its database at its end. On one thread.
///
///     Query rows = database.Prepare("SELECT title FROM jobs WHERE owner = ?");
///     rows.Bind(owner);
///     while (rows.Next()) titles.push_back(rows.Text(0));
///     if (auto fine = rows.End(); !fine) return fine.Error();
class Query {
 public:
  ~Query();
  Query(Query&& other) noexcept;
  Query& operator=(Query&&) = delete;
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  Query& Bind(std::int64_t value);
  Query& Bind(std::string_view text);

  /// Goes to the next row. False after the last one, and after a failure.
  [[nodiscard]] bool Next();
  /// Whether all went well so far.
  [[nodiscard]] Expected<void> End() const { return m_State; }
  /// Runs a statement that has no rows, or whose rows don't count.
  [[nodiscard]] Expected<void> Run();

  /// Columns of the present row, from 0.
  [[nodiscard]] std::int64_t Number(int column) const;
  [[nodiscard]] std::string Text(int column) const;

 private:
  friend class Database;
  Query(Database* database, sqlite3_stmt* statement, Expected<void> state);

  Database* m_Database;
  sqlite3_stmt* m_Statement;
  int m_Bound = 0;
  Expected<void> m_State;
};

/// One connection. Not for two threads at once: see Lock.
class Database {
 public:
  enum class Safety {
    Full,    ///< a commit has reached the disk
    Normal,  ///< a commit may be lost by a power cut, and nothing before it
  };

  /// Opens the database, and makes it if it is not there. Waits up to 30 s for another writer.
  [[nodiscard]] static Expected<std::unique_ptr<Database>> Open(const std::string& path,
                                                                Safety safety);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// Held by whoever uses the connection.
  [[nodiscard]] std::unique_lock<std::recursive_mutex> Lock() { return std::unique_lock(m_Mutex); }
  /// A statement; kept for the next time. A fault of it shows in its End.
  [[nodiscard]] Query Prepare(const std::string& text);
  /// Runs statements without parameters.
  [[nodiscard]] Expected<void> Execute(const std::string& text);
  /// Rows that the last statement changed.
  [[nodiscard]] int Changes() const;
  [[nodiscard]] std::int64_t LastRow() const;
  /// The failure of the last call.
  [[nodiscard]] Failure LastFailure(const std::string& what) const;

 private:
  friend class Query;
  Database(sqlite3* handle, std::string path) : m_Handle(handle), m_Path(std::move(path)) {}

  sqlite3* m_Handle;
  std::string m_Path;
  std::recursive_mutex m_Mutex;
  std::map<std::string, sqlite3_stmt*> m_Idle;
};

/// A change that is made whole or not at all. It waits for the one writer that there may be, and is
/// taken back at its end without Commit. Holds the connection's lock.
class Change {
 public:
  explicit Change(Database& database);
  ~Change();
  Change(const Change&) = delete;
  Change& operator=(const Change&) = delete;

  /// Whether it could begin.
  [[nodiscard]] Expected<void> State() const { return m_State; }
  [[nodiscard]] Expected<void> Commit();

 private:
  Database& m_Database;
  std::unique_lock<std::recursive_mutex> m_Lock;
  Expected<void> m_State;
  bool m_Open = false;
};

}  // namespace rastrel::server
