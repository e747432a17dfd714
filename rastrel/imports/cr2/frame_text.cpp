#include "rastrel/imports/cr2/frame_text.h"

#include <string>
#include <string_view>

#include "rastrel/imports/cr2/cr2_font.h"
#include "rastrel/imports/cr2/palette.h"
#include "rastrel/platform/host/text_compose.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::imports {
namespace {

// Numbers of the text engine that every text of a template has.
constexpr int TextInFrame = 1;
constexpr int JustifyInFrame = 2;
constexpr int LinesOneByOne = 1;
constexpr int FitWhilePasting = 1;
constexpr std::uint32_t MadeByLayout = 256;
constexpr int LeadingIsLength = 0;

// Documents hold sizes that went through a single precision number, and compare them exactly.
double Single(double value) { return static_cast<double>(static_cast<float>(value)); }
double InchesThroughSingle(double inches) { return Single(inches * host::TextUnitsPerInch); }

// A zml has its sizes in world units by then; that of a span is taken as if it were inches still,
// and templates are drawn for it.
double LineSizeOfZml(double size) { return host::TextFromWorld(size); }
double SpanSizeOfZml(double size) { return size * host::TextUnitsPerInch; }

constexpr TextRules OfCr2{.setsFontsUpFirst = true,
                          .lineSize = InchesThroughSingle,
                          .spanSize = InchesThroughSingle,
                          .addsColorsToPalette = true,
                          .fonts = FontTable::Cr2,
                          .references = ReferenceKind::Cr2};
constexpr TextRules OfZml{.setsFontsUpFirst = false,
                          .lineSize = LineSizeOfZml,
                          .spanSize = SpanSizeOfZml,
                          .addsColorsToPalette = false,
                          .fonts = FontTable::Zml,
                          .references = ReferenceKind::Zml};

class FrameSetter {
 public:
  FrameSetter(TemplateImport& import, const TextRules& rules, const OutputFilter& filter)
      : m_Import(import), m_Text(import.document.text), m_Rules(rules), m_Filter(filter) {}

  FrameText Set(const BOUNDS& frame, const std::vector<CR2_TEXT>& texts);

 private:
  bool Open(const BOUNDS& frame);
  /// The three below return false if the import was cancelled.
  bool SetFontsUp(const std::vector<CR2_TEXT>& texts);
  bool PlaceBlock(const CR2_TEXT& text);
  bool PlaceSpan(const CR2_SPAN& span);
  void SetBlockSize(const CR2_FONT_SPEC& font);
  void PasteText(const std::wstring& text);
  void Paste(std::wstring_view characters);

  TemplateImport& m_Import;
  host::TextCompose& m_Text;
  const TextRules& m_Rules;
  const OutputFilter& m_Filter;
  CurrentParagraph m_Current;
};

bool FrameSetter::Open(const BOUNDS& frame) {
  const NewWorldPt first{.x = host::TextFromWorld(frame.xmin),
                         .y = host::TextFromWorld(frame.ymin)};
  const NewWorldPt second{.x = host::TextFromWorld(frame.xmax),
                          .y = host::TextFromWorld(frame.ymax)};
  m_Text.InitNewText(nullptr, first, second, TextInFrame);
  m_Text.GetCurParagraph(m_Current);
  if (m_Current.paragraph == nullptr || m_Current.lines == nullptr || m_Current.line == nullptr ||
      m_Current.style == nullptr)
    return false;
  paragraphStruct& paragraph = *m_Current.paragraph;
  paragraph.leftMargin = paragraph.topMargin = 0;
  paragraph.rightMargin = paragraph.bottomMargin = 0;
  m_Text.SetTextLineJustifyMode(m_Current.paragraph, m_Current.lines, JustifyInFrame);
  m_Current.lines->mode = LinesOneByOne;
  paragraph.lineFit = LINEFIT_ALL_LINES;
  paragraph.fit = FitWhilePasting;
  paragraph.flags = MadeByLayout;
  return true;
}

void FrameSetter::SetBlockSize(const CR2_FONT_SPEC& font) {
  const double size = m_Rules.lineSize(font.size);
  m_Current.style->size = size;
  m_Current.line->size = size;
  m_Current.line->spacingKind = LeadingIsLength;
  m_Current.line->leading = Single(font.lineHeight) * size;
}

bool FrameSetter::SetFontsUp(const std::vector<CR2_TEXT>& texts) {
  for (const CR2_TEXT& text : texts) {
    for (const CR2_TEXT_LINE& line : text.lines) {
      if (&line == &text.lines.front()) SetBlockSize(text.font);
      for (const CR2_SPAN& span : line.spans)
        if (ResolveFont(m_Import, span.font, m_Rules.fonts) == nullptr) return false;
    }
  }
  return true;
}

bool FrameSetter::PlaceBlock(const CR2_TEXT& text) {
  for (const CR2_TEXT_LINE& line : text.lines) {
    if (&line == &text.lines.front()) {
      SetBlockSize(text.font);
      m_Text.SetTextLineJustification(m_Current.paragraph, m_Current.lines,
                                      text.font.justification);
    } else {
      Paste(L"\r\n");
    }
    for (const CR2_SPAN& span : line.spans)
      if (!PlaceSpan(span)) return false;
  }
  return true;
}

bool FrameSetter::PlaceSpan(const CR2_SPAN& span) {
  const CVKColor* const fill = span.font.colors.fill.get();
  if (m_Filter.Holds(fill)) return true;
  const FontRecord* const font = ResolveFont(m_Import, span.font, m_Rules.fonts);
  if (font == nullptr) return false;
  m_Current.style->font = font;
  m_Current.style->fontId = font->id;
  m_Current.style->size = m_Rules.spanSize(span.font.size);
  if (fill != nullptr) {
    if (m_Rules.addsColorsToPalette) AddMissingPaletteColor(m_Import.document.application, *fill);
    m_Text.SetTextColor(*fill);
  }
  PasteText(span.text);
  return true;
}

void FrameSetter::PasteText(const std::wstring& text) {
  const ReplacedText replaced = ReplaceCharacterReferences(text, m_Rules.references);
  if (replaced.unicodeLost) m_Import.unicodeLost = true;
  // A line without a character would lose its height.
  Paste(replaced.text.empty() ? L" " : WithJoinedSurrogates(replaced.text));
}

void FrameSetter::Paste(std::wstring_view characters) {
  m_Text.edPasteString(std::wstring(characters).c_str(), static_cast<int>(characters.size()), 0,
                       nullptr, false);
}

FrameText FrameSetter::Set(const BOUNDS& frame, const std::vector<CR2_TEXT>& texts) {
  if (!Open(frame)) return FrameText::NotOpened;
  if (m_Rules.setsFontsUpFirst && !SetFontsUp(texts)) return FrameText::Cancelled;
  for (const CR2_TEXT& text : texts) {
    if (&text != &texts.front()) Paste(L"\r\n");
    if (!PlaceBlock(text)) return FrameText::Cancelled;
  }
  return FrameText::Set;
}

}  // namespace

const TextRules& Cr2TextRules() { return OfCr2; }

const TextRules& ZmlTextRules() { return OfZml; }

FrameText SetFrameText(TemplateImport& import, const TextRules& rules, const OutputFilter& filter,
                       const BOUNDS& frame, const std::vector<CR2_TEXT>& texts) {
  return FrameSetter(import, rules, filter).Set(frame, texts);
}

}  // namespace rastrel::imports
