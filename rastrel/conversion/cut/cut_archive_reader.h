#pragma once

#include <cstdint>
#include <string>

#include "rastrel/conversion/cut/cut_objects.h"

class CArchive;

namespace rastrel::conversion {

/// Reads the cut archive (docs/formats/cut-archive.md) at a library path. The file stays; its
/// caller deletes it.
///
///   true                  `out` has the archive's objects, which may be none
///   false                 the file can't be opened, is no regular file, or is of another version;
///                         `out` is empty
///   CArchiveException     endOfFile: the file ends too early, or has a count that its bytes can't
///                         hold; `out` is empty
///
/// An object of another version keeps its defaults, and the next object is read from the byte after
/// that version: all that follows is misread then, up to one of the results above. Memory is in
/// proportion to the file's bytes, whatever its counts say.
[[nodiscard]] bool ReadCutArchive(const std::wstring& path, CCutObjects& out);

/// The same of an archive that is open for loading and has `size` bytes before it, none of them
/// read.
[[nodiscard]] bool ReadCutObjects(CArchive& archive, std::uint64_t size, CCutObjects& out);

}  // namespace rastrel::conversion
