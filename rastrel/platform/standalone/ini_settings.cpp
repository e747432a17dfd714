#include "rastrel/platform/os/path.h"
#include "rastrel/platform/standalone/data_root.h"
#include "rastrel/platform/standalone/ini_file.h"
#include "rastrel/platform/standalone/standalone_host.h"

namespace rastrel::standalone {
namespace {

IniFile SettingsFile(KeptText& kept) {
  EnsureDataRoot();
  const std::wstring root = os::FromNative(os::DataRoot());
  return {root + L"/settings.ini", root + L"/.settings.lock", &kept};
}

}  // namespace

std::optional<std::wstring> IniSettings::Read(const std::wstring& section, const std::wstring& key,
                                              DataStoreType) {
  return SettingsFile(m_Text).Read(section, key);
}

bool IniSettings::Write(const std::wstring& section, const std::wstring& key,
                        const std::wstring& value, DataStoreType) {
  return SettingsFile(m_Text).Write(section, key, value);
}

}  // namespace rastrel::standalone
