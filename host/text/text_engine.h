#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "host/document/document_store.h"
#include "host/text/font_catalog.h"
#include "rastrel/platform/host/text_compose.h"

namespace rastrel::host {
class DialogViews;
}

namespace rastrel::text {

/// The maximum number of characters in a paragraph. Further text is left out, with a notice.
inline constexpr std::size_t MaximumParagraph = 1'000'000;

/// The text engine of the embedded host. It collects the pasted text; letters are placed when the
/// text is drawn (text_layout.h).
class TextEngine : public host::TextCompose {
 public:
  /// All must outlive the engine, which registers as the store's source of texts.
  TextEngine(document::DocumentStore& store, FontCatalog& fonts, document::Notices& notices);
  ~TextEngine() override;

  /// Whether a paragraph or a new text is open.
  [[nodiscard]] bool IsOpen() const { return m_Open.has_value(); }
  /// The views that ask for fonts in place of missing ones; not owned. Null: nobody can be asked.
  void SetDialogViews(std::function<host::DialogViews*()> views) { m_Views = std::move(views); }
  /// Whether missing fonts are left out: `AddFont` and `ChooseReplacementFont` then return null for
  /// those that nothing was chosen for, with a notice. Without it they are replaced.
  void CancelMissingFonts(bool cancel) { m_CancelMissing = cancel; }

  /// Drops the open text, and closed ones that no object has taken: their document is gone.
  void Clear();

  void SetOpenParagraphInfo(ParagraphInfo& info, int reserved) override;
  [[nodiscard]] int OpenParagraph(int kind, const ParagraphInfo& info, const NewWorldPt& first,
                                  const NewWorldPt& second) override;
  void GetCurParagraph(CurrentParagraph& current) override;
  void CloseParagraph(int keep, const ParagraphInfo& info) override;
  void SetTextLineJustifyMode(paragraphStruct* paragraph, list_s* lines, int mode) override;
  void SetTextLineJustification(paragraphStruct* paragraph, list_s* lines,
                                int justification) override;
  [[nodiscard]] CWorldRect GetTextFrame(const paragraphStruct* paragraph) override;
  void FitTextToFrame(paragraphStruct* paragraph, list_s* lines) override;
  void GetDefaultAttributes(ELEMENT_ATTRIBUTES& attributes) override;

  [[nodiscard]] const FontRecord* AddFont(int reserved, int type, const wchar_t* name, int weight,
                                          int italic) override;
  void edPasteString(const wchar_t* text, int length, int position, const void* style,
                     bool select) override;
  void SetTextColor(const CVKColor& color) override;

  /// All replacements of a host are the same, whatever their name: those of its font catalogue.
  [[nodiscard]] std::unique_ptr<CFontReplacement> NewFontReplacement(const wchar_t* name) override;
  [[nodiscard]] const FontRecord* ChooseReplacementFont(CFontReplacement& replacement,
                                                        const wchar_t* name, int weight,
                                                        int italic) override;

  void InitNewText(CWnd* window, const NewWorldPt& first, const NewWorldPt& second,
                   int kind) override;
  void TerminateNewText(CWnd* window, int keep) override;
  [[nodiscard]] host::ObjectHandle GetTerminateTextEditHI() override { return m_LastText; }

  /// The replaceable items of a text are its pieces in one style that are a number and nothing
  /// else: 1 to 9 digits. An item's number is the piece's place in the text, from 0, and stays when
  /// another is replaced. Line ends of the new text become blanks; the style stays.
  [[nodiscard]] std::vector<int> MakeReplaceableItemsListForParagraphEle(
      const ParagraphEle& paragraph) override;
  [[nodiscard]] std::wstring GetTextParagraphEle(const ParagraphEle& paragraph, int item) override;
  int ReplaceTextParagraphEle(ParagraphEle& paragraph, int item, const wchar_t* text) override;

 private:
  class Replacements;
  // The open paragraph: the records that the library writes, and the text pasted so far.
  struct Open {
    Open();
    bool isNewText = false;  // it was opened by InitNewText
    CWorldRect frame;        // text units
    paragraphStruct paragraph;
    list_s lines;
    lineStruct line;
    CharacterStyle style;
    int justifyMode = 0;
    int justification = JUSTIFY_LEFT;
    std::optional<CVKColor> color;
    std::vector<document::TextLine> text;
    std::size_t characters = 0;
  };

  [[nodiscard]] bool Begin(const NewWorldPt& first, const NewWorldPt& second);
  [[nodiscard]] document::TextShape Finish();
  void Paste(std::wstring_view piece);
  bool Take(const ParagraphEle& element, document::TextShape& text);
  [[nodiscard]] const document::TextShape* Find(const ParagraphEle& paragraph) const;
  [[nodiscard]] int TypeOfMissing(const std::wstring& name) const;
  [[nodiscard]] bool Ask(const std::wstring& name);

  document::DocumentStore& m_Store;
  FontCatalog& m_Fonts;
  document::Notices& m_Notices;
  std::optional<Open> m_Open;
  std::uint32_t m_LastId = 0;
  std::unordered_map<std::uint32_t, document::TextShape> m_Closed;  // until an object takes them
  host::ObjectHandle m_LastText = 0;
  std::function<host::DialogViews*()> m_Views;
  bool m_CancelMissing = false;
  std::map<std::wstring, int> m_Missing;  // the types of fonts that AddFont did not have, by name
};

}  // namespace rastrel::text
