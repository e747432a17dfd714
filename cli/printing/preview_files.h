#pragma once

#include <set>
#include <string>
#include <vector>

#include "cli/job/job_event.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/output_file.h"

namespace rastrel::cli {

/// Holds a preview's files back while the job runs, since only its end shows how many there are,
/// and then brings all of them to the names that the user wants, or none. For "sign.tif": the first
/// page becomes that, another page "sign-2.tif", a plane "sign-Cyan.tif" or "sign-2-Cyan.tif".
/// Called on one thread at a time.
class PreviewFiles {
 public:
  /// `target` is the native path of the first file, and ends in an extension. The engine's file
  /// names begin with `jobName`. `directory` is where files wait, native; it is made if need be.
  PreviewFiles(const std::string& target, std::string jobName, std::string directory);

  /// Takes the file of an output event from where the output engine put it: true, and the event is
  /// not for observers. False for all other events, and for a file that can't be moved, whose
  /// event becomes a line of the log.
  [[nodiscard]] bool Hold(JobEvent& event);

  /// The first file that could not be held, as a message; empty if there was none.
  [[nodiscard]] const std::string& Fault() const { return m_Fault; }

  /// Gives the files their names; `first` is for the target, `others` for the other names. Fails
  /// without a change; the failure is one of OutputFile.
  [[nodiscard]] Expected<void> Deliver(os::Existing first, os::Existing others);

  /// The names of the files, in the order in which they came.
  [[nodiscard]] const std::vector<std::string>& Names() const { return m_Names; }
  /// The name that a delivered file gets.
  [[nodiscard]] std::string NameFor(const std::string& delivered) const;

 private:
  std::string m_Target;
  std::string m_Stem;       // the target without its extension
  std::string m_Extension;  // with its dot
  std::string m_JobName;
  std::string m_Directory;
  std::set<std::string> m_Taken;
  std::vector<std::string> m_Names;
  std::vector<std::string> m_Held;  // where the file of each name waits
  std::string m_Fault;
};

}  // namespace rastrel::cli
