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

Expected<void> WriteAsPostScript(CGenericEPS& object, const std::wstring& path) {
  // The framework's file follows the umask, so it only opens a file that is private already.
  if (auto made = os::CreateForWriting(path, os::Access::Private); !made) return made.Error();
  CFile file;
  if (!file.Open(path.c_str(), CFile::modeWrite)) return FailureOf("the file can't be opened");
  try {
    CStream stream(&file);
    if (object.ConvertToPS(&stream) == 0) return FailureOf("the host can't convert it");
    stream.Flush();
  } catch (const CStreamException& failure) {
    return FailureOf(failure.what());
  }
  return {};
}

}  // namespace rastrel::conversion
