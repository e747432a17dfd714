#include "rastrel/platform/os/shared_library.h"

#include <dlfcn.h>

namespace rastrel::os {

Expected<SharedLibrary> SharedLibrary::Open(const char* name) {
  // Not unloaded at the end of anything: libraries keep threads' data and exit functions.
  void* const library = ::dlopen(name, RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
  if (library != nullptr) return SharedLibrary(library);
  const char* const why = ::dlerror();
  return FailureOf(why != nullptr ? why : "unknown reason");
}

void* SharedLibrary::Find(const char* name) const { return ::dlsym(m_Library, name); }

void* OwnModule() {
  Dl_info information{};
  void* map = nullptr;
  static const char hereInThisModule = 0;
  // The loader's handles are the addresses of its own records.
  return ::dladdr1(&hereInThisModule, &information, &map, RTLD_DL_LINKMAP) != 0 ? map : nullptr;
}

}  // namespace rastrel::os
