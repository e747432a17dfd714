#pragma once

#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// A file that is to be printed or converted.
struct InputFile {
  std::string path;        ///< native, as given
  std::string safeName;    ///< base name of the working copy, without extension
  std::string extension;   ///< ".ps", ".eps" or ".pdf", by the content
  unsigned access = 0600;  ///< permission bits of its results: its own, writable for its owner
};

/// Looks at the file's beginning. Fails if it is missing, unreadable, no
/// regular file, or neither PostScript, EPS nor PDF; the message then says that it can't `verb` the
/// file.
[[nodiscard]] Expected<InputFile> InspectInput(const std::string& path, const char* verb = "print");

/// The base name, without extension, that a working copy of a file has. It becomes part of a
/// PostScript comment, a command line, names of output files and of the spool entry. Backslashes,
/// parentheses, quotes, characters that are not shown (os::IsSafeToShow) and ill-formed UTF-8
/// become '_'; dots, dashes and blanks at the front and blanks and dots at the end go; at most 150
/// bytes stay. An extension goes unless there is nothing before it. Never empty: "job".
[[nodiscard]] std::string SafeJobName(std::string_view fileName);

}  // namespace rastrel::cli
