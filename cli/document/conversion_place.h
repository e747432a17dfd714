#pragma once

#include <string>

#include "cli/console/options.h"
#include "cli/input/input_file.h"
#include "cli/installation/job_directory.h"

namespace rastrel::cli {

/// A directory of its own for one conversion. While this lives the library takes it for the RIP's
/// directory, where it makes its temporary files: so all that a conversion leaves goes with it, and
/// if the process is killed, with the next sweep. The application log stays where it is. REQUIRES:
/// no other thread uses the library's paths when this is made and when it goes.
class ConversionPlace {
 public:
  explicit ConversionPlace(JobDirectory directory);
  ~ConversionPlace();
  ConversionPlace(const ConversionPlace&) = delete;
  ConversionPlace& operator=(const ConversionPlace&) = delete;

  /// Native path without a closing separator.
  [[nodiscard]] const std::string& Path() const { return m_Directory.Path(); }

  /// Looks at the operand of the command; standard input is copied here. Throws CommandError.
  [[nodiscard]] InputFile Inspect(const Invocation& invocation) const;

  /// Makes the RIP's directory the usual one again, whose log has the queue
  /// program's messages.
  void LeaveRipDirectory();

 private:
  JobDirectory m_Directory;
  std::wstring m_RipDirectory;  // the usual one
};

}  // namespace rastrel::cli
