#include "rastrel/imports/bright_star_xml_import.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <utility>

#include "rastrel/imports/bright_star_parse.h"
#include "rastrel/imports/document_host.h"
#include "rastrel/imports/text_placing.h"
#include "rastrel/job/app_log.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/text_compose.h"
#include "rastrel/platform/host/translation.h"
#include "rastrel/platform/host/wait_cursor.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/text.h"

namespace host = rastrel::host;
namespace imports = rastrel::imports;
namespace os = rastrel::os;

namespace {

/// In the order of their codes, which begin at 1. The format's own names: no other format has them.
constexpr std::array<std::wstring_view, 9> OriginTexts{
    L"TOP LEFT",     L"TOP CENTER", L"TOP RIGHT",    L"LEFT CENTER", L"CENTER",
    L"RIGHT CENTER", L"LOWER LEFT", L"LOWER CENTER", L"LOWER RIGHT"};

constexpr int LowerLeft = 7;
constexpr int DocumentWindow = 2;

struct Frame {
  NewWorldPt first;
  NewWorldPt second;
};

/// The frame of corners that count from the blank's origin, inward, as the text engine wants it:
/// from the lower left corner of the blank. `grid` is the origin's place there. Text units.
///
///     codes     1 4   2 5   3 6    x from the left, both ways from the center, from the right;
///                                  y downward
///               7     8     9      y upward
///
/// The middle row counts downward from the top as the first does.
Frame FromBlankOrigin(const Frame& corners, const NewWorldPt& grid, int origin) {
  if (origin < 1 || origin > static_cast<int>(OriginTexts.size())) return corners;
  const auto [ux, uy] = corners.first;
  const auto [lx, ly] = corners.second;
  Frame frame = corners;
  const int column = (origin - 1) % 3;
  if (column == 1) {
    frame.first.x = ux + grid.x;
    frame.second.x = lx + grid.x;
  } else if (column == 2) {
    // Written out as it is computed elsewhere: documents are compared to the last bit.
    frame.first.x = grid.x - (ux + (lx - ux));
    frame.second.x = grid.x - ux;
  }
  if (origin < LowerLeft) {
    frame.first.y = grid.y - uy;
    frame.second.y = grid.y - ly;
  }
  return frame;
}

Frame FrameOf(const tagTEXTFRAME& frame, host::Application& application) {
  const Frame corners{.first = {.x = frame.upperX * host::TextUnitsPerInch,
                                .y = frame.upperY * host::TextUnitsPerInch},
                      .second = {.x = frame.lowerX * host::TextUnitsPerInch,
                                 .y = frame.lowerY * host::TextUnitsPerInch}};
  NewWorldPt grid;
  double third = 0;
  application.GetGridOriginXY(grid.x, grid.y, third);
  return FromBlankOrigin(corners, grid, application.GetSignBlankOriginPos());
}

std::wstring Shown(const std::wstring& text) {
  return os::WideFromUtf8(os::CleanLine(os::Utf8FromWide(text)));
}

}  // namespace

CBrightStarXMLImport::CBrightStarXMLImport(const wchar_t* fileName) : CXMLImport(fileName) {
  m_bParsed = CBrightStarXMLImport::ParseFile(fileName);
}

CBrightStarXMLImport::~CBrightStarXMLImport() { CBrightStarXMLImport::ClearPlates(); }

bool CBrightStarXMLImport::ParseFile(const wchar_t* fileName) {
  std::vector<std::unique_ptr<tagBRIGHT_STAR_DATA>> records;
  if (!imports::ParseBrightStar(fileName, records)) return false;
  std::ranges::move(records, std::back_inserter(m_Records));
  return true;
}

void CBrightStarXMLImport::ClearPlates() {
  m_Records.clear();
  m_Place = 0;
}

void* CBrightStarXMLImport::GetFirstPlate() {
  m_Place = 0;
  return m_Records.empty() ? nullptr : m_Records.front().get();
}

void* CBrightStarXMLImport::GetNextPlate() {
  if (m_Place < m_Records.size()) ++m_Place;
  return m_Place < m_Records.size() ? m_Records[m_Place].get() : nullptr;
}

