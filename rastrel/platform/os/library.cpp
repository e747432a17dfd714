#include "rastrel/platform/os/library.h"

#include <dlfcn.h>

namespace rastrel::os {

void* LoadedLibrary::Find(const char* name) const { return ::dlsym(m_Handle, name); }

Expected<LoadedLibrary, std::string> LoadLibrary(const std::string& path) {
  void* const handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (handle != nullptr) return LoadedLibrary(handle);
  const char* const reason = ::dlerror();
  return std::string(reason != nullptr ? reason : "it can't be loaded");
}

}  // namespace rastrel::os
