#include "children/jobspool/anonymous_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "rastrel/platform/os/random_digits.h"

namespace rastrel::jobspool {

Expected<os::FileDescriptor> MakeAnonymousFile(const std::string& directory) {
  os::FileDescriptor file(open(directory.c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, 0600));
  if (file.IsOpen()) return file;
  // Layered and network file systems may have no such files.
  const auto digits = os::RandomDigits(16);
  if (!digits) return digits.Error();
  const std::string path = directory + "/." + *digits;
  file = os::FileDescriptor(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!file.IsOpen()) return Failure{"make a file in", directory, errno};
  if (unlink(path.c_str()) != 0) return Failure{"remove", path, errno};
  return file;
}

}  // namespace rastrel::jobspool
