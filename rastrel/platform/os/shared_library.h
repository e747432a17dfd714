#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

/// Libraries that are bound when they are first needed. Linking one costs its share, and that of
/// all that it needs in turn, of every start of every program.
namespace rastrel::os {

/// A library of the system, by the name that programs are linked against ("libxml2.so.2"), or one
/// of our own by its native path. Stays loaded for the life of the process, whatever becomes of
/// this object; may be copied. Thread: any.
class SharedLibrary {
 public:
  /// Loads it. The failure's `why` is the loader's message.
  [[nodiscard]] static Expected<SharedLibrary> Open(const char* name);

  /// Sets the function to the one of that name. False if the library has none; the function is then
  /// null. REQUIRES: the type is the one that the library's header declares.
  template <typename Function>
  [[nodiscard]] bool Bind(Function*& function, const char* name) const {
    function = reinterpret_cast<Function*>(Find(name));
    return function != nullptr;
  }

 private:
  explicit SharedLibrary(void* library) : m_Library(library) {}
  [[nodiscard]] void* Find(const char* name) const;

  void* m_Library;
};

/// The module that holds this code, program or shared library, as the loader's own handle: the same
/// one that opening it by name gives. It is not counted and must not be closed. Null if the loader
/// doesn't know it. Thread: any.
[[nodiscard]] void* OwnModule();

}  // namespace rastrel::os
