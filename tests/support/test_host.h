#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "rastrel/platform/host/host.h"

namespace rastrel::test {

/// A host that lives in memory; installed while it exists. Fill it before the library is used.
class TestHost : public host::Host, host::Settings, host::Directories, host::Translation {
 public:
  TestHost() { host::SetHost(this); }
  ~TestHost() override { host::SetHost(nullptr); }
  TestHost(const TestHost&) = delete;
  TestHost& operator=(const TestHost&) = delete;

  /// Settings by section and key, as spelled.
  std::map<std::pair<std::wstring, std::wstring>, std::wstring> m_Settings;
  /// Base directories by type; a missing one is empty.
  std::map<int, std::wstring> m_BaseDirectories;
  std::optional<std::wstring> m_Windows;
  std::optional<std::wstring> m_System;
  std::optional<std::wstring> m_Driver;
  /// The translation; without one there is none for any text.
  std::function<std::optional<std::wstring>(const std::wstring&)> m_Translate;

  /// Called at every read of a setting.
  std::function<void()> m_OnRead;
  /// How often the wait cursor was asked for.
  int m_WaitCursors = 0;

  host::Settings& GetSettings() override { return *this; }
  host::Directories& GetDirectories() override { return *this; }
  host::Translation& GetTranslation() override { return *this; }
  void BeginWaitCursor() override { ++m_WaitCursors; }

 private:
  std::optional<std::wstring> Read(const std::wstring& section, const std::wstring& key,
                                   DataStoreType) override {
    if (m_OnRead) m_OnRead();
    const std::scoped_lock lock(m_Mutex);
    const auto found = m_Settings.find({section, key});
    if (found == m_Settings.end()) return std::nullopt;
    return found->second;
  }
  bool Write(const std::wstring& section, const std::wstring& key, const std::wstring& value,
             DataStoreType) override {
    const std::scoped_lock lock(m_Mutex);
    m_Settings[{section, key}] = value;
    return true;
  }
  std::wstring BaseDirectory(path_type type) override { return m_BaseDirectories[type]; }
  std::optional<std::wstring> WindowsDirectory() override { return m_Windows; }
  std::optional<std::wstring> SystemDirectory() override { return m_System; }
  std::optional<std::wstring> PrinterDriverDirectory() override { return m_Driver; }
  std::optional<std::wstring> Translate(const std::wstring& text) override {
    return m_Translate ? m_Translate(text) : std::nullopt;
  }

  std::mutex m_Mutex;
};

}  // namespace rastrel::test
