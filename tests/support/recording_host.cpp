#include "tests/support/recording_host.h"

#include "rastrel/platform/standalone/standalone_host.h"

namespace rastrel::test {

RecordingHost::RecordingHost() {
  m_Calls.BeforeLines([this] { m_Text.WriteChanges(); });
  m_Text.m_MakeText = [this] { return m_Store.Make(DBTYPE_PARAGRAPH, true); };
  host::SetHost(this);
}

RecordingHost::~RecordingHost() { host::SetHost(nullptr); }

void RecordingHost::MayStay(const std::wstring& section, const std::wstring& key) {
  m_MayStay.emplace(section, key);
}

std::vector<std::string> RecordingHost::LeftOpen() {
  m_Calls.All();  // also the fields written since the last line
  std::vector<std::string> open = m_Store.LeftOpen();
  for (std::string& what : m_Text.LeftOpen()) open.push_back(std::move(what));
  for (std::string& what : m_Application.LeftOpen()) open.push_back(std::move(what));
  for (std::string& what : m_Planes.LeftOpen()) open.push_back(std::move(what));
  for (const auto& [name, writes] : m_Writes)
    if (writes == 1 && !m_MayStay.contains(name))
      open.push_back("setting " + TextOf(name.first) + ", " + TextOf(name.second));
  return open;
}

void RecordingHost::BeginWaitCursor() { m_Calls.Told("BeginWaitCursor"); }

std::optional<std::wstring> RecordingHost::Read(const std::wstring& section,
                                                const std::wstring& key, DataStoreType) {
  const auto found = m_Settings.find({section, key});
  if (found == m_Settings.end()) {
    m_Calls.Answered(nullptr, "Read", section, key);
    return std::nullopt;
  }
  return m_Calls.Answered(found->second, "Read", section, key);
}

bool RecordingHost::Write(const std::wstring& section, const std::wstring& key,
                          const std::wstring& value, DataStoreType) {
  m_Calls.Told("Write", section, key, value);
  ++m_Writes[{section, key}];
  m_Settings[{section, key}] = value;
  return true;
}

std::wstring RecordingHost::BaseDirectory(path_type type) {
  const auto found = m_BaseDirectories.find(type);
  return found != m_BaseDirectories.end() ? found->second
                                          : standalone::DataRootDirectories().BaseDirectory(type);
}

std::optional<std::wstring> RecordingHost::Translate(const std::wstring& text) {
  const std::wstring mark = L"(*v*)";
  const auto found = m_Translations.find(text);
  std::wstring translated = found != m_Translations.end() ? found->second
                            : text.starts_with(mark)      ? text.substr(mark.size())
                                                          : text;
  return m_Calls.Answered(translated, "TString", text);
}

}  // namespace rastrel::test
