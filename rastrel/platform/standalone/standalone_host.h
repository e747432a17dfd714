#pragma once

#include <optional>
#include <string>

#include "rastrel/platform/host/host.h"
#include "rastrel/platform/standalone/kept_text.h"

/// The standalone host, for a program that brings none: everything is under the data root
/// (platform/os/path.h).
namespace rastrel::standalone {

/// `settings.ini` of the data root: UTF-8, sections in brackets, `key = value`, lines that begin
/// with ';' or '#' are comments and survive a write. The file is looked at in every call, so a
/// change by another program counts at once, and read if it changed; replaced as a whole, under a
/// lock that other processes honour. Values are one line; a line end in one, or text that would not
/// read back as it is, is refused. A file that others may write to (os::CheckTrusted) has no
/// values, and gets none.
class IniSettings : public host::Settings {
 public:
  [[nodiscard]] std::optional<std::wstring> Read(const std::wstring& section,
                                                 const std::wstring& key,
                                                 DataStoreType store) override;
  [[nodiscard]] bool Write(const std::wstring& section, const std::wstring& key,
                           const std::wstring& value, DataStoreType store) override;

 private:
  KeptText m_Text;
};

/// The data root's directories. There are no system directories on this platform.
class DataRootDirectories : public host::Directories {
 public:
  [[nodiscard]] std::wstring BaseDirectory(path_type type) override;
  [[nodiscard]] std::optional<std::wstring> WindowsDirectory() override;
  [[nodiscard]] std::optional<std::wstring> SystemDirectory() override;
  [[nodiscard]] std::optional<std::wstring> PrinterDriverDirectory() override;
};

/// English: the mark "(*v*)" is removed, and the rest stays.
class EnglishTranslation : public host::Translation {
 public:
  [[nodiscard]] std::optional<std::wstring> Translate(const std::wstring& text) override;
};

/// The three as one host, without a document.
class StandaloneHost : public host::Host {
 public:
  [[nodiscard]] host::Settings& GetSettings() override { return m_Settings; }
  [[nodiscard]] host::Directories& GetDirectories() override { return m_Directories; }
  [[nodiscard]] host::Translation& GetTranslation() override { return m_Translation; }

 private:
  IniSettings m_Settings;
  DataRootDirectories m_Directories;
  EnglishTranslation m_Translation;
};

}  // namespace rastrel::standalone
