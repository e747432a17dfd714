#pragma once

#include <functional>
#include <string>

#include "rastrel/platform/os/expected.h"
#include "server/folders/folder_settings.h"
#include "server/queue/job_queue.h"

/// Files of a hot folder from the moment at which they are taken until they lie in `done` or
/// `failed` with their reports. Each step leaves enough on the disk to go on after a kill:
///
///     sign.pdf                          in the folder
///     .rastrel-taken/KEY/sign.pdf       taken: KEY is random, and the key of its job in the queue
///     .rastrel-taken/KEY/.job           the job's number, once it is in the queue
///     .rastrel-taken/KEY/.target        its last place, chosen when the job has ended
///     done/sign.pdf                     moved
///     done/sign.pdf.report.json, .txt   and reported; KEY is removed
///
/// Whoever finds a KEY without a number submits it again: the queue knows the key if it has the
/// job. So no file is lost, and none becomes two jobs. One thread.
namespace rastrel::server {

class TakenFiles {
 public:
  /// `onMessage` gets a line for people when something can't be done yet.
  TakenFiles(std::string folder, JobQueue& queue,
             std::function<void(const std::string&)> onMessage);

  /// Takes a file of the folder out of it. False, with nothing changed, if it is gone meanwhile.
  [[nodiscard]] Expected<bool> Take(const std::string& name);

  /// Goes on with all files that were taken: submits them, and moves those whose jobs have ended.
  /// `settings` null: none is submitted. Returns how many are left.
  [[nodiscard]] Expected<int> GoOn(const FolderSettings* settings);

 private:
  /// One KEY.
  struct Taken {
    std::string key;
    std::string directory;  ///< its full path
    std::string name;       ///< of the file; empty once it was moved
  };
  [[nodiscard]] Expected<bool> GoOnWith(const Taken& taken, const FolderSettings* settings);
  [[nodiscard]] Expected<JobId> Submit(const Taken& taken, const FolderSettings& settings);
  [[nodiscard]] Expected<void> Finish(const Taken& taken, const Job& job, bool isDeleted);
  [[nodiscard]] Expected<std::string> Move(const Taken& taken, const Job& job);

  std::string m_Folder;
  JobQueue& m_Queue;
  std::function<void(const std::string&)> m_OnMessage;
};

}  // namespace rastrel::server
