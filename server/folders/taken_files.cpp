#include "server/folders/taken_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "rastrel/platform/os/directory_entries.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/random_digits.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/tree.h"
#include "server/folders/file_owner.h"

namespace rastrel::server {
namespace {

constexpr std::size_t MaximumName = 255;
constexpr std::size_t RoomForReport = 20;
constexpr unsigned MaximumNumber = 100000;
constexpr std::size_t MaximumNote = 4096;

Expected<void> WriteNew(const std::string& path, std::string_view text) {
  auto file = os::OutputFile::Create(path, os::Existing::Refused);
  if (!file) return file.Error();
  if (auto written = file->Write(text); !written) return written;
  return file->Commit();
}

/// A small file's text; empty if it is not there.
Expected<std::string> ReadNote(const std::string& path) {
  auto text = os::ReadWholeFile(os::FromNative(path), MaximumNote);
  if (!text && text.Error().error == ENOENT) return std::string();
  return text;
}

bool Exists(const std::string& path) {
  struct stat state {};
  return ::lstat(path.c_str(), &state) == 0 || errno != ENOENT;
}

/// A directory that is no link, made if it is missing.
Expected<void> MakeOwn(const std::string& path, mode_t mode) {
  if (::mkdir(path.c_str(), mode) != 0 && errno != EEXIST) return Failure{"mkdir", path, errno};
  struct stat state {};
  if (::lstat(path.c_str(), &state) != 0) return Failure{"open", path, errno};
  if (!S_ISDIR(state.st_mode)) return Failure{"open", path, ENOTDIR};
  return {};
}

std::string CandidateName(const std::string& name, JobId id, unsigned number) {
  const bool isLong = name.size() + RoomForReport > MaximumName;
  const std::string first = isLong ? "job-" + std::to_string(id) : name;
  return number == 1 ? first : os::NumberedPath(first, number);
}

/// A name of which neither file nor reports are there.
Expected<std::string> FreeName(const std::string& directory, const std::string& name, JobId id) {
  for (unsigned number = 1; number <= MaximumNumber; ++number) {
    std::string candidate = CandidateName(name, id, number);
    const std::string path = directory + "/" + candidate;
    if (!Exists(path) && !Exists(path + ".report.json") && !Exists(path + ".report.txt")) {
      return candidate;
    }
  }
  return FailureOf("'" + directory + "' has too many files of this name");
}

std::string JsonReport(const Job& job, const std::string& name) {
  nlohmann::json report{{"format", "rastrel-folder-report"},
                        {"version", 1},
                        {"job", job.id},
                        {"file", name},
                        {"device", job.device},
                        {"owner", job.owner},
                        {"state", NameOf(job.state)},
                        {"message", job.message},
                        {"pages", job.pages},
                        {"attempts", job.attempts},
                        {"submitted", job.submitted},
                        {"started", job.started},
                        {"ended", job.ended}};
  return report.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::string TextReport(const Job& job, const std::string& name) {
  std::string text = os::CleanLine(name) + ": " + NameOf(job.state) + "\n";
  if (!job.message.empty()) text += os::CleanLine(job.message) + "\n";
  if (job.id > 0) text += "Job " + std::to_string(job.id) + "\n";
  text += "Device " + os::CleanLine(job.device) + "\nPages " + std::to_string(job.pages) + "\n";
  return text;
}

Expected<void> WriteReports(const std::string& target, const Job& job) {
  const std::string name = target.substr(target.rfind('/') + 1);
  for (const auto& [ending, text] : {std::pair{".report.json", JsonReport(job, name)},
                                     std::pair{".report.txt", TextReport(job, name)}}) {
    auto written = WriteNew(target + ending, text);
    // It is there already if this is done again after a kill.
    if (!written && written.Error().error != EEXIST) return written;
  }
  return {};
}

/// The names in a directory; none if it is not there.
Expected<std::vector<std::string>> NamesIn(const std::string& directory) {
  std::vector<std::string> names;
  auto reader = os::DirectoryReader::Open(AT_FDCWD, directory.c_str(), false);
  if (!reader && reader.Error().error == ENOENT) return names;
  if (!reader) return FailureAt(directory, reader.Error());
  std::vector<os::DirectoryEntry> entries;
  for (;;) {
    entries.clear();
    if (auto read = reader->ReadPiece(entries); !read) return FailureAt(directory, read.Error());
    if (entries.empty()) return names;
    for (os::DirectoryEntry& entry : entries) names.push_back(std::move(entry.name));
  }
}

/// A job that the queue never took, or has no more.
Job EndedJob(JobId id, const FolderSettings* settings, std::string message) {
  Job job;
  job.id = id;
  job.device = settings ? settings->device : "";
  job.state = JobState::Failed;
  job.message = std::move(message);
  return job;
}

}  // namespace

TakenFiles::TakenFiles(std::string folder, JobQueue& queue,
                       std::function<void(const std::string&)> onMessage)
    : m_Folder(std::move(folder)), m_Queue(queue), m_OnMessage(std::move(onMessage)) {}

Expected<bool> TakenFiles::Take(const std::string& name) {
  const auto key = os::RandomDigits(8);
  if (!key) return key.Error();
  const std::string all = m_Folder + "/.rastrel-taken";
  if (auto made = MakeOwn(all, 0700); !made) return made.Error();
  const std::string directory = all + "/" + *key;
  if (::mkdir(directory.c_str(), 0700) != 0) return Failure{"mkdir", directory, errno};
  const std::string source = m_Folder + "/" + name;
  if (::rename(source.c_str(), (directory + "/" + name).c_str()) != 0) {
    const int error = errno;
    static_cast<void>(os::RemoveNativeTree(directory));
    if (error == ENOENT) return false;
    return Failure{"rename", source, error};
  }
  if (auto flushed = os::FlushNamesIn(directory); !flushed) return flushed.Error();
  return true;
}

Expected<int> TakenFiles::GoOn(const FolderSettings* settings) {
  const std::string all = m_Folder + "/.rastrel-taken";
  const auto keys = NamesIn(all);
  if (!keys) return keys.Error();
  int left = 0;
  for (const std::string& key : *keys) {
    Taken taken{.key = key, .directory = all + "/" + key, .name = {}};
    const auto names = NamesIn(taken.directory);
    if (!names) {
      m_OnMessage(Describe(names.Error()));
      ++left;
      continue;
    }
    for (const std::string& name : *names) {
      if (!name.starts_with('.')) taken.name = name;
    }
    const auto isDone = GoOnWith(taken, settings);
    if (!isDone) m_OnMessage(Describe(isDone.Error()));
    if (!isDone || !*isDone) ++left;
  }
  return left;
}

Expected<bool> TakenFiles::GoOnWith(const Taken& taken, const FolderSettings* settings) {
  const auto target = ReadNote(taken.directory + "/.target");
  const auto number = ReadNote(taken.directory + "/.job");
  if (!target) return target.Error();
  if (!number) return number.Error();
  if (taken.name.empty() && target->empty()) {
    // Killed before the file was moved here, or a person took it away again.
    if (auto removed = os::RemoveNativeTree(taken.directory); !removed) return removed.Error();
    return true;
  }
  JobId id = 0;
  std::from_chars(number->data(), number->data() + number->size(), id);
  if (id == 0 && target->empty()) {
    if (!settings) return false;
    const auto submitted = Submit(taken, *settings);
    if (!submitted && submitted.Error().code != FailureCode::BadInput) return submitted.Error();
    if (!submitted) {
      const Job refused = EndedJob(0, settings, Describe(submitted.Error()));
      if (auto finished = Finish(taken, refused, false); !finished) return finished.Error();
      return true;
    }
    id = *submitted;
    auto noted = WriteNew(taken.directory + "/.job", std::to_string(id));
    if (!noted) return noted.Error();
  }
  const auto found = m_Queue.Find(id);
  if (!found) return found.Error();
  const Job job =
      *found ? **found : EndedJob(id, settings, "the queue no longer has the job of this file");
  if (!HasEnded(job.state)) return false;
  const bool isDeleted = settings && settings->deletesDone && job.state == JobState::Done;
  if (auto finished = Finish(taken, job, isDeleted); !finished) return finished.Error();
  return true;
}

Expected<JobId> TakenFiles::Submit(const Taken& taken, const FolderSettings& settings) {
  const std::string path = taken.directory + "/" + taken.name;
  struct stat state {};
  if (::lstat(path.c_str(), &state) != 0) return Failure{"open", path, errno};
  // Its place is this user's alone, so that nobody exchanges it any more; before, somebody could.
  if (!S_ISREG(state.st_mode) || !IsOwnerAllowed(state.st_uid, m_Folder, settings)) {
    return FailureOf("it is no regular file of a user whose files are taken",
                     FailureCode::BadInput);
  }
  JobRequest request;
  request.path = path;
  request.title = os::CleanLine(taken.name);
  request.owner = settings.owner.empty() ? NameOfUser(state.st_uid) : settings.owner;
  const std::string folder = os::CleanLine(m_Folder.substr(m_Folder.rfind('/') + 1));
  request.source = "folder " + folder;
  request.device = settings.device;
  request.work = settings.work;
  request.options = settings.options;
  request.priority = settings.priority;
  request.hold = settings.hold;
  request.key = "folder:" + taken.key;
  return m_Queue.Submit(request);
}

Expected<std::string> TakenFiles::Move(const Taken& taken, const Job& job) {
  const std::string note = taken.directory + "/.target";
  auto target = ReadNote(note);
  if (!target) return target.Error();
  if (target->empty()) {
    const std::string directory = m_Folder + (job.state == JobState::Done ? "/done" : "/failed");
    if (auto made = MakeOwn(directory, 0777); !made) return made.Error();
    auto name = FreeName(directory, taken.name, job.id);
    if (!name) return name.Error();
    target = directory.substr(m_Folder.size() + 1) + "/" + *name;
    if (auto noted = WriteNew(note, *target); !noted) return noted.Error();
  }
  const std::string path = m_Folder + "/" + *target;
  if (taken.name.empty()) return path;
  const std::string source = taken.directory + "/" + taken.name;
  if (::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) != 0) {
    const int error = errno;
    // The next look chooses another name.
    if (error == EEXIST) static_cast<void>(os::RemoveFile(os::FromNative(note)));
    return Failure{"rename", path, error};
  }
  if (auto flushed = os::FlushNamesIn(path.substr(0, path.rfind('/'))); !flushed) {
    return flushed.Error();
  }
  return path;
}

Expected<void> TakenFiles::Finish(const Taken& taken, const Job& job, bool isDeleted) {
  if (!isDeleted) {
    const auto path = Move(taken, job);
    if (!path) return path.Error();
    if (auto reported = WriteReports(*path, job); !reported) return reported;
  }
  return os::RemoveNativeTree(taken.directory);
}

}  // namespace rastrel::server
