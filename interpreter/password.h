#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

/// The password of a locked PDF. It is in no command line and no environment, where other processes
/// could see it: a file's path is, and the file is read where the password is needed.
namespace rastrel::interpreter {

/// Bytes of a password at most. The format takes 127.
inline constexpr std::size_t MaximumPassword = 1024;

/// Reads a password: the first line of the file at that native path, without its line end. The file
/// may be a pipe, which is waited for. Fails with the code BadInput if the file can't be read, or
/// its first line is empty or longer than MaximumPassword.
[[nodiscard]] Expected<std::string> ReadPassword(const std::string& path);

/// PostScript that gives the interpreter the password; any bytes, with a line feed at the end. For
/// a stream that no job can read. Empty for an empty password.
[[nodiscard]] std::string PasswordText(std::string_view password);

/// A password in this process's memory, which programs that it starts, and theirs, read as a file.
/// So a pipe that the user named is read once, for any number of them.
class SharedPassword {
 public:
  /// Reads it. Fails as ReadPassword, or if there is no memory.
  [[nodiscard]] static Expected<SharedPassword> Read(const std::string& path);

  /// Native path of the file, for RASTREL_RIP_PASSWORD_FILE. It leads there while this lives, and
  /// only for processes of the same user.
  [[nodiscard]] std::string Path() const;

 private:
  explicit SharedPassword(os::FileDescriptor file) : m_File(std::move(file)) {}

  os::FileDescriptor m_File;
};

}  // namespace rastrel::interpreter
