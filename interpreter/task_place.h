#pragma once

#include <string>
#include <utility>

#include "interpreter/guardian.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/private_directory.h"

namespace rastrel::interpreter {

/// The place of one task: a private directory, and the guardian that removes it with all it holds
/// at whatever moment this process is ended. Move-only.
class TaskPlace {
 public:
  /// Any thread may; the place is used and ended on that thread. The directory's name begins with
  /// `prefix`. Fails if the directory or the guardian can't be made.
  [[nodiscard]] static Expected<TaskPlace> Make(const char* prefix);

  /// Native path of the directory.
  [[nodiscard]] const std::string& Directory() const { return m_Directory.Path(); }
  [[nodiscard]] Guardian& Guard() { return m_Guardian; }

 private:
  TaskPlace(Guardian guardian, os::PrivateDirectory directory)
      : m_Guardian(std::move(guardian)), m_Directory(std::move(directory)) {}

  Guardian m_Guardian;  // outlives the directory
  os::PrivateDirectory m_Directory;
};

}  // namespace rastrel::interpreter
