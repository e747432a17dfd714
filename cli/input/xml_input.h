#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// An XML file and the demands of its reader.
struct XmlInput {
  std::string path;       ///< native, as given
  std::wstring root;      ///< the name that its root has
  bool namedXml = false;  ///< whether its name has to end in ".xml"
};

/// The path as the readers take it. They refuse paths of less than five characters, so a short name
/// of a user's gets its directory in front.
[[nodiscard]] std::wstring ReaderPath(const std::string& path);

/// Success if this machine has a parser of XML, else why not and what to install.
[[nodiscard]] Expected<void> CheckXmlParser();

/// Fails with the reason why a reader refused the file, as far as the file itself is one: it is
/// missing, unreadable, of another kind, misnamed, no well-formed document (with line and column),
/// has another root, or has a value that is too long. Called right after the reader, in its thread.
/// REQUIRES: CheckXmlParser succeeded.
[[nodiscard]] Expected<void> CheckXmlInput(const XmlInput& input);

/// Text in one line: each control character becomes a space. UTF-8.
[[nodiscard]] std::string OneLineText(const wchar_t* text);

}  // namespace rastrel::cli
