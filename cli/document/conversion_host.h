#pragma once

#include <optional>
#include <string>

#include "host/document_host.h"
#include "rastrel/platform/host/settings.h"

namespace rastrel::cli {

/// The embedded host for a conversion. Unless a person was asked, the values of its dialog are not
/// stored for the next time: they are the options of one command.
class ConversionHost : public document::DocumentHost {
 public:
  explicit ConversionHost(bool remembers)
      : m_Settings(DocumentHost::GetSettings()), m_Remembers(remembers) {}

  [[nodiscard]] host::Settings& GetSettings() override {
    return m_Remembers ? DocumentHost::GetSettings() : m_Settings;
  }

 private:
  class ForgetfulSettings : public host::Settings {
   public:
    explicit ForgetfulSettings(host::Settings& inner) : m_Inner(inner) {}
    [[nodiscard]] std::optional<std::wstring> Read(const std::wstring& section,
                                                   const std::wstring& key,
                                                   DataStoreType store) override {
      return m_Inner.Read(section, key, store);
    }
    [[nodiscard]] bool Write(const std::wstring& section, const std::wstring& key,
                             const std::wstring& value, DataStoreType store) override;

   private:
    host::Settings& m_Inner;
  };

  ForgetfulSettings m_Settings;
  bool m_Remembers;
};

}  // namespace rastrel::cli
