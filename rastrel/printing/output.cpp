#include "rastrel/printing/output.h"

#include "rastrel/platform/os/file_descriptor.h"

Output::Output(std::intptr_t readHandle) {
  auto handle = static_cast<HANDLE>(readHandle);
  rastrel::os::CloseHandle(handle);
}

Output::~Output() = default;
