#pragma once

namespace rastrel::readers {

/// Whether the path names something that exists and whose extension, without its dot and blanks at
/// both ends, is "xml" in any case. False for null.
[[nodiscard]] bool IsNamedXml(const wchar_t* path);

}  // namespace rastrel::readers
