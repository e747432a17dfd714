#include "rastrel/platform/standalone/standalone_host.h"

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::standalone {

std::wstring DataRootDirectories::BaseDirectory(path_type type) {
  if (type == PATH_TEMP) {
    const std::string temporary = os::EnvironmentValue("TMPDIR");
    return temporary.starts_with('/') ? os::FromNative(temporary) : L"/tmp";
  }
  EnsureDataRoot();
  return os::FromNative(os::DataRoot());
}

std::optional<std::wstring> DataRootDirectories::WindowsDirectory() { return std::nullopt; }

std::optional<std::wstring> DataRootDirectories::SystemDirectory() { return std::nullopt; }

std::optional<std::wstring> DataRootDirectories::PrinterDriverDirectory() { return std::nullopt; }

std::optional<std::wstring> EnglishTranslation::Translate(const std::wstring& text) {
  // The texts are written in English, so that the mark in front is all there is to take away.
  const std::wstring mark = L"(*v*)";
  return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

}  // namespace rastrel::standalone
