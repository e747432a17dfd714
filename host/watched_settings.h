#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "rastrel/platform/host/host.h"

namespace rastrel::document {

/// A store of settings that remembers those that could not be stored. Called from any thread.
class WatchedSettings : public host::Settings {
 public:
  /// `store` must outlive the object.
  explicit WatchedSettings(host::Settings& store) : m_Store(store) {}

  [[nodiscard]] std::optional<std::wstring> Read(const std::wstring& section,
                                                 const std::wstring& key,
                                                 DataStoreType store) override;
  [[nodiscard]] bool Write(const std::wstring& section, const std::wstring& key,
                           const std::wstring& value, DataStoreType store) override;

  /// Section and key of each setting that a `Write` failed for, once each, in their order.
  [[nodiscard]] std::vector<std::pair<std::wstring, std::wstring>> Refused() const;

 private:
  host::Settings& m_Store;
  mutable std::mutex m_Mutex;  // guards m_Refused
  std::vector<std::pair<std::wstring, std::wstring>> m_Refused;
};

}  // namespace rastrel::document
