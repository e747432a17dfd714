#include "host/drawing/drawing_files.h"

#include <fontconfig/fontconfig.h>

#include <string>

namespace rastrel::drawing {

namespace {

using interpreter::WallAccess;
using interpreter::WallPath;

// Where Linux distributions lay them. Libraries load others at their first use: decoders,
// encodings.
constexpr const char* const LibraryPlaces[] = {
    "/lib",
    "/lib32",
    "/lib64",
    "/usr/lib",
    "/usr/lib32",
    "/usr/lib64",
    "/usr/local/lib",
    "/nix/store",
    "/gnu/store",
    "/etc/ld.so.cache",
    "/usr/share/poppler",  // encodings of Asian text
    "/usr/share/mime",     // kinds of images within SVG
    "/usr/share/locale",   // the libraries' messages
    "/etc/locale.alias",
    "/etc/localtime",
    "/usr/share/zoneinfo",
    "/sys/devices/system/cpu",
    "/dev/urandom",
};

// Directories of fonts may hold links from one to another of these.
constexpr const char* const FontPlaces[] = {
    "/usr/share/fonts",           "/usr/local/share/fonts",
    "/usr/share/X11/fonts",       "/usr/share/texmf",
    "/usr/share/texlive",         "/usr/share/ghostscript",
    "/var/lib/ghostscript",       "/etc/fonts",
    "/usr/share/fontconfig",      "/usr/share/xml/fontconfig",
    "/usr/local/share/fontconfig"};

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
  for (const char* const place : LibraryPlaces) files.push_back({place, WallAccess::Read});
  for (const char* const place : FontPlaces) files.push_back({place, WallAccess::Read});
  files.push_back({"/dev/null", WallAccess::Write});
  AddFontsInUse(files);
  return files;
}

}  // namespace rastrel::drawing
