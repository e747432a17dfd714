#include "host/host_files.h"

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/standalone/data_root.h"
#include "rastrel/platform/standalone/ini_file.h"

namespace rastrel::document {

namespace {

std::wstring PlotterDirectory() { return os::FromNative(os::DataRoot()) + L"/plotters/"; }

standalone::IniFile PlotterFile(const std::wstring& path) {
  return {path, PlotterDirectory() + L".lock"};
}

// The number of a setting; 0 for a text that is none, as for a setting that is not there.
int NumberFrom(const std::optional<std::wstring>& text) {
  constexpr std::size_t MaximumDigits = 6;
  if (!text || text->empty() || text->size() > MaximumDigits) return 0;
  int number = 0;
  for (const wchar_t digit : *text) {
    if (digit < L'0' || digit > L'9') return 0;
    number = number * 10 + (digit - L'0');
  }
  return number;
}

}  // namespace

std::wstring HostFiles::PlotterPath(int index) {
  static_cast<void>(standalone::DataRootState());
  const std::wstring path = PlotterDirectory() + std::to_wstring(index) + L".ini";
  return index >= 0 && os::Exists(path) ? path : std::wstring();
}

std::optional<std::wstring> HostFiles::ReadPlotter(const std::wstring& path,
                                                   const std::wstring& section,
                                                   const std::wstring& key) {
  const std::wstring directory = PlotterDirectory();
  if (!path.starts_with(directory) ||
      path.find_first_of(L"/\\", directory.size()) != std::wstring::npos) {
    return std::nullopt;
  }
  return PlotterFile(path).Read(section, key);
}

bool HostFiles::WritePlotter(const std::wstring& section, const std::wstring& key,
                             const std::wstring& value) {
  const int used = NumberFrom(m_Settings.Read(L"plottersetup", L"DeviceUsed", DS_USER));
  const std::wstring path = PlotterPath(used);
  return !path.empty() && PlotterFile(path).Write(section, key, value);
}

std::wstring HostFiles::ImportDirectory() {
  if (!m_ImportDirectory) {
    auto made = interpreter::TaskPlace::Make("rastrel-import-");
    if (!made) return {};
    m_ImportDirectory.emplace(std::move(*made));
  }
  return os::FromNative(m_ImportDirectory->Directory());
}

}  // namespace rastrel::document
