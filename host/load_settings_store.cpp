#include "host/load_settings_store.h"

#include <algorithm>
#include <string_view>

#include "rastrel/platform/os/text.h"

namespace rastrel::document {
namespace {

/// In lower case.
struct SettingName {
  std::wstring_view section;
  std::wstring_view key;
};

constexpr std::array<SettingName, LoadSettingsStore::Count> KeptHere{{
    {L"pages", L"collapsetozero"},
    {L"sheet layer", L"merge"},
    {L"grouping", L"collapsedatabase"},
    {L"imppdf", L"textasgraphics"},
    {L"imppdf", L"showdialog"},
}};

/// The setting's place in KeptHere.
std::optional<std::size_t> PlaceOf(std::wstring_view section, std::wstring_view key) {
  const std::wstring lowerSection = os::LowerAscii(section);
  const std::wstring lowerKey = os::LowerAscii(key);
  const auto found = std::ranges::find_if(KeptHere, [&](const SettingName& name) {
    return name.section == lowerSection && name.key == lowerKey;
  });
  if (found == KeptHere.end()) return std::nullopt;
  return static_cast<std::size_t>(found - KeptHere.begin());
}

}  // namespace

std::optional<std::wstring> LoadSettingsStore::Read(const std::wstring& section,
                                                    const std::wstring& key, DataStoreType store) {
  if (const std::optional<std::size_t> place = PlaceOf(section, key)) {
    const std::scoped_lock lock(m_Mutex);
    if (m_Values[*place]) return m_Values[*place];
  }
  return m_Stored.Read(section, key, store);
}

bool LoadSettingsStore::Write(const std::wstring& section, const std::wstring& key,
                              const std::wstring& value, DataStoreType store) {
  const std::optional<std::size_t> place = PlaceOf(section, key);
  if (!place) return m_Stored.Write(section, key, value, store);
  const std::scoped_lock lock(m_Mutex);
  m_Values[*place] = value;
  return true;
}

}  // namespace rastrel::document
