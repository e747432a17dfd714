#pragma once

#include <string>
#include <utility>

#include "interpreter/guardian.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/private_directory.h"

namespace rastrel::odalis {

/// A private directory for the file that a program is given. It is removed with all in it when this
/// object ends, which is reported if it fails, and by the guardian if the engine is ended before.
class CommandDirectory {
 public:
  /// Makes it (see os::PrivateDirectory).
  [[nodiscard]] static Expected<CommandDirectory> Create(interpreter::Guardian& guardian);
  ~CommandDirectory();
  CommandDirectory(CommandDirectory&& other) noexcept = default;
  CommandDirectory& operator=(CommandDirectory&& other) = delete;
  CommandDirectory(const CommandDirectory&) = delete;
  CommandDirectory& operator=(const CommandDirectory&) = delete;

  /// Full native path, without closing separator.
  [[nodiscard]] const std::string& Path() const { return m_Directory.Path(); }

 private:
  CommandDirectory(os::PrivateDirectory directory, interpreter::Guardian& guardian)
      : m_Directory(std::move(directory)), m_Guardian(guardian) {}

  os::PrivateDirectory m_Directory;
  interpreter::Guardian& m_Guardian;
};

}  // namespace rastrel::odalis
