#pragma once

#include <set>
#include <string>
#include <vector>

#include "cli/job/job_event.h"

namespace rastrel::cli {

/// Takes a preview's files from where the output engine puts them to the names that the user wants.
/// For "sign.tif": the first page becomes that, another page "sign-2.tif", a plane
/// "sign-Cyan.tif" or "sign-2-Cyan.tif". Called on one thread at a time.
class PreviewFiles {
 public:
  /// `target` is the native path that the user gave, and ends in an extension; The engine's
  /// file names begin with `jobName`.
  PreviewFiles(const std::string& target, std::string jobName);

  /// Moves the file of an output event over whatever has its new name, and puts that name into the
  /// event. If it can't be moved, the event becomes a line of the log. All other events stay.
  void Take(JobEvent& event);

  /// The first fault as a message; empty if there was none.
  [[nodiscard]] const std::string& Fault() const { return m_Fault; }

  /// The names that files were moved to, in the order in which they came.
  [[nodiscard]] const std::vector<std::string>& Names() const { return m_Names; }
  /// The name that a delivered file gets.
  [[nodiscard]] std::string NameFor(const std::string& delivered) const;

 private:
  std::string m_Stem;       // the target without its extension
  std::string m_Extension;  // with its dot
  std::string m_JobName;
  std::set<std::string> m_Taken;
  std::vector<std::string> m_Names;
  std::string m_Fault;
};

}  // namespace rastrel::cli
