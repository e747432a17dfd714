#include "rastrel/platform/standalone/window_views.h"

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/shared_library.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::host {

Expected<DialogViews*> LoadWindowViews() {
  static DialogViews* views = nullptr;
  if (views != nullptr) return views;
  const std::string programs = standalone::FindResources().programs;
  const std::string component = programs + "/rastrel-window.so";
  if (programs.empty() || !os::Exists(os::FromNative(component)))
    return FailureOf("rastrel-window.so is not installed");
  const auto library = os::SharedLibrary::Open(component.c_str());
  if (!library) return library.Error();
  MakeWindowViews* make = nullptr;
  if (!library->Bind(make, MakeWindowViewsName))
    return FailureOf("rastrel-window.so is of another kind");
  const char* reason = nullptr;
  views = make(WindowViewsVersion, &reason);
  if (views != nullptr) return views;
  return FailureOf(reason != nullptr ? reason : "no window can be shown");
}

}  // namespace rastrel::host
