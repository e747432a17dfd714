#pragma once

#include <string>
#include <utility>

#include "cli/document/drawing.h"
#include "host/document_host.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/private_directory.h"

namespace rastrel::cli {

/// A picture of a page in the system's temporary files, for somebody to look at. Goes with the
/// object, unless it is kept. Move-only; a moved-from one removes nothing.
class ShownPicture {
 public:
  /// Draws the page that is asked for, or the first. `input` gives the file its name.
  [[nodiscard]] static Expected<ShownPicture> Create(document::DocumentHost& host,
                                                     DrawingRequest request,
                                                     const std::string& input);

  [[nodiscard]] const std::string& Path() const { return m_Path; }
  /// Leaves the file to a viewer, which may still read it when this program has ended: the system's
  /// temporary files are its end.
  void Keep() { m_Folder.Keep(); }
  /// Shows it on the terminal. False, and nothing is shown, if that takes no pictures.
  [[nodiscard]] bool ShowOnTerminal() const;

 private:
  ShownPicture(os::PrivateDirectory folder, std::string path)
      : m_Folder(std::move(folder)), m_Path(std::move(path)) {}

  os::PrivateDirectory m_Folder;
  std::string m_Path;
};

}  // namespace rastrel::cli
