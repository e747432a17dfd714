// .rastrel-folder.toml and folders.toml of any bytes: settings that were read are within their
// ranges, and no hidden or unfinished file is a job's, whatever the patterns.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "server/folders/folder_settings.h"

using namespace rastrel::server;

namespace {

void Expect(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const auto settings = ReadFolderSettings(text, "settings");
  if (settings) {
    Expect(!settings->device.empty());
    Expect(settings->priority >= 1 && settings->priority <= 100);
    Expect(settings->settleSeconds >= 0 && settings->settleSeconds <= 3600);
    Expect(settings->pollSeconds >= 1 && settings->pollSeconds <= 3600);
    for (const char* name : {"", ".hidden", "a~", "a.part", "a.tmp", "rastrel-folder-error.txt"})
      Expect(!IsJobName(name, *settings));
    for (const std::string& pattern : settings->names)
      static_cast<void>(IsJobName(pattern, *settings));
  }
  const auto paths = ReadFolderList(text, "list");
  if (paths)
    for (const std::string& path : *paths) Expect(path.starts_with('/'));
  return 0;
}
