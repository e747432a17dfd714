#include "rastrel/conversion/postscript_files.h"

#include "rastrel/platform/host/placed_graphics.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/mfc/file.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/values/stream.h"

namespace rastrel::conversion {

bool KeepsPostScriptFiles() {
  return GetIntKorvane(L"RASTREL", L"Keep PS Files", 0, DS_USER, nullptr) != 0;
}

bool WriteAsPostScript(CGenericEPS& object, const std::wstring& path) {
  // The framework's file follows the umask, so it only opens a file that is private already.
  if (!os::CreateForWriting(path, os::Access::Private)) return false;
  CFile file;
  if (!file.Open(path.c_str(), CFile::modeWrite)) return false;
  try {
    CStream stream(&file);
    if (object.ConvertToPS(&stream) == 0) return false;
    stream.Flush();
    return true;
  } catch (const CStreamException&) {
    return false;
  }
}

}  // namespace rastrel::conversion
