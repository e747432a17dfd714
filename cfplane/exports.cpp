#include <new>

#include "cfplane/reader.h"

// The library's whole interface. The host resolves both by their decorated names.

template <>
CFMDllIF* DynamicExport<CFMDllIF>::Create() {
  return new (std::nothrow) rastrel::planes::Reader;
}

template <>
void DynamicExport<CFMDllIF>::Destroy(CFMDllIF* reader) {
  delete reader;
}
