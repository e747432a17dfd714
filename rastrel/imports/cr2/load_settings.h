#pragma once

#include <span>
#include <vector>

#include "rastrel/platform/host/object_store.h"

namespace rastrel::imports {

/// A setting of the host's that has another value while a graphic is loaded.
struct LoadSetting {
  const wchar_t* section;
  const wchar_t* key;
  int byDefault;   ///< read where the host has no value
  int duringLoad;  ///< written for the time of the load
};

/// The settings of one generation of templates.
struct LoadSettings {
  std::span<const LoadSetting> settings;
  bool switchesHistoryOff;  ///< loads are not kept for undoing
};

/// Of the first generation (cr2): sheet layers, pages and groups of a file stay apart, text comes
/// in as paths, no dialog is shown, and no undo step is made.
[[nodiscard]] const LoadSettings& Cr2LoadSettings();
/// Of the second generation (zml): without the group's setting and with the history as it is.
[[nodiscard]] const LoadSettings& ZmlLoadSettings();

/// Changes the settings, and restores them in the same order at its end, the history last.
class SettingsDuringLoad {
 public:
  SettingsDuringLoad(host::ObjectStore& store, const LoadSettings& settings);
  ~SettingsDuringLoad();
  SettingsDuringLoad(const SettingsDuringLoad&) = delete;
  SettingsDuringLoad& operator=(const SettingsDuringLoad&) = delete;

 private:
  host::ObjectStore& m_Store;
  std::span<const LoadSetting> m_Settings;
  std::vector<int> m_Before;  ///< the values, in the order of m_Settings
  int m_History = 0;          ///< the switch's value if it was switched off here, else 0
};

}  // namespace rastrel::imports
