#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>

#include "rastrel/platform/os/directory_entries.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_content.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"
#include "server/queue/job_queue_parts.h"

namespace rastrel::server {
namespace {

constexpr std::size_t MaximumName = 1024;
constexpr std::size_t MaximumExtension = 8;

std::string NameIn(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// The file's name in the queue. Commands and programs get it, so it has nothing of the foreign name
// but a plain extension.
std::string QueuedName(const std::string& path) {
  const std::string name = NameIn(path);
  const std::size_t dot = name.rfind('.');
  if (dot == name.npos || dot == 0 || name.size() - dot - 1 > MaximumExtension) return "job";
  const std::string extension = name.substr(dot + 1);
  const auto isPlain = [](char one) {
    return (one >= 'a' && one <= 'z') || (one >= 'A' && one <= 'Z') || (one >= '0' && one <= '9');
  };
  return std::ranges::all_of(extension, isPlain) ? "job." + extension : "job";
}

Expected<void> CheckRequest(const JobRequest& request) {
  const auto refuse = [](std::string why) {
    return FailureOf(std::move(why), FailureCode::BadInput);
  };
  if (request.device.empty()) return refuse("the job names no device");
  if (request.priority < 1 || request.priority > 100)
    return refuse("priority " + std::to_string(request.priority) + " is not from 1 to 100");
  for (const std::string* text :
       {&request.title, &request.owner, &request.source, &request.device, &request.key})
    if (text->size() > MaximumName)
      return refuse("a name of the job is longer than " + std::to_string(MaximumName) + " bytes");
  return {};
}

// A hidden directory beside the jobs', which goes unless it is kept.
class Incoming {
 public:
  explicit Incoming(const std::string& jobs) : m_Path(jobs + "/" + os::OwnTemporaryName()) {}
  ~Incoming() {
    if (!m_Kept) static_cast<void>(os::RemoveNativeTree(m_Path));
  }
  Incoming(const Incoming&) = delete;
  Incoming& operator=(const Incoming&) = delete;

  [[nodiscard]] const std::string& Path() const { return m_Path; }
  [[nodiscard]] Expected<void> Make() {
    return os::MakeDirectory(os::FromNative(m_Path), os::Access::Private);
  }
  void Keep() { m_Kept = true; }

 private:
  std::string m_Path;
  bool m_Kept = false;
};

Expected<void> CheckSize(const std::string& path, std::int64_t bytes, std::int64_t limit) {
  if (limit == 0 || bytes <= limit) return {};
  return FailureOf("'" + path + "' has " + std::to_string(bytes) +
                       " bytes, and a job of this server may have " + std::to_string(limit),
                   FailureCode::BadInput);
}

// Copies the file and has it written to the disk. Returns its size.
Expected<std::int64_t> CopyToDisk(const std::string& path, const std::string& copy,
                                  std::int64_t limit) {
  const auto source = os::OpenRegularFile(os::FromNative(path));
  if (!source) return FailureAt(path, source.Error());
  struct stat state {};
  if (::fstat(source->Get(), &state) != 0) return Failure{"fstat", path, errno};
  if (auto fits = CheckSize(path, state.st_size, limit); !fits) return fits.Error();
  const auto target = os::CreateForWriting(os::FromNative(copy), os::Access::Private);
  if (!target) return target.Error();
  os::PrepareCopy(target->Get(), source->Get(), 0);
  if (::fchmod(target->Get(), 0600) != 0) return Failure{"chmod", copy, errno};
  if (auto copied = os::AppendContent(target->Get(), source->Get()); !copied)
    return FailureAt(copied.Error().what == "read" ? path : copy, copied.Error());
  const off_t bytes = ::lseek(target->Get(), 0, SEEK_CUR);
  // It may have grown meanwhile.
  if (auto fits = CheckSize(path, bytes, limit); !fits) return fits.Error();
  if (::fsync(target->Get()) != 0) return Failure{"fsync", copy, errno};
  return std::int64_t{bytes};
}

Expected<JobId> JobOfKey(Database& rows, const std::string& key) {
  if (key.empty()) return JobId{0};
  Query found = rows.Prepare("SELECT id FROM jobs WHERE key = ?");
  const JobId id = found.Bind(key).Next() ? found.Number(0) : 0;
  if (auto fine = found.End(); !fine) return fine.Error();
  return id;
}

Expected<JobId> InsertRow(Database& rows, const JobRequest& request, std::int64_t bytes) {
  const std::string title = request.title.empty() ? NameIn(request.path) : request.title;
  const JobState state = request.hold ? JobState::Held : JobState::Queued;
  auto done = rows.Prepare(
                      "INSERT INTO jobs (title, owner, source, device, work, options, priority, "
                      "state, file, bytes, submitted, key) "
                      "VALUES (?, ?, ?, ?, ?, ?, ?, ?, '', ?, ?, nullif(?, ''))")
                  .Bind(title)
                  .Bind(request.owner)
                  .Bind(request.source)
                  .Bind(request.device)
                  .Bind(std::string_view(NameOf(request.work)))
                  .Bind(TextOfOptions(request.options))
                  .Bind(std::int64_t{request.priority})
                  .Bind(std::string_view(NameOf(state)))
                  .Bind(bytes)
                  .Bind(Now())
                  .Bind(request.key)
                  .Run();
  if (!done) return done.Error();
  const JobId id = rows.LastRow();
  if (auto told = AddEvent(rows, id, "state", NameOf(state)); !told) return told.Error();
  return id;
}

// Gives the finished directory its place. One that is there belongs to no row: the row of this
// number is being made.
Expected<void> NameDirectory(const std::string& hidden, const std::string& place) {
  if (os::Exists(os::FromNative(place)))
    if (auto removed = os::RemoveNativeTree(place); !removed) return removed;
  if (::rename(hidden.c_str(), place.c_str()) != 0) return Failure{"rename", place, errno};
  return os::FlushNamesIn(place.substr(0, place.rfind('/')));
}

}  // namespace

Expected<JobId> JobQueue::Submit(const JobRequest& request) {
  if (auto fine = CheckRequest(request); !fine) return fine.Error();
  Database& rows = *m_Parts->rows;
  {
    const auto lock = rows.Lock();
    const auto known = JobOfKey(rows, request.key);
    if (!known || *known != 0) return known;
  }
  // The copy is made before the one writer is taken, so that a large file holds nobody up.
  Incoming incoming(m_Parts->directory + "/jobs");
  if (auto made = incoming.Make(); !made) return made.Error();
  const std::string name = QueuedName(request.path);
  const auto bytes =
      CopyToDisk(request.path, incoming.Path() + "/" + name, m_Parts->policy.jobBytes);
  if (!bytes) return bytes.Error();
  if (auto flushed = os::FlushNamesIn(incoming.Path()); !flushed) return flushed.Error();

  Change change(rows);
  if (auto begun = change.State(); !begun) return begun.Error();
  const auto known = JobOfKey(rows, request.key);
  if (!known || *known != 0) return known;
  const auto id = InsertRow(rows, request, *bytes);
  if (!id) return id;
  const std::string place = DirectoryOf(*id);
  if (auto named = NameDirectory(incoming.Path(), place); !named) return named.Error();
  // Without a row the directory goes at the next start of a server, or with the next job's.
  incoming.Keep();
  auto filed = rows.Prepare("UPDATE jobs SET file = ? WHERE id = ?")
                   .Bind(place + "/" + name)
                   .Bind(*id)
                   .Run();
  if (!filed) return filed.Error();
  if (auto committed = change.Commit(); !committed) return committed.Error();
  m_Parts->bell.Ring();
  return id;
}

}  // namespace rastrel::server
