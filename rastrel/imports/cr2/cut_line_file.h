#pragma once

#include <string>
#include <string_view>

#include "rastrel/xml/node.h"

/// The `svg` element of a cut line becomes a file of its own, cutline.svg, since hosts load
/// graphics by path.
namespace rastrel::imports {

/// Writes the element beside the template of that library path: to the directory part of the path,
/// without a drive letter. If it can't be written there, or if there is a link or anything else
/// that is no file under that name, it goes to the host's directory for files of an import instead.
/// Returns the path of the file, in which nothing is if that fails too; the application log says
/// so.
[[nodiscard]] std::wstring SaveCutLineBeside(const XmlNode& svg, std::wstring_view templatePath);

/// Writes the element to the host's directory for files of an import
/// (`Application::LoadBaseDir`). Returns the path in the same way.
[[nodiscard]] std::wstring SaveCutLineForImport(const XmlNode& svg);

}  // namespace rastrel::imports
