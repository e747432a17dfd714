#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/values/color.h"

namespace rastrel::document {

/// A color of the palette.
struct PaletteEntry {
  CVKFullColor color;  ///< with its name
  bool spot = false;   ///< an ink of its own rather than a mixture
  bool operator==(const PaletteEntry&) const = default;
};

/// The colors that a document knows by name, in the order in which the user sees them. Names are
/// compared exactly.
class Palette {
 public:
  /// The colors of a new document: the usual materials and inks of an engraver.
  [[nodiscard]] static Palette Usual();

  [[nodiscard]] const std::vector<PaletteEntry>& Entries() const { return m_Entries; }
  /// The first entry of that name, or null.
  [[nodiscard]] const PaletteEntry* Find(const std::wstring& name) const;
  /// The first entry whose color is that one, whatever its name, or null.
  [[nodiscard]] const PaletteEntry* Find(const CVKColor& color) const;
  /// Appends an entry. False, and nothing changes, if the name is not empty and taken.
  bool Add(PaletteEntry entry);

  bool operator==(const Palette&) const = default;

 private:
  std::vector<PaletteEntry> m_Entries;
};

/// The color that nothing is painted in.
[[nodiscard]] CVKColor InvisibleColor();

/// A color of red, green and blue, 0 to 255 each, under a name.
[[nodiscard]] CVKFullColor NamedRgb(const std::wstring& name, int red, int green, int blue);

}  // namespace rastrel::document
