#include "rastrel/platform/os/growing_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <condition_variable>
#include <map>
#include <mutex>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::os {
namespace {

struct Progress {
  std::uint64_t size = 0;
  Growth state = Growth::Grown;
  bool isAwaited = false;
};

// A file by its device and number, which any path to it leads to.
using Identity = std::pair<std::uint64_t, std::uint64_t>;

struct Register {
  std::mutex mutex;
  std::condition_variable changed;
  std::map<Identity, Progress> files;
};

Register& Files() {
  static Register files;
  return files;
}

}  // namespace

GrowingFile::GrowingFile(const std::string& path) {
  const Expected<FileDescriptor> file = CreateForWriting(FromNative(path), Access::Private);
  struct stat state {};
  if (!file) {
    m_State = file.Error();
  } else if (::fstat(file->Get(), &state) != 0) {
    m_State = Failure{"fstat", path, errno};
  } else {
    m_Device = state.st_dev;
    m_Number = state.st_ino;
    Register& files = Files();
    const std::lock_guard lock(files.mutex);
    files.files[{m_Device, m_Number}] = {};
  }
}

// The file's number may be another file's soon.
GrowingFile::~GrowingFile() { End(true); }

void GrowingFile::Grow(std::uint64_t size) {
  Register& files = Files();
  {
    const std::lock_guard lock(files.mutex);
    const auto file = files.files.find({m_Device, m_Number});
    if (file != files.files.end()) file->second.size = size;
  }
  files.changed.notify_all();
}

bool GrowingFile::IsAwaited() const {
  Register& files = Files();
  const std::lock_guard lock(files.mutex);
  const auto file = files.files.find({m_Device, m_Number});
  return file != files.files.end() && file->second.isAwaited;
}

void GrowingFile::End(bool isWhole) {
  Register& files = Files();
  {
    const std::lock_guard lock(files.mutex);
    const auto file = files.files.find({m_Device, m_Number});
    if (file == files.files.end()) return;
    if (isWhole)
      files.files.erase(file);
    else
      file->second.state = Growth::Failed;
  }
  files.changed.notify_all();
}

Growth WaitForGrowth(int descriptor, std::uint64_t size) {
  Register& files = Files();
  std::unique_lock lock(files.mutex);
  struct stat state {};
  if (::fstat(descriptor, &state) != 0) return Growth::Failed;
  const Identity identity(state.st_dev, state.st_ino);
  for (;;) {
    const auto file = files.files.find(identity);
    if (file == files.files.end()) break;
    if (file->second.size > size) return Growth::Grown;
    if (file->second.state == Growth::Failed) return Growth::Failed;
    file->second.isAwaited = true;
    files.changed.wait(lock);
  }
  // The bytes written between the reader's last look and the end.
  if (::fstat(descriptor, &state) != 0) return Growth::Failed;
  return static_cast<std::uint64_t>(state.st_size) > size ? Growth::Grown : Growth::Whole;
}

}  // namespace rastrel::os
