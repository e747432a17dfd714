#pragma once

#include <array>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>

#include "rastrel/platform/host/host.h"

namespace rastrel::document {

/// The settings of the embedded host: those of another store, except for the few that an import
/// changes while it loads a graphic and restores after it ("Pages", "CollapseToZero" and the like).
/// A written value of these is kept here and goes with this object.
///
/// In the file of all programs they would be wrong for every other import meanwhile, and for good
/// after an import that is killed; and each of a thousand graphics would write the file ten times.
class LoadSettingsStore : public host::Settings {
 public:
  /// The other store must outlive this one.
  explicit LoadSettingsStore(host::Settings& stored) : m_Stored(stored) {}

  /// The value that was written here last; else that of the other store.
  [[nodiscard]] std::optional<std::wstring> Read(const std::wstring& section,
                                                 const std::wstring& key,
                                                 DataStoreType store) override;
  [[nodiscard]] bool Write(const std::wstring& section, const std::wstring& key,
                           const std::wstring& value, DataStoreType store) override;

  /// How many settings are kept here.
  static constexpr std::size_t Count = 5;

 private:
  host::Settings& m_Stored;
  std::mutex m_Mutex;
  std::array<std::optional<std::wstring>, Count> m_Values;
};

}  // namespace rastrel::document
