#pragma once

#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

/// Paths as the formats write them, and the one way from them to this machine.
///
/// A path of the library is wide text in which '/' and '\' both separate, and which may begin with
/// a drive letter. Only ToNative turns it into a path of the machine, and every operation of this
/// folder that takes wide text calls it.
///
/// A name of this machine may have bytes that no such text can spell: those of no UTF-8, and a
/// backslash that separates nothing. FromNative keeps each as one code point, U+DC00 and the byte,
/// and ToNative makes that byte of it again. No character has these code points, and a text that is
/// shown (Utf8FromWide) has U+FFFD in their places.
namespace rastrel::os {

/// The native path of a library path, in UTF-8 but for kept bytes:
/// - '\' becomes '/', and a kept byte that byte;
/// - a drive letter and colon become `drive_<letter>`, lower case, under DataRoot();
/// - a component that does not exist as spelled, below a directory that does, is looked up once
///   ignoring (ASCII) case; the first match in byte order is taken.
/// An empty path stays empty. Components that don't exist at all are kept as spelled.
[[nodiscard]] std::string ToNative(std::wstring_view path);

/// A native path as library text, which ToNative turns into a path of the same file: slashes stay,
/// bytes that the text can't spell are kept, and a relative path that begins as with a drive letter
/// gets "./" in front.
[[nodiscard]] std::wstring FromNative(std::string_view path);

/// Fails unless the library's command lines can hold this native path: they put each argument in
/// double quotes, which nothing escapes, and are text in which a backslash separates. So the path
/// must be UTF-8 without double quotes, backslashes and control characters. The failure is a
/// sentence that names the path and the fault.
[[nodiscard]] Expected<void> CheckForCommandLine(std::string_view path);

/// The root of the library's own files: $RASTREL_HOME, else `rastrel` under $XDG_DATA_HOME, else
/// `.local/share/rastrel` under the home directory. No closing slash. Read from the environment at
/// every call; the directory need not exist. A relative $RASTREL_HOME is taken from the directory
/// that was the present one at the first look at that value. A child gets it so (CCPHelper).
[[nodiscard]] std::string DataRoot();

/// The parts of a path as `_wsplitpath` makes them. drive + directory + name + extension is the
/// path again. `drive` is a letter and its colon or empty; `directory` ends in its separator;
/// `extension` begins with the last dot of the last component, or is empty.
struct PathParts {
  std::wstring drive;
  std::wstring directory;
  std::wstring name;
  std::wstring extension;
};
[[nodiscard]] PathParts SplitPath(std::wstring_view path);

/// True for '/' and '\'.
[[nodiscard]] constexpr bool IsSeparator(wchar_t character) {
  return character == L'/' || character == L'\\';
}
/// True if the text is not empty and its last character is a separator.
[[nodiscard]] bool EndsInSeparator(std::wstring_view path);
/// The path with a closing '\' unless it ends in a separator; an empty path becomes "\".
[[nodiscard]] std::wstring WithClosingBackslash(std::wstring path);

/// Full native path of the running program, or empty.
[[nodiscard]] std::string ExecutablePath();
/// Full native path of the file that holds this code (shared library or program), or empty.
[[nodiscard]] std::string ModulePath();
/// The current directory as a native path, or empty.
[[nodiscard]] std::string CurrentDirectory();

/// A variable of the environment, or empty if it is not set.
[[nodiscard]] std::string EnvironmentValue(const char* name);

}  // namespace rastrel::os
