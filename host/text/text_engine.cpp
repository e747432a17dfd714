#include "host/text/text_engine.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/text/font_dialog.h"

namespace rastrel::text {

using document::TextLine;
using document::TextRun;
using document::TextShape;

namespace {

constexpr int FailedToOpen = 1;

double WorldFromText(double value) {
  return value / host::TextUnitsPerInch * host::CentimetresPerInch;
}

// A document holds numbers alone.
double Finite(double value) { return std::isfinite(value) ? value : 0; }

paragraphStruct Finite(paragraphStruct paragraph) {
  for (double* margin : {&paragraph.leftMargin, &paragraph.topMargin, &paragraph.rightMargin,
                         &paragraph.bottomMargin}) {
    *margin = Finite(*margin);
  }
  return paragraph;
}

constexpr std::size_t MaximumItemText = 128;

bool IsItemNumber(const std::wstring& text) {
  constexpr std::size_t MaximumDigits = 9;
  return !text.empty() && text.size() <= MaximumDigits &&
         std::ranges::all_of(text, [](wchar_t digit) { return digit >= L'0' && digit <= L'9'; });
}

// The piece at a place in the text, counted from 0 through all lines; null if there is none.
template <typename Text>
auto* RunAt(Text& text, int item) {
  for (auto& line : text.lines) {
    const auto count = static_cast<int>(line.runs.size());
    if (item >= 0 && item < count) return &line.runs[static_cast<std::size_t>(item)];
    item -= count;
    if (item < 0) break;
  }
  return static_cast<decltype(text.lines.front().runs.data())>(nullptr);
}

std::wstring MissingFontNotice(const std::wstring& name) {
  return name.empty() ? L"a text that names no font" : L"the font \"" + name + L"\" can't be had";
}

// The rectangle between two opposite corners, whichever they are; nothing if it has no area.
std::optional<CWorldRect> FrameBetween(const NewWorldPt& first, const NewWorldPt& second) {
  for (const double value : {first.x, first.y, second.x, second.y}) {
    if (!std::isfinite(value)) return std::nullopt;
  }
  const CWorldRect frame{std::min(first.x, second.x), std::max(first.y, second.y),
                         std::max(first.x, second.x), std::min(first.y, second.y)};
  if (frame.right <= frame.left || frame.top <= frame.bottom) return std::nullopt;
  return frame;
}

}  // namespace

TextEngine::Open::Open() = default;

TextEngine::TextEngine(document::DocumentStore& store, FontCatalog& fonts,
                       document::Notices& notices)
    : m_Store(store), m_Fonts(fonts), m_Notices(notices) {
  store.SetTextSource(
      [this](const ParagraphEle& element, TextShape& text) { return Take(element, text); });
}

TextEngine::~TextEngine() { m_Store.SetTextSource(nullptr); }

void TextEngine::Clear() {
  m_Open.reset();
  m_Closed.clear();
  m_LastText = 0;
}

// --- A paragraph in a frame ---

void TextEngine::SetOpenParagraphInfo(ParagraphInfo& info, int /*reserved*/) {
  info.first = m_Open ? m_LastId : m_LastId + 1;
  info.second = 0;
}

bool TextEngine::Begin(const NewWorldPt& first, const NewWorldPt& second) {
  const auto frame = FrameBetween(first, second);
  // An import that is cancelled leaves its text open, and says so itself.
  if (m_Open && m_Open->isNewText) m_Open.reset();
  if (m_Open || !frame) return false;
  m_Open.emplace();
  m_Open->frame = *frame;
  m_Open->text.emplace_back();
  ++m_LastId;
  return true;
}

int TextEngine::OpenParagraph(int /*kind*/, const ParagraphInfo& /*info*/, const NewWorldPt& first,
                              const NewWorldPt& second) {
  return Begin(first, second) ? 0 : FailedToOpen;
}

void TextEngine::GetCurParagraph(CurrentParagraph& current) {
  current = {};
  if (!m_Open) return;
  current.paragraph = &m_Open->paragraph;
  current.lines = &m_Open->lines;
  current.line = &m_Open->line;
  current.style = &m_Open->style;
}

TextShape TextEngine::Finish() {
  TextShape text;
  text.frame = {WorldFromText(m_Open->frame.left), WorldFromText(m_Open->frame.top),
                WorldFromText(m_Open->frame.right), WorldFromText(m_Open->frame.bottom)};
  text.paragraph = Finite(m_Open->paragraph);
  text.lineMode = m_Open->lines.mode;
  text.justifyMode = m_Open->justifyMode;
  text.lines = std::move(m_Open->text);
  m_Open.reset();
  return text;
}

void TextEngine::CloseParagraph(int keep, const ParagraphInfo& /*info*/) {
  if (!m_Open) return;
  TextShape text = Finish();
  if (keep != 0) m_Closed[m_LastId] = std::move(text);
}

bool TextEngine::Take(const ParagraphEle& element, TextShape& text) {
  const auto found = m_Closed.find(element.first);
  if (found == m_Closed.end() || document::TextNamedBy(element) != 0) return false;
  text = std::move(found->second);
  m_Closed.erase(found);
  return true;
}

void TextEngine::SetTextLineJustifyMode(paragraphStruct* /*paragraph*/, list_s* /*lines*/,
                                        int mode) {
  if (m_Open) m_Open->justifyMode = mode;
}

void TextEngine::SetTextLineJustification(paragraphStruct* /*paragraph*/, list_s* /*lines*/,
                                          int justification) {
  if (!m_Open || justification < JUSTIFY_LEFT || justification > JUSTIFY_CENTER) return;
  m_Open->justification = justification;
  m_Open->text.back().justification = justification;
}

CWorldRect TextEngine::GetTextFrame(const paragraphStruct* paragraph) {
  return paragraph && m_Open ? m_Open->frame : CWorldRect{};
}

// The text is laid out when it is drawn, between the margins that it has then.
void TextEngine::FitTextToFrame(paragraphStruct* /*paragraph*/, list_s* /*lines*/) {}

void TextEngine::GetDefaultAttributes(ELEMENT_ATTRIBUTES& attributes) { attributes = {}; }

// --- Fonts and content ---

const FontRecord* TextEngine::AddFont(int /*reserved*/, int type, const wchar_t* name, int weight,
                                      int /*italic*/) {
  const std::wstring wanted = name ? name : L"";
  if (m_Fonts.Has(type, wanted)) return m_Fonts.Get(type, wanted);
  if (weight >= 0) {
    // The library asks for a replacement next, by the name alone.
    m_Missing[wanted] = type;
    return nullptr;
  }
  // The library drops a text without a font in silence.
  if (wanted.empty() || (m_CancelMissing && !m_Fonts.IsChosen(wanted))) {
    m_Notices.AddLoss(MissingFontNotice(wanted));
    return nullptr;
  }
  return m_Fonts.Get(type, wanted);
}

// --- Fonts in place of missing ones ---

class TextEngine::Replacements : public CFontReplacement {
 public:
  explicit Replacements(TextEngine& engine) : m_Engine(engine) {}
  [[nodiscard]] const FontRecord* GetReplacementFont(const wchar_t* name, int /*weight*/,
                                                     int /*italic*/) override {
    const std::wstring missing = name ? name : L"";
    if (!m_Engine.m_Fonts.IsChosen(missing)) return nullptr;
    return m_Engine.m_Fonts.Get(m_Engine.TypeOfMissing(missing), missing);
  }

