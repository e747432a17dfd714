#pragma once

#include <string>

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

/// Throws CommandError(NotInstalled) if there is nothing on this machine that reads XML.
void RequireXmlParser();

/// Throws CommandError(BadInput) with the reason why a reader refused the file, as far as the file
/// itself is one: it is missing, unreadable, of another kind, misnamed, no well-formed document
/// (with line and column), has another root, or has a value that is too long. Returns if it is
/// none of these. Called right after the reader, in its thread. Throws as RequireXmlParser does.
void ThrowIfRefused(const XmlInput& input);

/// Text in one line: each control character becomes a space. UTF-8.
[[nodiscard]] std::string OneLineText(const wchar_t* text);

/// A number without needless digits, with a point.
[[nodiscard]] std::string ShortNumber(double number);

}  // namespace rastrel::cli
