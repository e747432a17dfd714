#include "host/drawing/drawing_files.h"

#include <fontconfig/fontconfig.h>

#include <string>

#include "interpreter/shared_places.h"

namespace rastrel::drawing {

namespace {

using interpreter::WallAccess;
using interpreter::WallPath;

// Beside the shared ones.
constexpr const char* const OwnPlaces[] = {
    "/usr/share/mime",    // kinds of images within SVG
    "/usr/share/locale",  // the libraries' messages
    "/etc/locale.alias",
};

// Takes the list over.
void AddAll(FcStrList* list, std::vector<WallPath>& files) {
  if (list == nullptr) return;
  while (const FcChar8* path = FcStrListNext(list)) {
    std::string text = reinterpret_cast<const char*>(path);  // NOLINT: the font library's bytes
    if (text.starts_with('/') && text != "/") files.push_back({std::move(text), WallAccess::Read});
  }
  FcStrListDone(list);
}

void AddFontsInUse(std::vector<WallPath>& files) {
  FcConfig* const config = FcInitLoadConfig();
  if (config == nullptr) return;
  AddAll(FcConfigGetConfigDirs(config), files);
  AddAll(FcConfigGetConfigFiles(config), files);
  AddAll(FcConfigGetCacheDirs(config), files);
  FcConfigDestroy(config);
}

}  // namespace

std::vector<WallPath> DrawingFiles() {
  std::vector<WallPath> files;
  for (const char* const place : interpreter::LibraryPlaces)
    files.push_back({place, WallAccess::Read});
  for (const char* const place : interpreter::FontPlaces)
    files.push_back({place, WallAccess::Read});
  for (const char* const place : OwnPlaces) files.push_back({place, WallAccess::Read});
  files.push_back({"/dev/null", WallAccess::Write});
  AddFontsInUse(files);
  return files;
}

}  // namespace rastrel::drawing