 private:
  TextEngine& m_Engine;
};

std::unique_ptr<CFontReplacement> TextEngine::NewFontReplacement(const wchar_t* /*name*/) {
  return std::make_unique<Replacements>(*this);
}

int TextEngine::TypeOfMissing(const std::wstring& name) const {
  const auto found = m_Missing.find(name);
  return found == m_Missing.end() ? static_cast<int>(host::FONTTYPE_TRUETYPE) : found->second;
}

// False if the user cancels.
bool TextEngine::Ask(const std::wstring& name) {
  host::DialogViews* views = m_Views ? m_Views() : nullptr;
  if (!views || !views->CanAsk()) return true;
  const auto answer = AskForFont(*views, name, m_Fonts.Families());
  if (!answer) return false;
  // It is one of this machine's, unless it was removed meanwhile: then the usual one is used.
  static_cast<void>(m_Fonts.Replace(name, *answer));
  return true;
}

const FontRecord* TextEngine::ChooseReplacementFont(CFontReplacement& /*replacement*/,
                                                    const wchar_t* name, int /*weight*/,
                                                    int /*italic*/) {
  const std::wstring missing = name ? name : L"";
  if (!m_Fonts.IsChosen(missing) && (m_CancelMissing || !Ask(missing))) {
    m_Notices.AddLoss(MissingFontNotice(missing));
    return nullptr;
  }
  return m_Fonts.Get(TypeOfMissing(missing), missing);
}

void TextEngine::SetTextColor(const CVKColor& color) {
  if (m_Open) m_Open->color = color;
}

void TextEngine::Paste(std::wstring_view piece) {
  TextLine& line = m_Open->text.back();
  line.size = Finite(m_Open->line.size);
  line.spacingKind = m_Open->line.spacingKind;
  line.leading = Finite(m_Open->line.leading);
  if (piece.empty()) return;
  TextRun run;
  run.text = piece;
  const auto* font = static_cast<const Font*>(m_Open->style.font);
  if (font) {
    run.font = font->name;
    run.fontType = font->type;
    run.replacement = font->replacement;
  }
  run.size = Finite(m_Open->style.size);
  run.colored = m_Open->color.has_value();
  if (run.colored) run.color = CVKFullColor(*m_Open->color);
  line.runs.push_back(std::move(run));
}

void TextEngine::edPasteString(const wchar_t* text, int length, int /*position*/,
                               const void* /*style*/, bool /*select*/) {
  if (!m_Open || !text || length <= 0) return;
  std::wstring_view rest(text, static_cast<std::size_t>(length));
  const std::size_t room = MaximumParagraph - m_Open->characters;
  if (rest.size() > room) {
    m_Notices.AddLoss(L"a text of more than " + std::to_wstring(MaximumParagraph) +
                      L" characters is cut off there");
    rest = rest.substr(0, room);
  }
  m_Open->characters += rest.size();
  const auto nextLineEnd = [&rest] { return rest.find_first_of(L"\r\n"); };
  for (std::size_t end = nextLineEnd(); end != std::wstring_view::npos; end = nextLineEnd()) {
    Paste(rest.substr(0, end));
    rest.remove_prefix(end);
    rest.remove_prefix(rest.starts_with(L"\r\n") ? 2 : 1);
    m_Open->text.emplace_back().justification = m_Open->justification;
  }
  if (!rest.empty()) Paste(rest);
}

// --- New text ---

void TextEngine::InitNewText(CWnd* /*window*/, const NewWorldPt& first, const NewWorldPt& second,
                             int /*kind*/) {
  if (Begin(first, second)) {
    m_Open->isNewText = true;
  } else if (!m_Open) {
    m_Notices.AddLoss(L"a text frame without area holds no text");
  }
}

void TextEngine::TerminateNewText(CWnd* /*window*/, int keep) {
  m_LastText = 0;
  if (!m_Open) return;
  TextShape text = Finish();
  if (keep == 0) return;
  document::Document& document = m_Store.GetDocument();
  m_LastText = document.Create(std::move(text), document.NewAttributes());
  m_Store.DSAddObject(m_LastText);
}

// --- Replaceable items of a text ---

const TextShape* TextEngine::Find(const ParagraphEle& paragraph) const {
  const host::ObjectHandle text = document::TextNamedBy(paragraph);
  if (text == 0) {
    const auto closed = m_Closed.find(paragraph.first);
    return closed == m_Closed.end() ? nullptr : &closed->second;
  }
  const document::Object* object = m_Store.GetDocument().Find(text);
  return object ? std::get_if<TextShape>(&object->shape) : nullptr;
}

std::vector<int> TextEngine::MakeReplaceableItemsListForParagraphEle(
    const ParagraphEle& paragraph) {
  std::vector<int> items;
  int item = 0;
  const TextShape* text = Find(paragraph);
  if (!text) return items;
  for (const TextLine& line : text->lines) {
    for (const TextRun& run : line.runs) {
      if (IsItemNumber(run.text)) items.push_back(item);
      ++item;
    }
  }
  return items;
}

std::wstring TextEngine::GetTextParagraphEle(const ParagraphEle& paragraph, int item) {
  const TextShape* text = Find(paragraph);
  const TextRun* run = text ? RunAt(*text, item) : nullptr;
  return run ? run->text.substr(0, MaximumItemText) : std::wstring();
}

int TextEngine::ReplaceTextParagraphEle(ParagraphEle& paragraph, int item, const wchar_t* text) {
  const TextShape* found = Find(paragraph);
  if (!found || !text || !RunAt(*found, item)) return 0;
  const host::ObjectHandle object = document::TextNamedBy(paragraph);
  TextShape& shape = object == 0 ? m_Closed[paragraph.first]
                                 : std::get<TextShape>(m_Store.GetDocument().Edit(object)->shape);
  std::wstring line(std::wstring_view(text).substr(0, MaximumParagraph));
  std::ranges::replace_if(
      line, [](wchar_t one) { return one == L'\r' || one == L'\n'; }, L' ');
  RunAt(shape, item)->text = std::move(line);
  return 1;
}

}  // namespace rastrel::text
