#include "rastrel/imports/text_placing.h"

#include <algorithm>
#include <optional>
#include <string>

#include "rastrel/imports/document_host.h"
#include "rastrel/imports/font_type.h"
#include "rastrel/job/app_log.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/text_compose.h"
#include "rastrel/platform/host/undo_step.h"

namespace rastrel::imports {
namespace {

// Numbers of the text engine that every importer passes.
constexpr int ParagraphInFrame = 4;
constexpr int LinesAsOneBlock = 4;
constexpr int JustifyInFrame = 2;
constexpr int FitWheneverTheFrameChanges = 2;
constexpr int FrameKeepsText = 3;

host::TextCompose* Engine() { return host::GetHost().GetTextCompose(); }

/// The frame's width, 0 without an engine or a paragraph.
double FrameWidth(const PlacedText& text) {
  host::TextCompose* const engine = Engine();
  if (engine == nullptr) return 0.0;
  const CWorldRect frame = engine->GetTextFrame(text.current.paragraph);
  return frame.right - frame.left;
}

bool HasRecords(const PlacedText& text) {
  return text.current.paragraph != nullptr && text.current.lines != nullptr;
}

/// Nothing where no object could be made.
host::ObjectHandle InsertParagraph(const DocumentHost& document) {
  ParagraphInfo info;
  document.text.SetOpenParagraphInfo(info, 0);
  document.text.CloseParagraph(1, info);
  ELEMENT_ATTRIBUTES attributes;
  document.text.GetDefaultAttributes(attributes);
  const ParagraphEle element{.first = info.first, .second = info.second};
  return document.store.DBInsertElement(&attributes, DBTYPE_PARAGRAPH, &element, 0, 0, 0, 1, false);
}

}  // namespace

bool OpenText(PlacedText& text, const NewWorldPt& first, const NewWorldPt& second) {
  host::TextCompose* const engine = Engine();
  if (engine == nullptr) return false;
  ParagraphInfo info;
  engine->SetOpenParagraphInfo(info, 0);
  if (engine->OpenParagraph(ParagraphInFrame, info, first, second) != 0) return false;
  text.isOpen = true;
  engine->GetCurParagraph(text.current);
  return true;
}

void SetTextLines(PlacedText& text, int justification) {
  host::TextCompose* const engine = Engine();
  if (engine == nullptr || !HasRecords(text)) return;
  paragraphStruct* const paragraph = text.current.paragraph;
  list_s* const lines = text.current.lines;
  lines->mode = LinesAsOneBlock;
  engine->SetTextLineJustifyMode(paragraph, lines, JustifyInFrame);
  engine->SetTextLineJustification(paragraph, lines, justification);
  paragraph->fit = FitWheneverTheFrameChanges;
  paragraph->frameMode = FrameKeepsText;
}

double AbsoluteFromPercentLeft(const PlacedText& text, int perMille) {
  if (!text.isOpen) return 0.0;
  const double width = FrameWidth(text);
  const double other = text.current.paragraph != nullptr ? text.current.paragraph->rightMargin : 0;
  return std::min(width - other, perMille * width / 1000.0);
}

double AbsoluteFromPercentRight(const PlacedText& text, int perMille) {
  const double width = FrameWidth(text);
  const double other = text.current.paragraph != nullptr ? text.current.paragraph->leftMargin : 0;
  return std::min(width - other, perMille * width / 1000.0);
}

void SetTextMargins(PlacedText& text, int perMille) {
  host::TextCompose* const engine = Engine();
  if (engine == nullptr || !HasRecords(text)) return;
  paragraphStruct* const paragraph = text.current.paragraph;
  paragraph->leftPercent = perMille;
  paragraph->leftMargin = AbsoluteFromPercentLeft(text, perMille);
  engine->FitTextToFrame(paragraph, text.current.lines);
  paragraph->rightPercent = perMille;
  paragraph->rightMargin = AbsoluteFromPercentRight(text, perMille);
  engine->FitTextToFrame(paragraph, text.current.lines);
}

bool PasteText(PlacedText& text, wchar_t* fontName, double size, std::wstring_view characters) {
  host::TextCompose* const engine = Engine();
  if (!text.isOpen || engine == nullptr || text.current.style == nullptr) return false;
  const int type = FontTypeOf(fontName);
  const FontRecord* const font = engine->AddFont(0, type, fontName, -1, 1);
  if (font == nullptr) return false;
  text.current.style->font = font;
  // Documents hold sizes that went through a single precision number, and compare them exactly.
  text.current.style->size = static_cast<double>(static_cast<float>(size * host::TextUnitsPerInch));
  engine->edPasteString(std::wstring(characters).c_str(), static_cast<int>(characters.size()), 0,
                        nullptr, false);
  return true;
}

host::ObjectHandle CloseText(PlacedText& text) {
  if (!text.isOpen) return 0;
  const std::optional<DocumentHost> document = FindDocumentHost();
  text.current = {};
  if (!document) return 0;
  const host::ObjectHandle object = InsertParagraph(*document);
  if (object == 0) {
    CAppLog::Instance().Printf(L"[Import] the host made no object of a text");
    return 0;
  }
  document->store.DBSetTrait(object, DBTRAIT_IN_DOCUMENT, 1);
  const host::UndoStep step(document->store, L"(*v*)Adding text");
  document->store.DSAddSourceObject(object, 2, object);
  return object;
}

}  // namespace rastrel::imports
