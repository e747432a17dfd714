#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::interpreter {

/// A name by which the prolog opens the interpreter's own error stream once more, for a buffer of
/// its own size (reports.ps): a symbolic link to the stream's descriptor, in a directory that the
/// interpreter may write to.
///
/// Whoever opens the stream anew may also read it, and so the run's secret word. So the name is
/// secret, and it is removed before a job can begin.
class ReportLink {
 public:
  /// Makes it in that directory, a native path without a closing slash. Without one, as on a file
  /// system that has no links, reports go by the interpreter's own stream and take longer.
  explicit ReportLink(const std::string& directory);
  ReportLink(const ReportLink&) = delete;
  ReportLink& operator=(const ReportLink&) = delete;
  ~ReportLink();

  /// Within the directory; empty if there is none.
  [[nodiscard]] const std::string& Name() const { return m_Name; }
  /// Removes it, if it is still there. Fails if it stays.
  [[nodiscard]] Expected<void> Remove();

 private:
  std::string m_Name;
  std::string m_Path;  // empty: there is none any more
};

}  // namespace rastrel::interpreter
