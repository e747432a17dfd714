#include "server/web/access/secret_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::server::web {

Expected<std::string> ReadSecretFile(const std::string& path, std::uint64_t limit) {
  struct stat state {};
  if (::lstat(path.c_str(), &state) != 0) return Failure{"open", path, errno};
  if (!S_ISREG(state.st_mode)) return FailureAt(path, FailureOf("this is no regular file"));
  if (state.st_uid != ::getuid() || (state.st_mode & 077U) != 0)
    return FailureAt(path, FailureOf("other users may read or change this file; say chmod 600"));
  auto text = os::ReadWholeFile(os::FromNative(path), limit);
  if (!text) return FailureAt(path, text.Error());
  return text;
}

}  // namespace rastrel::server::web
