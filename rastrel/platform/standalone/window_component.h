#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/shared_library.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::standalone {

/// The function of that name in the optional component of windows, "rastrel-window.so" beside the
/// programs, which stays loaded. The failure says why there is none.
template <typename Function>
[[nodiscard]] Expected<Function*> FindInWindowComponent(const char* name) {
  const std::string programs = FindResources().programs;
  const std::string component = programs + "/rastrel-window.so";
  if (programs.empty() || !os::Exists(os::FromNative(component)))
    return FailureOf("rastrel-window.so is not installed");
  const auto library = os::SharedLibrary::Open(component.c_str());
  if (!library) return library.Error();
  Function* function = nullptr;
  if (!library->Bind(function, name)) return FailureOf("rastrel-window.so is of another kind");
  return function;
}

}  // namespace rastrel::standalone
