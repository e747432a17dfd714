#include <algorithm>

#include "tests/support/recording_host.h"

namespace rastrel::test {

std::vector<std::string> RecordingText::LeftOpen() const {
  std::vector<std::string> open;
  if (m_ParagraphOpen) open.emplace_back("paragraph");
  if (m_TextOpen) open.emplace_back("new text");
  if (m_WrittenAfterEnd) open.emplace_back("records written after their paragraph's end");
  return open;
}

void RecordingText::WriteChange(const char* name, double before, double now) {
  if (before == now || (before != before && now != now)) return;
  m_Calls.Write(std::string(name) + " = " + TextOf(now));
  if (!m_ParagraphOpen && !m_TextOpen) m_WrittenAfterEnd = true;
}

void RecordingText::WriteChanges() {
  const Records before = m_Seen;
  const Records now = *m_Now;
  m_Seen = now;
  WriteChange("lines.mode", before.lines.mode, now.lines.mode);
  const paragraphStruct& was = before.paragraph;
  const paragraphStruct& is = now.paragraph;
  WriteChange("paragraph.lineFit", was.lineFit, is.lineFit);
  WriteChange("paragraph.fit", was.fit, is.fit);
  WriteChange("paragraph.frameMode", was.frameMode, is.frameMode);
  WriteChange("paragraph.flags", was.flags, is.flags);
  WriteChange("paragraph.leftPercent", was.leftPercent, is.leftPercent);
  WriteChange("paragraph.leftMargin", was.leftMargin, is.leftMargin);
  WriteChange("paragraph.topMargin", was.topMargin, is.topMargin);
  WriteChange("paragraph.rightPercent", was.rightPercent, is.rightPercent);
  WriteChange("paragraph.rightMargin", was.rightMargin, is.rightMargin);
  WriteChange("paragraph.bottomMargin", was.bottomMargin, is.bottomMargin);
  WriteChange("line.size", before.line.size, now.line.size);
  WriteChange("line.spacingKind", before.line.spacingKind, now.line.spacingKind);
  WriteChange("line.leading", before.line.leading, now.line.leading);
  if (before.style.font != now.style.font) m_Calls.Write("style.font = " + TextOf(now.style.font));
  WriteChange("style.fontId", before.style.fontId, now.style.fontId);
  WriteChange("style.size", before.style.size, now.style.size);
}

std::string RecordingText::NameOf(const paragraphStruct* paragraph) const {
  if (paragraph == nullptr) return "null";
  return paragraph == &m_Now->paragraph ? "paragraph" : "another paragraph";
}

void RecordingText::Begin(const NewWorldPt& first, const NewWorldPt& second) {
  // Fresh records, so that a pointer to the paragraph before is one to freed memory.
  m_Now = std::make_unique<Records>();
  m_Seen = *m_Now;
  m_OpenedFrame = {.left = std::min(first.x, second.x),
                   .top = std::max(first.y, second.y),
                   .right = std::max(first.x, second.x),
                   .bottom = std::min(first.y, second.y)};
}

void RecordingText::SetOpenParagraphInfo(ParagraphInfo& info, int reserved) {
  if (!m_ParagraphOpen) ++m_Paragraphs;
  info = {.first = m_Paragraphs, .second = 100 + m_Paragraphs};
  m_Calls.Answered(info, "SetOpenParagraphInfo", reserved);
}

int RecordingText::OpenParagraph(int kind, const ParagraphInfo& info, const NewWorldPt& first,
                                 const NewWorldPt& second) {
  const int failure = m_Calls.Answer("OpenParagraph", m_ParagraphOpen ? 1 : 0);
  m_Calls.Answered(failure, "OpenParagraph", kind, info, first, second);
  if (failure == 0) {
    m_ParagraphOpen = true;
    Begin(first, second);
  }
  return failure;
}

void RecordingText::GetCurParagraph(CurrentParagraph& current) {
  m_Calls.Told("GetCurParagraph");
  current = {};
  if (!m_ParagraphOpen && !m_TextOpen) return;
  current = {.paragraph = &m_Now->paragraph,
             .lines = &m_Now->lines,
             .line = &m_Now->line,
             .style = &m_Now->style};
  if (m_Withhold) m_Withhold(current);
}

void RecordingText::CloseParagraph(int keep, const ParagraphInfo& info) {
  m_Calls.Told("CloseParagraph", keep, info);
  if (!m_ParagraphOpen) m_Calls.Write("error: no paragraph is open");
  m_ParagraphOpen = false;
}

void RecordingText::SetTextLineJustifyMode(paragraphStruct* paragraph, list_s*, int mode) {
  m_Calls.Told("SetTextLineJustifyMode", NameText{NameOf(paragraph)}, NameText{"lines"}, mode);
}

void RecordingText::SetTextLineJustification(paragraphStruct* paragraph, list_s*,
                                             int justification) {
  m_Calls.Told("SetTextLineJustification", NameText{NameOf(paragraph)}, NameText{"lines"},
               justification);
}

CWorldRect RecordingText::GetTextFrame(const paragraphStruct* paragraph) {
  const CWorldRect frame = paragraph == nullptr ? CWorldRect() : m_Frame.value_or(m_OpenedFrame);
  return m_Calls.Answered(frame, "GetTextFrame", NameText{NameOf(paragraph)});
}

void RecordingText::FitTextToFrame(paragraphStruct* paragraph, list_s*) {
  m_Calls.Told("FitTextToFrame", NameText{NameOf(paragraph)}, NameText{"lines"});
}

void RecordingText::GetDefaultAttributes(ELEMENT_ATTRIBUTES& attributes) {
  m_Calls.Told("GetDefaultAttributes");
  attributes = {.value = 1};
}

const FontRecord* RecordingText::AddFont(int reserved, int type, const wchar_t* name, int weight,
                                         int italic) {
  const FontRecord* font = nullptr;
  if (!m_MissingFonts.contains(name)) {
    auto& record = m_Fonts[{type, name}];
    if (!record)
      record = std::make_unique<FontRecord>(
          FontRecord{.id = static_cast<std::uint16_t>(m_Fonts.size())});
    font = record.get();
  }
  return m_Calls.Answered(font, "AddFont", reserved, type, name, weight, italic);
}

void RecordingText::edPasteString(const wchar_t* text, int length, int position, const void* style,
                                  bool select) {
  m_Calls.Told("edPasteString", text, length, position,
               NameText{style == nullptr ? "null" : "style"}, select);
  if (!m_ParagraphOpen && !m_TextOpen) m_Calls.Write("error: no text is open");
}

void RecordingText::SetTextColor(const CVKColor& color) { m_Calls.Told("SetTextColor", color); }

std::unique_ptr<CFontReplacement> RecordingText::NewFontReplacement(const wchar_t* name) {
  class Replacement : public CFontReplacement {
   public:
    explicit Replacement(HostCalls& calls) : m_Calls(calls) {}
    const FontRecord* GetReplacementFont(const wchar_t* missing, int weight, int italic) override {
      const FontRecord* font = m_Calls.Answer("GetReplacementFont", 0) != 0 ? &m_Font : nullptr;
      return m_Calls.Answered(font, "GetReplacementFont", missing, weight, italic);
    }

   private:
    HostCalls& m_Calls;
    FontRecord m_Font{.id = 900};
  };
  m_Calls.Told("NewFontReplacement", name);
  if (m_Calls.Answer("NewFontReplacement", 1) == 0) return nullptr;
  return std::make_unique<Replacement>(m_Calls);
}

const FontRecord* RecordingText::ChooseReplacementFont(CFontReplacement&, const wchar_t* name,
                                                       int weight, int italic) {
  static const FontRecord chosen{.id = 901};
  const FontRecord* font = m_Calls.Answer("ChooseReplacementFont", 0) != 0 ? &chosen : nullptr;
  return m_Calls.Answered(font, "ChooseReplacementFont", name, weight, italic);
}

void RecordingText::InitNewText(CWnd* window, const NewWorldPt& first, const NewWorldPt& second,
                                int kind) {
  m_Calls.Told("InitNewText", window, first, second, kind);
  if (m_Calls.Answer("InitNewText", 1) == 0) return;
  m_TextOpen = true;
  Begin(first, second);
}

void RecordingText::TerminateNewText(CWnd* window, int keep) {
  m_Calls.Told("TerminateNewText", window, keep);
  if (!m_TextOpen) m_Calls.Write("error: no new text is open");
  m_TextOpen = false;
  m_Finished = m_MakeText ? m_MakeText() : 0;
}

std::vector<int> RecordingText::MakeReplaceableItemsListForParagraphEle(
    const ParagraphEle& paragraph) {
  m_Calls.Told("MakeReplaceableItemsListForParagraphEle", paragraph);
  std::vector<int> items;
  for (std::size_t item = 0; item < m_ReplaceableItems.size(); ++item)
    items.push_back(static_cast<int>(item));
  return items;
}

std::wstring RecordingText::GetTextParagraphEle(const ParagraphEle& paragraph, int item) {
  return m_Calls.Answered(m_ReplaceableItems.at(static_cast<std::size_t>(item)),
                          "GetTextParagraphEle", paragraph, item);
}

int RecordingText::ReplaceTextParagraphEle(ParagraphEle& paragraph, int item, const wchar_t* text) {
  return m_Calls.Answered(1, "ReplaceTextParagraphEle", paragraph, item, text);
}

host::ObjectHandle RecordingText::GetTerminateTextEditHI() {
  m_Calls.Answered(ObjectText{m_Finished}, "GetTerminateTextEditHI");
  return m_Finished;
}

}  // namespace rastrel::test
