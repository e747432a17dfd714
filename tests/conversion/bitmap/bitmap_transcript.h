#pragma once

#include <string>

#include "rastrel/platform/os/text.h"
#include "tests/support/host_calls.h"

namespace rastrel::test {

// The calls of a recording host when a page directory becomes a bitmap object, each line ended by a
// line feed.

/// Binding the plane reader, up to its interface.
inline const std::string BoundReader =
    "SearchPath(\"cfplane.dll\") -> \"/programs/cfplane.dll\"\n"
    "LoadLibrary(\"/programs/cfplane.dll\") -> library\n"
    "GetCreateFunction(library, _ZN13DynamicExportI8CFMDllIFE6CreateEv) -> Create\n"
    "GetDestroyFunction(library, _ZN13DynamicExportI8CFMDllIFE7DestroyEPS0_) -> Destroy\n"
    "Create() -> reader\n";
inline const std::string FoundPlane =
    "GetInterface({20D77C57-E591-4554-9341-193D5265AEAD}) -> plane\n";
/// Giving it back.
inline const std::string FreedReader = "Destroy(reader)\nFreeLibrary(library)\n";

/// A path as a line has it.
inline std::string QuotedPath(const std::string& path) { return TextOf(os::WideFromUtf8(path)); }

/// The whole of it. `info` is the ".info" file's path, `size` the object's as "21, 29.7", and
/// `object` the object that is made, as "#2".
inline std::string LoadedBitmap(const std::string& info, const std::string& size,
                                const std::string& object) {
  return BoundReader + FoundPlane + "SetBaseDirectory(\"/base\") -> 1\n" + "Open(" +
         QuotedPath(info) +
         ") -> 1\n"
         "GetDimensions(2, 1) -> 1\n"
         "GetPixels() -> 1\n"
         "NewVKBitmap() -> B1\n"
         "B1.Create(2, -1, 24, 8 bytes) -> 1\n"
         "DBInsertBitmap(" +
         size + ") -> " + object + "\nDeleteVKBitmap(B1)\nDSAddObject(" + object +
         ") -> 1\nDBValidateBounds(" + object + ")\nReleasePixels(header, pixels)\n" + FreedReader;
}

}  // namespace rastrel::test
