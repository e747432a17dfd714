#pragma once

#include <string>
#include <string_view>

/// Names of the parts of a package: paths with slashes below the package's folder, without a slash
/// in front, as "xl/workbook.xml".
namespace rastrel::spreadsheet {

/// Why the name of an entry is refused, as a message; empty if it is not. A name leads nowhere but
/// below the folder: it is not empty, has no drive, no backslash, no control character, no slash in
/// front, and no element that is empty, "." or "..". One slash at the end means a folder.
[[nodiscard]] std::string WhyBadName(std::string_view name);

/// Where a relationship's target leads from the part that the relationships belong to: below its
/// folder, or below the package if it begins with a slash. Empty if it leads out of the package.
/// Percent escapes are read.
[[nodiscard]] std::string ResolveTarget(std::string_view part, std::string_view target);

/// Name of the part that holds a part's relationships; an empty name is the package's own.
[[nodiscard]] std::string RelationshipsOf(std::string_view part);

/// The name for a message: bytes that are no printable ASCII, or a quote, as "\xHH", cut to 200
/// bytes.
[[nodiscard]] std::string PrintableName(std::string_view name);

/// Whether two names are the same but for the case of ASCII letters.
[[nodiscard]] bool SameName(std::string_view one, std::string_view other);

}  // namespace rastrel::spreadsheet
