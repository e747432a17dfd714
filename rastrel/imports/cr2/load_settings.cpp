#include "rastrel/imports/cr2/load_settings.h"

#include <array>
#include <cstddef>

#include "rastrel/platform/host/settings.h"

namespace rastrel::imports {
namespace {

constexpr LoadSetting CollapsePages{L"Pages", L"CollapseToZero", 1, 0};
constexpr LoadSetting MergeSheetLayers{L"Sheet Layer", L"Merge", 0, 0};
constexpr LoadSetting CollapseGroups{L"Grouping", L"CollapseDatabase", 1, 0};
constexpr LoadSetting TextAsGraphics{L"IMPPDF", L"TextAsGraphics", 0, 1};
constexpr LoadSetting ShowDialog{L"IMPPDF", L"ShowDialog", 1, 0};

constexpr std::array Cr2Settings{CollapsePages, MergeSheetLayers, CollapseGroups, TextAsGraphics,
                                 ShowDialog};
constexpr std::array ZmlSettings{CollapsePages, MergeSheetLayers, TextAsGraphics, ShowDialog};

constexpr LoadSettings OfCr2{.settings = Cr2Settings, .switchesHistoryOff = true};
constexpr LoadSettings OfZml{.settings = ZmlSettings, .switchesHistoryOff = false};

}  // namespace

const LoadSettings& Cr2LoadSettings() { return OfCr2; }

const LoadSettings& ZmlLoadSettings() { return OfZml; }

SettingsDuringLoad::SettingsDuringLoad(host::ObjectStore& store, const LoadSettings& settings)
    : m_Store(store), m_Settings(settings.settings) {
  for (const LoadSetting& setting : m_Settings) {
    m_Before.push_back(
        GetIntKorvane(setting.section, setting.key, setting.byDefault, DS_USER, nullptr));
    WriteIntKorvane(setting.section, setting.key, setting.duringLoad, DS_USER, nullptr);
  }
  if (!settings.switchesHistoryOff) return;
  m_History = m_Store.GetKeepHistory();
  if (m_History != 0) m_Store.WriteKeepHistory(0);
}

SettingsDuringLoad::~SettingsDuringLoad() {
  for (std::size_t place = 0; place < m_Settings.size(); ++place)
    WriteIntKorvane(m_Settings[place].section, m_Settings[place].key, m_Before[place], DS_USER,
                    nullptr);
  if (m_History != 0) m_Store.WriteKeepHistory(m_History);
}

}  // namespace rastrel::imports
