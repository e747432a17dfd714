#pragma once

#include <optional>
#include <string>

#include "host/document/shapes.h"
#include "host/text/arc_layout.h"
#include "host/text/text_layout.h"

/// Checks of a text as it was laid out: sentences about letters that a drawing would lack. A text
/// is named by its first characters. `layout` is that of `shape`.
namespace rastrel::text {

/// Letters narrower or lower than this, in points, count as invisible: 0.1 mm, which is less than
/// the finest line that is engraved.
inline constexpr double SmallestVisibleLetter = 0.1 / 25.4 * 72;

/// The characters for which no font has a picture, and the fonts that they were asked for in; the
/// drawing shows boxes in their place. Nothing if there are none.
[[nodiscard]] std::optional<std::wstring> MissingLettersNotice(const document::TextShape& shape,
                                                               const TextLayout& layout);

/// Says that letters can't be seen, and why: they have the size 0, or were squeezed below
/// SmallestVisibleLetter. `scale` is that of lengths by the object's matrix. Nothing if all that is
/// not whitespace can be seen.
[[nodiscard]] std::optional<std::wstring> InvisibleTextNotice(const document::TextShape& shape,
                                                              const TextLayout& layout,
                                                              double scale);

/// Says which font can't be opened, so that its letters would be missing. Nothing if all can.
[[nodiscard]] std::optional<std::wstring> UnreadableFontNotice(const document::TextShape& shape,
                                                               const TextLayout& layout);

/// The same of a text on a circle.
[[nodiscard]] std::optional<std::wstring> MissingLettersNotice(const document::ArcTextShape& shape,
                                                               const ArcLayout& layout);
[[nodiscard]] std::optional<std::wstring> InvisibleTextNotice(const document::ArcTextShape& shape,
                                                              const ArcLayout& layout,
                                                              double scale);
[[nodiscard]] std::optional<std::wstring> UnreadableFontNotice(const document::ArcTextShape& shape,
                                                               const ArcLayout& layout);

}  // namespace rastrel::text
