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

}  // namespace rastrel::os
