#pragma once

#include <cstdint>
#include <string_view>

/// The head of a DOS EPS file, which has PostScript and pictures of it for screens:
///
///     +-------------+-----------------+-----------------+-----------------+-----------+
///     | C5 D0 D3 C6 | PostScript      | metafile        | TIFF            | check sum |
///     |             | place and size  | place and size  | place and size  |           |
///     | 4 bytes     | 4 + 4 bytes     | 4 + 4 bytes     | 4 + 4 bytes     | 2 bytes   |
///     +-------------+-----------------+-----------------+-----------------+-----------+
///
/// Numbers have the least significant byte first; places count from the file's beginning.
namespace rastrel::os {

inline constexpr std::string_view DosEpsSignature = "\xC5\xD0\xD3\xC6";
/// Bytes of the head.
inline constexpr std::size_t DosEpsHeadSize = 30;

/// A part of the file; of size 0 if there is none. Neither number need fit the file.
struct DosEpsPart {
  std::uint32_t place = 0;
  std::uint32_t size = 0;
};

struct DosEpsHead {
  DosEpsPart postScript;
  DosEpsPart metafile;
  DosEpsPart tiff;
};

/// Whether a file that begins with these bytes is one of that kind.
[[nodiscard]] inline bool IsDosEps(std::string_view bytes) {
  return bytes.starts_with(DosEpsSignature);
}

/// The head of a file that begins with these bytes. Those that are missing count as zeros.
[[nodiscard]] DosEpsHead ReadDosEpsHead(std::string_view bytes);

}  // namespace rastrel::os
