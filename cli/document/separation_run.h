#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/installation/job_directory.h"
#include "cli/job/terminal_views.h"
#include "host/document_host.h"
#include "rastrel/platform/values/document_values.h"

namespace rastrel::cli {

/// The embedded host while a file is separated: the library's settings name the private copy, and
/// the user's own settings file stays as it is.
class SeparationHost : public document::DocumentHost {
 public:
  /// Installs itself, for its life. `copy` is the library path of the file to separate.
  explicit SeparationHost(const std::wstring& copy);
  ~SeparationHost() override;

  [[nodiscard]] host::Settings& GetSettings() override { return *m_Settings; }

 private:
  std::unique_ptr<host::Settings> m_Settings;
};

/// A plane of the separated file.
struct SeparatedPlane {
  std::string name;  ///< of the ink, UTF-8
  host::ObjectHandle object = 0;
  int page = 1;
  int width = 1;  ///< pixels
  int height = 1;
  double xResolution = 72;  ///< pixels per inch
  double yResolution = 72;
  std::string color;    ///< of the ink on white, "#rrggbb"
  double coverage = 0;  ///< mean ink, in percent
  double area = 0;      ///< that part of the page's area, square centimetres
  std::vector<std::string> files;
};

/// A file that is separated by the library. Its private copy and its planes lie in a directory of
/// their own below the separation directory, and go with this object.
class SeparationRun {
 public:
  /// Copies the file. Ends the command if it can't.
  SeparationRun(const std::string& path, const std::string& name);

  /// Separates it under the dialog that `views` shows. Ends the command with a message, but for a
  /// person who cancelled: then false.
  [[nodiscard]] bool Separate(TerminalViews& views);

  [[nodiscard]] document::DocumentHost& Host() { return *m_Host; }
  /// The planes in their order. Ends the command if one can't be read for its coverage.
  [[nodiscard]] std::vector<SeparatedPlane> Planes();

 private:
  JobDirectory m_Directory;  // before the host, whose planes are in it
  std::unique_ptr<SeparationHost> m_Host;
};

}  // namespace rastrel::cli
