#pragma once

/// The text engine: paragraphs in frames, fonts, new text, replaceable items.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "rastrel/export.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/paragraph.h"
#include "rastrel/platform/values/world.h"

class CVKColor;
class CWnd;

/// The fonts that a user chose in place of missing ones, kept under a name of the caller's so that
/// the question is asked once. The host makes it; only the user interface thread uses it.
class RASTREL_API CFontReplacement {
 public:
  CFontReplacement() = default;
  virtual ~CFontReplacement();
  CFontReplacement(const CFontReplacement&) = delete;
  CFontReplacement& operator=(const CFontReplacement&) = delete;

  /// The font in place of a missing one, owned by the text engine; null if none was chosen yet. The
  /// library passes -1 twice.
  [[nodiscard]] virtual const FontRecord* GetReplacementFont(const wchar_t* name, int weight,
                                                             int italic) = 0;
};

namespace rastrel::host {

/// The text engine. At most one paragraph or new text is open in a process. Only the user interface
/// thread calls. Positions and sizes are text units (thousandths of an inch, world.h). Texts and
/// names are wide, and names end with a zero.
///
/// There are two ways to a text object: a paragraph (`OpenParagraph` to `CloseParagraph`, whose
/// object the database makes), and new text (`InitNewText` to `TerminateNewText`, which goes into
/// the document by itself).
///
/// An operation that is not pure has a default for a host that leaves it out: it changes nothing
/// and returns the value that its comment names.
class RASTREL_API TextCompose {
 public:
  TextCompose() = default;
  virtual ~TextCompose();
  TextCompose(const TextCompose&) = delete;
  TextCompose& operator=(const TextCompose&) = delete;

  // --- A paragraph in a frame ---

  /// Fills the info that names the open paragraph, or the next one if none is open. The library
  /// passes 0.
  virtual void SetOpenParagraphInfo(ParagraphInfo& info, int reserved) = 0;
  /// Opens a paragraph in the frame between two opposite corners. The library passes 4. Unlike most
  /// operations it returns 0 for success; then a `CloseParagraph` must follow. Non-zero, and
  /// nothing is open, while another paragraph is open and for corners without an area between them.
  /// A new text that is still open was given up by the library, and is dropped.
  [[nodiscard]] virtual int OpenParagraph(int kind, const ParagraphInfo& info,
                                          const NewWorldPt& first, const NewWorldPt& second) = 0;
  /// Reads the open paragraph's records; all null if none is open. They belong to the engine and
  /// end with the paragraph.
  virtual void GetCurParagraph(CurrentParagraph& current) = 0;
  /// Closes the paragraph and keeps its text (1) until `DBInsertElement` takes it. The info then
  /// names it in a `ParagraphEle`.
  virtual void CloseParagraph(int keep, const ParagraphInfo& info) = 0;
  /// Sets how lines are justified: 2 between the margins of the frame.
  virtual void SetTextLineJustifyMode(paragraphStruct* paragraph, list_s* lines, int mode) = 0;
  /// Sets the side of the frame that lines are at, a LineJustification, for the current line and
  /// those after it.
  virtual void SetTextLineJustification(paragraphStruct* paragraph, list_s* lines,
                                        int justification) = 0;
  /// The paragraph's frame in text units, whatever its margins. All 0 for null.
  [[nodiscard]] virtual CWorldRect GetTextFrame(const paragraphStruct* paragraph) = 0;
  /// Lays the text out again between the absolute margins that the paragraph has now.
  virtual void FitTextToFrame(paragraphStruct* paragraph, list_s* lines) = 0;
  /// Reads the attributes that a new text object starts with.
  virtual void GetDefaultAttributes(ELEMENT_ATTRIBUTES& attributes) = 0;

  // --- Fonts and content ---

  /// A font by its type (a FontType) and its name: a file's without extension, or a family with its
  /// style. The engine owns it and keeps it until the host ends. The library passes 0 first, and
  /// last either -1, 1 or 0, 0. After -1 it has no answer to a missing font but to drop the text: a
  /// host that replaces missing fonts returns the replacement, and null for an empty name alone.
  /// After 0 it asks for a replacement itself (below): null for every missing font.
  [[nodiscard]] virtual const FontRecord* AddFont(int reserved, int type, const wchar_t* name,
                                                  int weight, int italic) = 0;
  /// Appends text to the open paragraph, or to the new text, in the current style. CR LF begins a
  /// new line. `length` counts characters. The library passes 0, null and false. Nothing happens
  /// while neither is open.
  virtual void edPasteString(const wchar_t* text, int length, int position, const void* style,
                             bool select) = 0;
  /// Sets the color of the text that is pasted next. By default nothing.
  virtual void SetTextColor(const CVKColor& color);

  // --- Fonts in place of missing ones ---

  /// The replacements kept under a name, owned by the caller. By default null: the host has no
  /// replacements, and the two operations that need one are not called.
  [[nodiscard]] virtual std::unique_ptr<CFontReplacement> NewFontReplacement(const wchar_t* name);
  /// Asks the user for a font in place of a missing one and keeps the answer in `replacement`. The
  /// font is the engine's. Null if the user cancels, and the import then ends; a host where nobody
  /// can be asked chooses by itself. The library passes -1 twice. By default null.
  [[nodiscard]] virtual const FontRecord* ChooseReplacementFont(CFontReplacement& replacement,
                                                                const wchar_t* name, int weight,
                                                                int italic);

  // --- New text ---

  /// Opens a text object between its lower left and its upper right corner. `window` may be null;
  /// the library passes 1. `GetCurParagraph` then reads its records. A new text that is still open
  /// was given up by the library, and is dropped. Nothing is open after corners without an area
  /// between them, or while a paragraph is: `GetCurParagraph` then returns nulls. By default
  /// nothing.
  virtual void InitNewText(CWnd* window, const NewWorldPt& first, const NewWorldPt& second,
                           int kind);
  /// Closes the new text, keeps it (1), and puts it into the document, on the page on show or on
  /// page 1 when all are. By default nothing.
  virtual void TerminateNewText(CWnd* window, int keep);
  /// The object of the new text that was closed last; 0 if there is none. By default 0.
  [[nodiscard]] virtual ObjectHandle GetTerminateTextEditHI();

  // --- Replaceable items of a text ---

  /// The numbers of the pieces of a text that values from outside replace. By default none.
  [[nodiscard]] virtual std::vector<int> MakeReplaceableItemsListForParagraphEle(
      const ParagraphEle& paragraph);
  /// The text of such a piece, at most 128 characters. By default empty.
  [[nodiscard]] virtual std::wstring GetTextParagraphEle(const ParagraphEle& paragraph, int item);
  /// Replaces the text of such a piece. Non-zero for success. By default 0.
  virtual int ReplaceTextParagraphEle(ParagraphEle& paragraph, int item, const wchar_t* text);
};

}  // namespace rastrel::host
