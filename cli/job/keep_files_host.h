#pragma once

#include "rastrel/platform/host/host.h"

namespace rastrel::cli {

/// For its life the host in force answers "Keep PS Files" with 1, and all else as before. Nothing
/// is written to the user's settings.
class KeepFilesHost : public host::Host {
 public:
  KeepFilesHost();
  ~KeepFilesHost() override;
  KeepFilesHost(const KeepFilesHost&) = delete;
  KeepFilesHost& operator=(const KeepFilesHost&) = delete;

  [[nodiscard]] host::Settings& GetSettings() override { return m_Settings; }
  [[nodiscard]] host::Directories& GetDirectories() override { return m_Inner.GetDirectories(); }
  [[nodiscard]] host::Translation& GetTranslation() override { return m_Inner.GetTranslation(); }

 private:
  class KeepingSettings : public host::Settings {
   public:
    explicit KeepingSettings(host::Settings& inner) : m_Inner(inner) {}
    [[nodiscard]] std::optional<std::wstring> Read(const std::wstring& section,
                                                   const std::wstring& key,
                                                   DataStoreType store) override;
    [[nodiscard]] bool Write(const std::wstring& section, const std::wstring& key,
                             const std::wstring& value, DataStoreType store) override;

   private:
    host::Settings& m_Inner;
  };

  host::Host& m_Inner;
  KeepingSettings m_Settings;
};

/// Whether the settings in force keep PostScript files.
[[nodiscard]] bool KeepsFiles();

}  // namespace rastrel::cli
