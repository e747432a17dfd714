#pragma once

#include <string_view>

#include "rastrel/imports/placed_text.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/world.h"

/// How importers put text into the document: they open a paragraph in a frame, paste lines in it,
/// and make an object of it. At most one paragraph is open in a process. Only the host's user
/// interface thread calls. Everything fails without harm when the host has no document.
namespace rastrel::imports {

/// Opens a paragraph between two corners in text units and takes its records. False, with nothing
/// open, if the engine can't.
[[nodiscard]] bool OpenText(PlacedText& text, const NewWorldPt& first, const NewWorldPt& second);

/// Sets the open paragraph's lines: one block, justified in the frame, left, right or center
/// (LineJustification), and has them fit the frame whenever it changes.
void SetTextLines(PlacedText& text, int justification);

/// Text units of a margin of so many per mille of the frame's width; less where the other margin
/// leaves less. The left one is 0.0 while no text is open.
[[nodiscard]] double AbsoluteFromPercentLeft(const PlacedText& text, int perMille);
[[nodiscard]] double AbsoluteFromPercentRight(const PlacedText& text, int perMille);

/// Sets both margins to so many per mille, first the left one, and fits the text after each. The
/// one that is set last yields to the other.
void SetTextMargins(PlacedText& text, int perMille);

/// Pastes text in a font, given by a file name (which is cut, see font_type.h), at a size in
/// inches. Without effect while no text is open, and without the font.
void PasteText(PlacedText& text, wchar_t* fontName, double size, std::wstring_view characters);

/// Closes the paragraph and adds it to the document as an object, in an undo step. 0 if no text is
/// open or no object could be made. The flag stays set, and the records are gone.
[[nodiscard]] host::ObjectHandle CloseText(PlacedText& text);

}  // namespace rastrel::imports
