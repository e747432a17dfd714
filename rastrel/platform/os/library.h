#pragma once

#include <string>

#include "rastrel/platform/os/outcome.h"

/// Libraries that are loaded while the program runs.
namespace rastrel::os {

/// A loaded library, until the process ends: what it made may live that long, and its code with it.
class LoadedLibrary {
 public:
  /// The address of an exported name, or null.
  [[nodiscard]] void* Find(const char* name) const;

 private:
  friend Expected<LoadedLibrary, std::string> LoadLibrary(const std::string& path);
  explicit LoadedLibrary(void* handle) : m_Handle(handle) {}
  void* m_Handle;
};

/// Loads a library by its native path, with its own symbols before the program's. The reason in the
/// loader's words if it can't be loaded, or if it needs one that is missing.
[[nodiscard]] Expected<LoadedLibrary, std::string> LoadLibrary(const std::string& path);

}  // namespace rastrel::os