int CBrightStarXMLImport::ImportXMLFile() {
  if (!m_bParsed) return 0;
  const auto document = imports::FindDocumentHost();
  if (!document) return 0;
  const auto* const record = static_cast<const tagBRIGHT_STAR_DATA*>(GetFirstPlate());
  if (record == nullptr) {
    CAppLog::Instance().Printf(
        L"[Import] there is no ENGRAVINGTEMPLATE below the root, and nothing is imported");
    return 0;
  }
  BeginWaitCursor();
  document->application.SetSignBlankSize(record->width * host::CentimetresPerInch,
                                         record->height * host::CentimetresPerInch, 1);
  SetSignBlankOrigin(record->origin);
  for (const auto& frame : record->textFrames) AddFrameText(*frame);
  for (const auto& graphic : record->graphics) AddGraphics(*graphic);
  return 1;
}

void CBrightStarXMLImport::SetSignBlankOrigin(const std::wstring& origin) {
  const auto document = imports::FindDocumentHost();
  if (!document) return;
  const auto* const found = std::ranges::find(OriginTexts, origin);
  const int code =
      found == OriginTexts.end() ? LowerLeft : static_cast<int>(found - OriginTexts.begin()) + 1;
  document->application.SetSignBlankOriginPos(code);
}

void CBrightStarXMLImport::AddFrameText(tagTEXTFRAME frame) {
  const auto document = imports::FindDocumentHost();
  if (!document) return;
  const Frame place = FrameOf(frame, document->application);
  m_Text.isOpen = StartAddText(place.first, place.second, frame.justification.c_str(),
                               frame.compression.c_str()) != 0;
  if (!m_Text.isOpen) {
    CAppLog::Instance().Printf(
        L"[Import] the host opens no text in the frame of (%g, %g) to (%g, %g) inches",
        frame.upperX, frame.upperY, frame.lowerX, frame.lowerY);
    return;
  }
  PasteLines(frame);
  const host::ObjectHandle object = StopAddText();
  m_Text.isOpen = false;
  if (object == 0) return;
  document->store.DBInvalidateBounds(object);
  document->store.DBValidateBounds(object);
  document->store.InvalidateObject(object, 1);
}

void CBrightStarXMLImport::PasteLines(tagTEXTFRAME& frame) {
  std::size_t left = frame.lines.size();
  std::size_t dropped = 0;
  for (const std::wstring& line : frame.lines) {
    const bool isLast = --left == 0;
    if (!imports::PasteText(m_Text, frame.fontName.data(), frame.size,
                            isLast ? line : line + L"\r\n"))
      ++dropped;
  }
  if (dropped == 0) return;
  // Pasting cut the name at its extension in place.
  const std::wstring font = frame.fontName.substr(0, frame.fontName.find(L'\0'));
  CAppLog::Instance().Printf(L"[Import] the host has no font \"%s\": lines left out: %d",
                             Shown(font), static_cast<int>(dropped));
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface passes records by value
void CBrightStarXMLImport::AddGraphics(tagGRAPHIC graphic) {
  const auto document = imports::FindDocumentHost();
  if (!document) return;
  host::ObjectStore& store = document->store;
  host::Application& application = document->application;
  application.HourGlass(1);
  store.UNOpenStep(host::TranslatedText(L"(*v*)XML Import").c_str());
  // Hosts rely on the state that a missing file leaves, an open step and the hourglass.
  if (!os::Exists(graphic.file)) return;
  store.DBDeselectAll();
  store.DBHoldNotifications();
  CVelumark5View* const view = application.UIGetActiveView();
  if (application.LoadTHZ(view != nullptr ? view->GetDocument() : nullptr,
                          application.GetWindowHandle(DocumentWindow), graphic.file.c_str(), 1,
                          1) == 0)
    CAppLog::Instance().Printf(L"[Import] the host loads no graphic from \"%s\"",
                               Shown(graphic.file));
  store.UNCloseStep();
  application.UpdatePageWindow(0);
  store.DBReleaseNotifications();
  application.HourGlass(0);
}
