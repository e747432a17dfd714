#include "rastrel/platform/standalone/window_faces.h"

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/shared_library.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::host {

Expected<DialogFaces*> LoadWindowFaces() {
  static DialogFaces* faces = nullptr;
  if (faces != nullptr) return faces;
  const std::string programs = standalone::FindResources().programs;
  const std::string component = programs + "/rastrel-window.so";
  if (programs.empty() || !os::Exists(os::FromNative(component)))
    return FailureOf("rastrel-window.so is not installed");
  const auto library = os::SharedLibrary::Open(component.c_str());
  if (!library) return library.Error();
  MakeWindowFaces* make = nullptr;
  if (!library->Bind(make, MakeWindowFacesName))
    return FailureOf("rastrel-window.so is of another kind");
  const char* reason = nullptr;
  faces = make(WindowFacesVersion, &reason);
  if (faces != nullptr) return faces;
  return FailureOf(reason != nullptr ? reason : "no window can be shown");
}

}  // namespace rastrel::host
