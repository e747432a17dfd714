#include "rastrel/platform/os/native_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "rastrel/platform/os/copy_file.h"

namespace rastrel::os {

Expected<void> CopyNativeFile(const std::string& source, const std::string& target, Access access) {
  return CopyFileAt({AT_FDCWD, source.c_str()}, {AT_FDCWD, target.c_str()}, LinksInSource::Followed,
                    access);
}

bool IsProgram(const std::string& path) {
  struct stat state {};
  return ::stat(path.c_str(), &state) == 0 && S_ISREG(state.st_mode) &&
         ::faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
}

Expected<void> SetEnvironmentValue(const char* name, const char* value) {
  if ((value == nullptr ? ::unsetenv(name) : ::setenv(name, value, 1)) != 0)
    return Failure{"setenv", name, errno};
  return {};
}

}  // namespace rastrel::os
