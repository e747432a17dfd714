#pragma once

namespace rastrel::imports {

/// Returns the text engine's number for the type of a font file, by the extension after the last
/// dot of its name. The name is cut at that dot in place, so that it is the font's own name from
/// then on, and a second call finds no dot. Only as many characters as the table's extension has
/// are compared, by case: ttfx counts as ttf, TTF as unknown. Without a dot, and for an unknown
/// extension, the result is 2, TrueType. The name must not be null.
[[nodiscard]] int FontTypeOf(wchar_t* fontName);

}  // namespace rastrel::imports
