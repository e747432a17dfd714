// Says where the shared object is that this code is in.

#include <string>

#include "rastrel/platform/os/path.h"

extern "C" [[gnu::visibility("default")]] const char* PathOfThisModule() {
  static const std::string path = rastrel::os::ModulePath();
  return path.c_str();
}
