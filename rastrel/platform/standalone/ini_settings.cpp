#include <cerrno>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_lock.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/trusted_file.h"
#include "rastrel/platform/standalone/data_root.h"
#include "rastrel/platform/standalone/ini_text.h"
#include "rastrel/platform/standalone/standalone_host.h"

namespace rastrel::standalone {
namespace {

// Far beyond any settings file; a larger file is not read.
constexpr std::uint64_t LargestFile = std::uint64_t{16} << 20;

std::wstring SettingsPath() { return os::FromNative(os::DataRoot()) + L"/settings.ini"; }

std::wstring LockPath() { return os::FromNative(os::DataRoot()) + L"/.settings.lock"; }

// Settings name the directory that programs are started from. A missing file is nobody's.
bool MayBeUsed() {
  const std::wstring path = SettingsPath();
  return !os::Exists(path) || os::CheckTrusted(os::ToNative(path), os::DataRoot());
}

}  // namespace

std::optional<std::wstring> IniSettings::Read(const std::wstring& section, const std::wstring& key,
                                              DataStoreType) {
  EnsureDataRoot();
  if (!MayBeUsed()) return std::nullopt;
  const Expected<std::string> text = os::ReadWholeFile(SettingsPath(), LargestFile);
  if (!text) return std::nullopt;
  const std::optional<std::string> value =
      FindIniValue(*text, os::Utf8FromWide(section), os::Utf8FromWide(key));
  if (!value) return std::nullopt;
  return os::WideFromUtf8(*value);
}

bool IniSettings::Write(const std::wstring& section, const std::wstring& key,
                        const std::wstring& value, DataStoreType) {
  EnsureDataRoot();
  const std::string bytes = os::Utf8FromWide(value);
  if (os::WideFromUtf8(bytes) != value) return false;
  const Expected<os::FileLock> lock = os::FileLock::Acquire(LockPath());
  if (!lock || !MayBeUsed()) return false;
  Expected<std::string> text = os::ReadWholeFile(SettingsPath(), LargestFile);
  if (!text) {
    if (text.Error().error != ENOENT) return false;
    text = std::string();
  }
  const std::optional<std::string> changed =
      WithIniValue(*text, os::Utf8FromWide(section), os::Utf8FromWide(key), bytes);
  return changed && changed->size() <= LargestFile &&
         os::ReplaceFile(SettingsPath(), *changed, os::Access::Private);
}

}  // namespace rastrel::standalone
