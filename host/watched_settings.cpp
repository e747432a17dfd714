#include "host/watched_settings.h"

#include <algorithm>

namespace rastrel::document {

std::optional<std::wstring> WatchedSettings::Read(const std::wstring& section,
                                                  const std::wstring& key, DataStoreType store) {
  return m_Store.Read(section, key, store);
}

bool WatchedSettings::Write(const std::wstring& section, const std::wstring& key,
                            const std::wstring& value, DataStoreType store) {
  if (m_Store.Write(section, key, value, store)) return true;
  const std::lock_guard lock(m_Mutex);
  const std::pair refused(section, key);
  if (std::ranges::find(m_Refused, refused) == m_Refused.end()) m_Refused.push_back(refused);
  return false;
}

std::vector<std::pair<std::wstring, std::wstring>> WatchedSettings::Refused() const {
  const std::lock_guard lock(m_Mutex);
  return m_Refused;
}

}  // namespace rastrel::document
