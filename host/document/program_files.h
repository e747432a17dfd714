#pragma once

#include <optional>
#include <string>

namespace rastrel::document {

/// The files of the program around a document, as the application needs them: settings of plotters,
/// and a directory for the files of an import. Paths have no closing separator.
class ProgramFiles {
 public:
  ProgramFiles() = default;
  ProgramFiles(const ProgramFiles&) = delete;
  ProgramFiles& operator=(const ProgramFiles&) = delete;
  virtual ~ProgramFiles() = default;

  /// The path of the settings of the plotter of that index, from 0; empty if there is none.
  [[nodiscard]] virtual std::wstring PlotterPath(int index) = 0;
  /// A text of the settings at a path that PlotterPath returned; nothing for any other path.
  [[nodiscard]] virtual std::optional<std::wstring> ReadPlotter(const std::wstring& path,
                                                                const std::wstring& section,
                                                                const std::wstring& key) = 0;
  /// Stores a text for the plotter in use. False if there is none, or it can't be stored.
  [[nodiscard]] virtual bool WritePlotter(const std::wstring& section, const std::wstring& key,
                                          const std::wstring& value) = 0;
  /// A directory of this program's own, which goes with it; empty if none can be made.
  [[nodiscard]] virtual std::wstring ImportDirectory() = 0;
};

}  // namespace rastrel::document
