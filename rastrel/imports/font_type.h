#pragma once

namespace rastrel::imports {

/// The template formats as far as they differ in how they know font files.
enum class FontTable {
  Plates,  ///< plate XML and its relatives: extensions are compared by case
  Cr2,     ///< ASCII case does not count, but for chr and f3s
  Zml,     ///< ASCII case does not count; cff has another type, chr, f3s and 1c are unknown
};

/// Returns the text engine's number for the type of a font file, by the extension after the last
/// dot of its name. The name is cut at that dot in place, so that it is the font's own name from
/// then on, and a second call finds no dot. Only as many characters as the table's extension has
/// are compared: ttfx counts as ttf, and by default TTF as unknown. Without a dot, and for an
/// unknown extension, the result is 2, TrueType. The name must not be null.
[[nodiscard]] int FontTypeOf(wchar_t* fontName, FontTable table = FontTable::Plates);

}  // namespace rastrel::imports
