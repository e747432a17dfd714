#include "rastrel/platform/host/window_faces.h"

#include "rastrel/platform/host/data_root.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/shared_library.h"

namespace rastrel::host {

os::Expected<DialogFaces*, std::string> LoadWindowFaces() {
  static DialogFaces* faces = nullptr;
  if (faces != nullptr) return faces;
  const std::string programs = FindResources().programs;
  const std::string component = programs + "/rastrel-window.so";
  if (programs.empty() || !os::Exists(os::FromNative(component)))
    return std::string("rastrel-window.so is not installed");
  const auto library = os::SharedLibrary::Open(component.c_str());
  if (!library) return library.Error();
  MakeWindowFaces* make = nullptr;
  if (!library->Bind(make, MakeWindowFacesName))
    return std::string("rastrel-window.so is of another kind");
  const char* reason = nullptr;
  faces = make(WindowFacesVersion, &reason);
  if (faces != nullptr) return faces;
  return std::string(reason != nullptr ? reason : "no window can be shown");
}

}  // namespace rastrel::host
