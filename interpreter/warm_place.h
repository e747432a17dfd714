#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::interpreter {

/// The directory of one user's warm interpreters, "warm" in the data root: theirs alone (0700).
///
///     rastrel-warm    the program
///     start.lock      locked while an interpreter starts or ends, so that these are one by one
///     NAME            the socket of the interpreter of that name (WarmName)
///     NAME.new        that socket before it listens
///     NAME.lock       locked by it as long as it lives; its time is that of the last job
///     NAME.wish       a job that one was wanted for, and when
///
/// Sockets are reached through the directory's descriptor, so that its path may be of any length.
class WarmPlace {
 public:
  /// Opens it. Fails if it is not there, if it is another user's, or open to others.
  [[nodiscard]] static Expected<WarmPlace> Open(const std::string& directory);
  /// Native path of this user's.
  [[nodiscard]] static std::string Path();

  [[nodiscard]] int Descriptor() const { return m_Directory.Get(); }

  /// A connection to the interpreter of that name; a failure if there is none, or it is not this
  /// user's. It waits a few seconds at most for each message.
  [[nodiscard]] Expected<os::FileDescriptor> Connect(const std::string& name) const;
  /// Makes the socket of that name, in place of one of an interpreter that has ended.
  [[nodiscard]] Expected<os::FileDescriptor> Listen(const std::string& name) const;
  /// Whether the socket of that name is the one with this number of an inode.
  [[nodiscard]] bool Has(const std::string& name, ino_t inode) const;

  /// Locks a file of the place, which is made if it is missing. Without `wait` a lock that another
  /// process holds is a failure with EWOULDBLOCK.
  [[nodiscard]] Expected<os::FileDescriptor> Lock(const std::string& file, bool wait) const;
  /// Whether an interpreter of that name lives, if it listens yet or not.
  [[nodiscard]] bool IsHeld(const std::string& name) const;
  /// Names of those that live, the one that had no job for the longest time first.
  [[nodiscard]] std::vector<std::string> Living() const;

  /// Notes that an interpreter of that name is wanted. True for the second wish within a minute:
  /// to one of all who wish at the same time.
  [[nodiscard]] bool Wish(const std::string& name) const;
  /// Removes the file of that name, if it is there.
  void Remove(const std::string& file) const;

 private:
  explicit WarmPlace(os::FileDescriptor directory) : m_Directory(std::move(directory)) {}

  os::FileDescriptor m_Directory;
};

}  // namespace rastrel::interpreter
