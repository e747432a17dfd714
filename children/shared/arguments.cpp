#include "children/shared/arguments.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::children {

std::string NativeArgument(const char* argument) {
  std::string native = os::ToNative(os::WideFromUtf8(argument));
  if (access(native.c_str(), F_OK) != 0 && access(argument, F_OK) == 0) return argument;
  return native;
}

std::string ProgramDirectory(const char* program) {
  std::error_code error;
  std::string path = os::ToNative(os::WideFromUtf8(program));
  if (path.find('/') == path.npos || access(path.c_str(), F_OK) != 0) path = os::ExecutablePath();
  return std::filesystem::absolute(path, error).lexically_normal().parent_path().string();
}

void OpenStandardStreams() {
  int descriptor = 0;
  do {
    descriptor = open("/dev/null", O_RDWR);
  } while (descriptor >= 0 && descriptor <= 2);
  if (descriptor > 2) close(descriptor);
}

}  // namespace rastrel::children
