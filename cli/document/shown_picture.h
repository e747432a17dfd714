#pragma once

#include <string>

#include "cli/document/drawing.h"
#include "host/document_host.h"

namespace rastrel::cli {

/// A picture of a page in the system's temporary files, for somebody to look at. Goes with the
/// object, unless it is kept.
class ShownPicture {
 public:
  /// Draws the page that is asked for, or the first. `input` gives the file its name. Throws
  /// CommandError(JobFailed) if it can't be drawn.
  ShownPicture(document::DocumentHost& host, DrawingRequest request, const std::string& input);
  ~ShownPicture();
  ShownPicture(const ShownPicture&) = delete;
  ShownPicture& operator=(const ShownPicture&) = delete;

  [[nodiscard]] const std::string& Path() const { return m_Path; }
  /// Leaves the file to a viewer, which may still read it when this program has ended: the system's
  /// temporary files are its end.
  void Keep() { m_Folder.clear(); }
  /// Shows it on the terminal. False, and nothing is shown, if that takes no pictures.
  [[nodiscard]] bool ShowOnTerminal() const;

 private:
  std::string m_Folder;
  std::string m_Path;
};

}  // namespace rastrel::cli
