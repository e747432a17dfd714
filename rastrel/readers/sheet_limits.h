#pragma once

#include <cstddef>
#include <cstdint>

namespace rastrel::readers {

/// The limits of one spreadsheet. A document beyond any of them is refused as a whole, since a
/// table that is cut looks like a whole one to its reader. Together the sizes keep an import below
/// 256 MiB, whatever the document declares.
struct SheetLimits {
  /// Entries of the shared-string tables of a package.
  std::size_t sharedStrings = std::size_t{4} << 20;
  /// Their texts together, in bytes of UTF-8.
  std::size_t sharedText = std::size_t{64} << 20;
  /// Elements that are kept of the workbook and of its relationships, each.
  std::size_t elements = std::size_t{64} << 10;
  /// The text that is made of all sheets, in bytes of UTF-8.
  std::size_t resultText = std::size_t{128} << 20;
  /// Cells of an OpenOffice document, each as often as it is repeated.
  std::uint64_t cells = std::uint64_t{64} << 20;
  /// Texts of its cells as they are kept, each once, in bytes of UTF-8 with up to 15 for the cell.
  std::size_t cellText = std::size_t{48} << 20;
  /// The records that a host walks, in bytes. They are made only when the host asks for them.
  std::size_t records = std::size_t{184} << 20;
};

}  // namespace rastrel::readers
