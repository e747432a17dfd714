#pragma once

namespace rastrel::imports {

/// The text engine's number for the kind of a font file, by the extension behind the last dot of
/// its name. The name is cut at that dot in place, so that it is the font's own name from then on;
/// who asks again finds no dot. Only as many characters as the table's extension has are compared,
/// by case: ttfx counts as ttf, TTF as nothing known. Without a dot, and for all that is not in the
/// table, it is 2, TrueType. The name must not be null.
[[nodiscard]] int FontTypeOf(wchar_t* fontName);

}  // namespace rastrel::imports
