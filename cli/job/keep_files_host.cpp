#include "cli/job/keep_files_host.h"

#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr const wchar_t* Section = L"RASTREL";
constexpr const wchar_t* Key = L"Keep PS Files";

}  // namespace

KeepFilesHost::KeepFilesHost() : m_Inner(host::GetHost()), m_Settings(m_Inner.GetSettings()) {
  host::SetHost(this);
}

KeepFilesHost::~KeepFilesHost() { host::SetHost(&m_Inner); }

std::optional<std::wstring> KeepFilesHost::KeepingSettings::Read(const std::wstring& section,
                                                                 const std::wstring& key,
                                                                 DataStoreType store) {
  const bool asked = os::LowerAscii(section) == os::LowerAscii(Section) &&
                     os::LowerAscii(key) == os::LowerAscii(Key);
  return asked ? L"1" : m_Inner.Read(section, key, store);
}

bool KeepFilesHost::KeepingSettings::Write(const std::wstring& section, const std::wstring& key,
                                           const std::wstring& value, DataStoreType store) {
  return m_Inner.Write(section, key, value, store);
}

bool KeepsFiles() { return GetIntKorvane(Section, Key, 0, DS_USER, nullptr) != 0; }

}  // namespace rastrel::cli
