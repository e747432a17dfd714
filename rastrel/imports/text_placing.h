#pragma once

#include <string_view>

#include "rastrel/imports/placed_text.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/world.h"

/// Text of importers in the document: they open a paragraph in a frame, paste lines into it, and
/// make an object of it. At most one paragraph is open in a process. Called on the host's user
/// interface thread only. Without a document of the host every operation fails and changes nothing.
namespace rastrel::imports {

/// Opens a paragraph between two corners in text units and takes its records. False, with nothing
/// open, if the engine can't.
[[nodiscard]] bool OpenText(PlacedText& text, const NewWorldPt& first, const NewWorldPt& second);

/// Sets the layout of the open paragraph's lines: one block, justified in the frame, left, right or
/// center (LineJustification), and has them fit the frame whenever it changes.
void SetTextLines(PlacedText& text, int justification);

/// A margin in text units: `perMille` thousandths of the frame's width, less where the other margin
/// leaves less. The left one is 0.0 while no paragraph is open.
[[nodiscard]] double AbsoluteFromPercentLeft(const PlacedText& text, int perMille);
[[nodiscard]] double AbsoluteFromPercentRight(const PlacedText& text, int perMille);

/// Sets both margins to `perMille` thousandths of the frame's width, first the left one, and fits
/// the text after each. The right one, set last, is limited by the left.
void SetTextMargins(PlacedText& text, int perMille);

/// Pastes text in a font, given by a file name (which is cut, see font_type.h), at a size in
/// inches. False, with nothing pasted, while no paragraph is open, or if the engine does not have
/// the font.
bool PasteText(PlacedText& text, wchar_t* fontName, double size, std::wstring_view characters);

/// Closes the paragraph and adds it to the document as an object, in an undo step. 0 if no
/// paragraph is open or no object could be made. isOpen stays set, and the records are gone.
[[nodiscard]] host::ObjectHandle CloseText(PlacedText& text);

}  // namespace rastrel::imports
