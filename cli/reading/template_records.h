#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/xml/node.h"

class CCROFileImport;
class CLLXFileImport;

namespace rastrel::cli {

/// The records of a template, as objects of JSON (docs/formats/template-records.md): the template
/// itself first, then a plate each. Values are the file's.
using TemplateRecords = std::vector<nlohmann::ordered_json>;
[[nodiscard]] TemplateRecords RecordsOf(const CCROFileImport& file);
[[nodiscard]] TemplateRecords RecordsOf(const CLLXFileImport& file);

/// Whether a root is that of a cro template. The second generation of Crown Trophy may use the same
/// name, and has a size of its table.
[[nodiscard]] bool IsCroRoot(const XmlNode& root);

/// As lines, each with a line feed. `path` is added to the first as the member "file".
[[nodiscard]] std::string RecordLines(TemplateRecords records, const std::string& path);

/// Whether a file is a cro or llx template: by its extension, or a cro one with the extension "xml"
/// by its root. `path` is native.
[[nodiscard]] bool HasRecords(const std::string& path);
/// The lines of such a file. The failure is a message for the user.
[[nodiscard]] Expected<std::string> ReadRecordLines(const std::string& path);

}  // namespace rastrel::cli
