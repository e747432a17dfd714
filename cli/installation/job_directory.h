#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// A directory below the data root's `jobs` that one job has to itself: its working copy, and the
/// prefix that the library writes beside it. Removed with all it holds at the end of its life,
/// unless it is kept; if the process is killed, by a later command (SweepLeftovers). Move-only; a
/// moved-from one removes nothing.
class JobDirectory {
 public:
  /// Makes one whose name begins with this process's id; `keep` leaves it for good. The failure is
  /// a message for the user: the installation lacks its place.
  [[nodiscard]] static Expected<JobDirectory> Create(bool keep);
  /// The same in another directory, by its native path, that SweepLeftovers looks into.
  [[nodiscard]] static Expected<JobDirectory> CreateIn(const std::string& place);
  ~JobDirectory();
  JobDirectory(JobDirectory&& other) noexcept;
  JobDirectory& operator=(JobDirectory&&) = delete;
  JobDirectory(const JobDirectory&) = delete;
  JobDirectory& operator=(const JobDirectory&) = delete;

  /// Native path without a closing separator.
  [[nodiscard]] const std::string& Path() const { return m_Path; }

  /// Copies a file in as `name`, and returns the copy's native path. A file that can't be opened is
  /// FailureCode::BadInput.
  [[nodiscard]] Expected<std::string> CopyIn(const std::string& path,
                                             const std::string& name) const;

 private:
  JobDirectory(std::string path, bool keep);
  [[nodiscard]] static Expected<JobDirectory> CreateNamed(const std::string& begin, bool keep);

  std::string m_Path;
  bool m_Keep;
};

/// Process id at the front of a job directory's name ("123-1"), or 0 if the name is of another
/// form.
[[nodiscard]] unsigned ProcessOfJobDirectory(const std::string& name);

}  // namespace rastrel::cli
