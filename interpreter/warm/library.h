#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::interpreter::warm {

/// Ghostscript as a library, bound when it is wanted: one interpreter in this process, used by one
/// thread. It writes to descriptors 1 and 2 and reads 0, as its program does; a fork has a copy.
class Library {
 public:
  /// Loads the machine's library. The failure names the function that is missing.
  [[nodiscard]] static Expected<Library> Load();

  /// Makes the interpreter with the program's arguments, its name first, which name no file: its
  /// options are set then and its device is open. The failure has the interpreter's number.
  [[nodiscard]] Expected<void> Start(const std::vector<std::string>& arguments);
  /// Paints one of each kind on the first page and takes it all back, so that profiles, links of
  /// colors and a font are there for every job. A job can see nothing of it but the time.
  [[nodiscard]] Expected<void> PaintOnce();

  /// Runs the program's arguments from the first "-f" or "-c" on as the program
  /// does, to its end. The result is the program's exit status.
  [[nodiscard]] int Run(const std::vector<std::string>& script);

 private:
  struct Functions {
    int (*newInstance)(void** instance, void* caller);
    int (*setStdio)(void* instance, int (*input)(void*, char*, int),
                    int (*output)(void*, const char*, int), int (*error)(void*, const char*, int));
    int (*setArgEncoding)(void* instance, int encoding);
    int (*initWithArgs)(void* instance, int count, char** arguments);
    int (*runString)(void* instance, const char* text, int userErrors, int* exitCode);
    int (*addControlPath)(void* instance, int kind, const char* path);
    int (*removeControlPath)(void* instance, int kind, const char* path);
    int (*exit)(void* instance);
    int (*revision)(void* revision, int size);
  };

  explicit Library(const Functions& functions) : m_Functions(functions) {}
  int RunString(const std::string& text);
  int RunFile(const std::string& path);
  int RunArguments(const std::vector<std::string>& script);
  [[nodiscard]] bool Flush();
  [[nodiscard]] bool HasQuietDevice();
  void SayUnrecoverable() const;

  Functions m_Functions;
  void* m_Instance = nullptr;
  int m_ExitCode = 0;     // of the last text that was run
  bool m_IsSound = true;  // texts of this program's own still run in it
};

}  // namespace rastrel::interpreter::warm
