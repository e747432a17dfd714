#pragma once

#include <string>

/// The arguments and streams that every child program is started with.
namespace rastrel::children {

/// Native path of a path argument. Arguments are the library's text; a name that is no UTF-8 has no
/// such text and is taken as it is.
[[nodiscard]] std::string NativeArgument(const char* argument);

/// Native directory, without a closing slash, of the program as it was called: a data root may hold
/// links to programs. `program` is the first argument of the command line.
[[nodiscard]] std::string ProgramDirectory(const char* program);

/// Opens /dev/null for each of the three standard streams that is closed, so that no file of ours
/// becomes one of them.
void OpenStandardStreams();

}  // namespace rastrel::children
