#pragma once

#include <optional>

#include "host/document/program_files.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/private_directory.h"

namespace rastrel::document {

/// The files of the embedded host: plotters under `plotters` of the data root, one file each
/// (docs/formats/settings.md), and a private directory that is made when it is first asked for and
/// removed with this object.
class HostFiles : public ProgramFiles {
 public:
  /// The settings must outlive the object. `plottersetup`, `DeviceUsed` is the plotter in use.
  explicit HostFiles(host::Settings& settings) : m_Settings(settings) {}

  [[nodiscard]] std::wstring PlotterPath(int index) override;
  [[nodiscard]] std::optional<std::wstring> ReadPlotter(const std::wstring& path,
                                                        const std::wstring& section,
                                                        const std::wstring& key) override;
  [[nodiscard]] bool WritePlotter(const std::wstring& section, const std::wstring& key,
                                  const std::wstring& value) override;
  [[nodiscard]] std::wstring ImportDirectory() override;

 private:
  host::Settings& m_Settings;
  std::optional<os::PrivateDirectory> m_ImportDirectory;
};

}  // namespace rastrel::document
