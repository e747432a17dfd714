#pragma once

#include <optional>

#include "host/document/program_files.h"
#include "interpreter/task_place.h"
#include "rastrel/platform/host/host.h"

namespace rastrel::document {

/// The files of the embedded host: plotters under `plotters` of the data root, one file each
/// (docs/formats/settings.md), and a private directory that is made when it is first asked for and
/// removed with this object, or by a guardian if this process is killed.
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
  std::optional<interpreter::TaskPlace> m_ImportDirectory;
};

}  // namespace rastrel::document
