#pragma once

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
/// the question is asked once. The host makes it.
class RASTREL_API CFontReplacement {
 public:
  CFontReplacement() = default;
  virtual ~CFontReplacement();
  CFontReplacement(const CFontReplacement&) = delete;
  CFontReplacement& operator=(const CFontReplacement&) = delete;

  /// The font that stands in for a missing one, or null when none was chosen yet. The library gives
  /// -1 twice.
  [[nodiscard]] virtual const FontRecord* GetReplacementFont(const wchar_t* name, int weight,
                                                             int italic) = 0;
};

namespace rastrel::host {

/// Numbers of `AddFont` for the kinds of font file.
enum FontType : int {
  FONTTYPE_WFN = 0,
  FONTTYPE_VEF = 1,
  FONTTYPE_TRUETYPE = 2,  ///< ttf, otf, and every name that is no file's
  FONTTYPE_TYPE1 = 3,     ///< pfb
  FONTTYPE_FNT = 5,
  FONTTYPE_CLF = 6,
  FONTTYPE_BE = 7,
  FONTTYPE_FON = 8,
  FONTTYPE_CFF = 9,
  FONTTYPE_FT9 = 10,
  FONTTYPE_SHX = 13,
  FONTTYPE_1C = 14,
  FONTTYPE_CHR = 15  ///< chr and f3s
};

/// The text engine. At most one paragraph is open in a process. Only the user interface thread
/// calls. Positions and sizes are text units (world.h). There are two roads to a text object: a
/// paragraph (`OpenParagraph` to `CloseParagraph`, whose object the database makes), and new text
/// (`InitNewText` to `TerminateNewText`, which goes into the document by itself).
///
/// Operations that are not pure have a default which means "not supported": it changes nothing and
/// gives 0 or null.
class RASTREL_API TextCompose {
 public:
  TextCompose() = default;
  virtual ~TextCompose();
  TextCompose(const TextCompose&) = delete;
  TextCompose& operator=(const TextCompose&) = delete;

  // --- A paragraph in a frame ---

  /// Fills the info of the paragraph that is opened next, or of the one that is open. The library
  /// gives 0.
  virtual void SetOpenParagraphInfo(ParagraphInfo& info, int reserved) = 0;
  /// Opens a paragraph in the frame between two opposite corners. The library gives 4. 0 for
  /// success, which is unlike most operations; then a `CloseParagraph` must follow. It fails while
  /// another paragraph is open, and for corners that make no frame.
  [[nodiscard]] virtual int OpenParagraph(int kind, const ParagraphInfo& info,
                                          const NewWorldPt& first, const NewWorldPt& second) = 0;
  /// The open paragraph's records; all null when none is open. They are the engine's and end with
  /// the paragraph.
  virtual void GetCurParagraph(CurrentParagraph& current) = 0;
  /// Closes the paragraph and keeps its text (1). The info then names it in a `ParagraphEle`.
  virtual void CloseParagraph(int keep, const ParagraphInfo& info) = 0;
  /// How lines are justified: 2 in the frame less its margins.
  virtual void SetTextLineJustifyMode(paragraphStruct* paragraph, list_s* lines, int mode) = 0;
  /// Where lines stand: a LineJustification. For the current line and those after it.
  virtual void SetTextLineJustification(paragraphStruct* paragraph, list_s* lines,
                                        int justification) = 0;
  /// The paragraph's frame without regard to margins, left and right, top and bottom in text units.
  /// All 0 for null.
  [[nodiscard]] virtual CWorldRect GetTextFrame(const paragraphStruct* paragraph) = 0;
  /// Lays the text out anew between the absolute margins that the paragraph has now.
  virtual void FitTextToFrame(paragraphStruct* paragraph, list_s* lines) = 0;
  /// The attributes that a new text object starts with.
  virtual void GetDefaultAttributes(ELEMENT_ATTRIBUTES& attributes) = 0;

  // --- What is pasted ---

  /// A font by its type and its name: a file's without extension, or a family with its style. Null
  /// if it can't be had. A host that replaces missing fonts by itself gives the replacement. The
  /// library gives 0 first, and -1, 1 or 0, 0 last.
  [[nodiscard]] virtual const FontRecord* AddFont(int reserved, int type, const wchar_t* name,
                                                  int weight, int italic) = 0;
  /// Puts text at the end of the open paragraph, or of the new text, in the current style. CR LF
  /// begins a new line. `length` counts characters. The library gives 0, null and false.
  virtual void edPasteString(const wchar_t* text, int length, int position, const void* style,
                             bool select) = 0;
  /// The color of what is pasted next.
  virtual void SetTextColor(const CVKColor& color);

  // --- Fonts in place of missing ones ---

  /// The replacements kept under a name. By default null.
  [[nodiscard]] virtual std::unique_ptr<CFontReplacement> NewFontReplacement(const wchar_t* name);
  /// Asks the user for a font in place of a missing one and keeps the answer in `replacement`. Null
  /// when the user cancels. The library gives -1 twice. By default null.
  [[nodiscard]] virtual const FontRecord* ChooseReplacementFont(CFontReplacement& replacement,
                                                                const wchar_t* name, int weight,
                                                                int italic);

  // --- New text ---

  /// Opens a text object between its lower left and its upper right corner. `window` may be null.
  /// The library gives 1. `GetCurParagraph` then gives its records.
  virtual void InitNewText(CWnd* window, const NewWorldPt& first, const NewWorldPt& second,
                           int kind);
  /// Finishes it, keeps it (1), and puts it into the document.
  virtual void TerminateNewText(CWnd* window, int keep);
  /// The object of the text that was finished last. By default 0.
  [[nodiscard]] virtual ObjectHandle GetTerminateTextEditHI();

  // --- Replaceable items of a text ---

  /// The pieces of a text that stand for values from outside, by number. By default none.
  [[nodiscard]] virtual std::vector<int> MakeReplaceableItemsListForParagraphEle(
      const ParagraphEle& paragraph);
  /// The text of such a piece, at most 128 characters. By default empty.
  [[nodiscard]] virtual std::wstring GetTextParagraphEle(const ParagraphEle& paragraph, int item);
  /// Puts a text in its place. Non-zero for success. By default 0.
  virtual int ReplaceTextParagraphEle(ParagraphEle& paragraph, int item, const wchar_t* text);
};

}  // namespace rastrel::host
