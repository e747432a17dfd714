#pragma once

#include <string>

namespace rastrel::cli {

/// A directory below the data root's `jobs` that one job has to itself: its working copy, and the
/// prefix that the library writes beside it. Removed with all it holds at the end of its life,
/// unless it is kept; if the process is killed, by a later command (SweepLeftovers).
class JobDirectory {
 public:
  /// Makes one whose name begins with this process's id; `keep` leaves it for good. Throws
  /// CommandError(NotInstalled) if it can't be made.
  explicit JobDirectory(bool keep);
  ~JobDirectory();
  JobDirectory(const JobDirectory&) = delete;
  JobDirectory& operator=(const JobDirectory&) = delete;

  /// Native path without a closing separator.
  [[nodiscard]] const std::string& Path() const { return m_Path; }

  /// Copies a file in as `name`, and returns the copy's native path. Throws CommandError: BadInput
  /// if the file can't be opened, JobFailed otherwise.
  [[nodiscard]] std::string CopyIn(const std::string& path, const std::string& name) const;

 private:
  std::string m_Path;
  bool m_Keep;
};

/// Process id at the front of a job directory's name ("123-1"), or 0 if the name is of another
/// form.
[[nodiscard]] unsigned ProcessOfJobDirectory(const std::string& name);

}  // namespace rastrel::cli
