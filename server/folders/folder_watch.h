#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/thread.h"
#include "server/folders/hot_folder.h"

namespace rastrel::server {

/// All hot folders of a data root, those that `server/folders.toml` names, on a thread of its own.
/// The file is read again at each look, and as soon as it has changed where the system reports
/// that, so that a folder may be added while the server runs.
class FolderWatch {
 public:
  /// The queue stays the caller's. `onMessage` gets lines for people, on the watch's thread.
  FolderWatch(std::string dataRoot, JobQueue& queue,
              std::function<void(const std::string&)> onMessage);
  ~FolderWatch();
  FolderWatch(const FolderWatch&) = delete;
  FolderWatch& operator=(const FolderWatch&) = delete;

  [[nodiscard]] Expected<void> Start();
  /// Returns when the thread has ended; a file that is being taken is taken whole. Does nothing
  /// if it was not started.
  void Stop();

 private:
  struct Watched {
    std::unique_ptr<HotFolder> folder;
    int number = -1;  ///< of its changes; -1: none are reported
  };
  void Run();
  void ReadList();
  void WatchList();
  /// False when the thread is to end.
  [[nodiscard]] bool WaitForChange(os::Deadline look);
  [[nodiscard]] bool TakeListChanges();
  [[nodiscard]] std::int64_t LookAtAll();
  void TakeChanges();
  void Note(int number, unsigned kind, const std::string& name);

  std::string m_Directory;  // of the list
  std::string m_List;
  JobQueue& m_Queue;
  std::function<void(const std::string&)> m_OnMessage;
  std::string m_LastTrouble;
  std::vector<Watched> m_Folders;
  os::FileDescriptor m_Changes;
  os::FileDescriptor m_ListChanges;
  os::FileDescriptor m_Stop;
  std::unique_ptr<os::Thread> m_Thread;
};

}  // namespace rastrel::server
