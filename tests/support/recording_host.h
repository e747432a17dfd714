#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/text_compose.h"
#include "tests/support/host_calls.h"
#include "tests/support/recording_document.h"
#include "tests/support/recording_placed.h"
#include "tests/support/recording_planes.h"

namespace rastrel::test {

/// The text engine of a recording host. A field that is written in the open paragraph's records is
/// written as a line of its own, `paragraph.fit = 2`, in front of the next call.
class RecordingText : public host::TextCompose {
 public:
  explicit RecordingText(HostCalls& calls) : m_Calls(calls) {}

  HostCalls& m_Calls;
  /// Fonts that can't be had, by the name that `AddFont` is given.
  std::set<std::wstring> m_MissingFonts;
  /// The texts of the replaceable items, by their numbers from 0.
  std::vector<std::wstring> m_ReplaceableItems;
  /// The result of `GetTextFrame`; without it the frame that the paragraph was opened with.
  std::optional<CWorldRect> m_Frame;
  /// Takes records out of what `GetCurParagraph` answers.
  std::function<void(CurrentParagraph&)> m_Withhold;

  std::vector<std::string> LeftOpen() const;
  /// Writes the fields that changed since the last line.
  void WriteChanges();

  void SetOpenParagraphInfo(ParagraphInfo& info, int reserved) override;
  int OpenParagraph(int kind, const ParagraphInfo& info, const NewWorldPt& first,
                    const NewWorldPt& second) override;
  void GetCurParagraph(CurrentParagraph& current) override;
  void CloseParagraph(int keep, const ParagraphInfo& info) override;
  void SetTextLineJustifyMode(paragraphStruct* paragraph, list_s* lines, int mode) override;
  void SetTextLineJustification(paragraphStruct* paragraph, list_s* lines,
                                int justification) override;
  CWorldRect GetTextFrame(const paragraphStruct* paragraph) override;
  void FitTextToFrame(paragraphStruct* paragraph, list_s* lines) override;
  void GetDefaultAttributes(ELEMENT_ATTRIBUTES& attributes) override;
  const FontRecord* AddFont(int reserved, int type, const wchar_t* name, int weight,
                            int italic) override;
  void edPasteString(const wchar_t* text, int length, int position, const void* style,
                     bool select) override;
  void SetTextColor(const CVKColor& color) override;
  std::unique_ptr<CFontReplacement> NewFontReplacement(const wchar_t* name) override;
  const FontRecord* ChooseReplacementFont(CFontReplacement& replacement, const wchar_t* name,
                                          int weight, int italic) override;
  void InitNewText(CWnd* window, const NewWorldPt& first, const NewWorldPt& second,
                   int kind) override;
  void TerminateNewText(CWnd* window, int keep) override;
  host::ObjectHandle GetTerminateTextEditHI() override;
  std::vector<int> MakeReplaceableItemsListForParagraphEle(const ParagraphEle& paragraph) override;
  std::wstring GetTextParagraphEle(const ParagraphEle& paragraph, int item) override;
  int ReplaceTextParagraphEle(ParagraphEle& paragraph, int item, const wchar_t* text) override;

  /// Makes the object of a text that was finished.
  std::function<host::ObjectHandle()> m_MakeText;

 private:
  /// The records of one paragraph, and their values when the last line was written.
  struct Records {
    paragraphStruct paragraph;
    list_s lines;
    lineStruct line;
    CharacterStyle style;
  };
  void Begin(const NewWorldPt& first, const NewWorldPt& second);
  std::string NameOf(const paragraphStruct* paragraph) const;
  void WriteChange(const char* name, double before, double now);

  std::unique_ptr<Records> m_Now = std::make_unique<Records>();
  Records m_Seen;
  bool m_ParagraphOpen = false;
  bool m_TextOpen = false;
  bool m_WrittenAfterEnd = false;
  CWorldRect m_OpenedFrame;
  std::uint32_t m_Paragraphs = 0;
  std::map<std::pair<int, std::wstring>, std::unique_ptr<FontRecord>> m_Fonts;
  host::ObjectHandle m_Finished = 0;
};

/// The application of a recording host: a blank of 60 by 30 cm with its origin at the bottom left,
/// page 1 on show. The script answers all operations that return a number by their names.
class RecordingApplication : public host::Application, public CSheetLayerPalette {
 public:
  RecordingApplication(HostCalls& calls, RecordingStore& store);
  ~RecordingApplication() override;

  HostCalls& m_Calls;
  RecordingStore& m_Store;
  /// The palette by name, and the result of `FindPaletteColor` of an index.
  std::map<std::wstring, CVKFullColor> m_Palette;
  std::vector<CVKColor> m_PaletteByIndex;
  double m_BlankWidth = 60;
  double m_BlankHeight = 30;
  int m_BlankOrigin = 7;
  /// The names of the plotters by their indexes; an index beyond them has none.
  std::vector<std::wstring> m_Plotters;
  /// Whether there is a view.
  bool m_HasView = true;
  /// The number of planes of each layer of a plane set that `NewGenericCFPlane` makes. The script
  /// may answer `NewGenericCFPlane` with 0: null.
  std::vector<int> m_PlanesOfLayers{4};
  /// The PostScript of the placed EPS files that it makes.
  std::string m_EpsContent = "%!PS-Adobe-3.0 EPSF-3.0\nshowpage\n";
  /// The result of `LoadBaseDir`.
  std::wstring m_LoadBaseDir = L"/import";

  std::vector<std::string> LeftOpen() const;

  int FindPaletteColor(const wchar_t* name, CVKFullColor& color) override;
  int FindPaletteColor(int index, CVKColor& color) override;
  int IsColorInPalette(const CVKColor& color) override;
  int AddColorToPalette(const CVKFullColor& color) override;
  int IsInvisibleColor(const CVKColor& color) override;
  void GetSignBlankSize(double& width, double& height) override;
  void SetSignBlankSize(double width, double height, int redraw) override;
  int GetOriginPosIndex() override;
  int GetSignBlankOriginPos() override;
  void SetSignBlankOriginPos(int origin) override;
  void GetGridOriginXY(double& x, double& y, double& third) override;
  int GetDisplayPage() override;
  int WhatisMaxNumberofPages(int reserved) override;
  void UpdatePageWindow(int page) override;
  int GetNextEmptyLayer() override;
  void AddNewSheetLayer(int sheetLayer) override;
  std::optional<int> GetEmptySeparationLayer() override;
  CSheetLayerPalette* GetSheetLayerPalette() override;
  void SetActiveOnlySheetLayer(int sheetLayer) override;
  void SetCurrentSheetLayer(int sheetLayer) override;
  std::unique_ptr<CGenericPlateObject> NewGenericPlateObject(int count, double width, double height,
                                                             const CWorldRect& margins,
                                                             double horizontalGap,
                                                             double verticalGap) override;
  void SetPlateObjectParameters(const CWorldRect& margins, double horizontalGap,
                                double verticalGap) override;
  host::ObjectHandle AdjustPlateObjects(int selectedOnly, int keepColors, int redraw) override;
  void AddPaneToPlateObject(host::ObjectHandle plate) override;
  void AddPanesToPlateObject(host::ObjectHandle plate, int count) override;
  void SetXMLDrillPoint(int on, double diameter) override;
  void SetDrillPointObj(const NewWorldPt& place) override;
  int LoadTHZ(CVelumark5Doc* document, CWnd* window, const wchar_t* path, int reserved,
              int flag) override;
  std::unique_ptr<CGenericCFPlane> NewGenericCFPlane(const wchar_t* path, int layer,
                                                     int plane) override;
  std::unique_ptr<CGenericEPS> NewGenericEPS(const wchar_t* path) override;
  CVKBitmap* NewVKBitmap() override;
  void DeleteVKBitmap(CVKBitmap* bitmap) override;
  CVelumark5View* UIGetActiveView() override;
  /// Null, and written if the script has an answer.
  CWnd* GetWindowHandle(int kind) override;
  void HourGlass(int on) override;
  void TMessageBox(const wchar_t* text, const wchar_t* caption, unsigned icon) override;
  void MessageBoxW(const wchar_t* text, const wchar_t* caption, unsigned icon) override;
  void ZoomObj() override;
  int GetCurrentUnits() override;
  std::wstring GGetPathDeviceInI(int device) override;
  std::optional<std::wstring> GetStringDevice(const wchar_t* devicePath, const wchar_t* section,
                                              const wchar_t* key) override;
  int WriteStringDevice(const wchar_t* section, const wchar_t* key, const wchar_t* value) override;
  int GetQueueComChannel(const wchar_t* deviceName) override;
  void SetImportRotation(double rotation) override;
  void ExpectCutLine(bool expected) override;
  std::wstring LoadBaseDir() override;

  std::optional<CSheetLayer> GetSheetLayerFromPalette(int number) override;
  int AddSheetToPalette(const CSheetLayer& layer) override;
  void RemoveSheetFromPalette(int number) override;

 private:
  class View;

  std::map<int, CSheetLayer> m_SheetLayers;
  std::unique_ptr<View> m_View;
  std::vector<std::unique_ptr<RecordingBitmap>> m_Bitmaps;
  int m_BitmapsMade = 0;
  int m_EpsMade = 0;
  int m_HourGlasses = 0;
  int m_CFPlanesMade = 0;
  bool m_DrillPointsOn = false;
};

/// A host that writes each call with its arguments as one line and answers from a script; installed
/// while it exists. LeftOpen returns the things that a test leaves open; CheckedHost
/// (checked_host.h) fails the test by itself.
///
/// A setting that was written counts as open until it is written a second time: the library changes
/// settings only for the length of an operation, but for those named with `MayStay`.
class RecordingHost : public host::Host, host::Settings, host::Directories, host::Translation {
 public:
  RecordingHost();
  ~RecordingHost() override;
  RecordingHost(const RecordingHost&) = delete;
  RecordingHost& operator=(const RecordingHost&) = delete;

  HostCalls m_Calls;
  RecordingStore m_Store{m_Calls};
  RecordingText m_Text{m_Calls};
  RecordingApplication m_Application{m_Calls, m_Store};
  RecordingPlaneReader m_Planes{m_Calls};

  /// Settings by section and key, as spelled.
  std::map<std::pair<std::wstring, std::wstring>, std::wstring> m_Settings;
  /// Base directories by type; others are those of the data root.
  std::map<int, std::wstring> m_BaseDirectories;
  /// Translations; a text that has none loses its mark.
  std::map<std::wstring, std::wstring> m_Translations;
  /// Which of the document's libraries the host has; all at first.
  bool m_HasDocument = true;
  bool m_HasGraphicsIO = true;
  bool m_HasPlaneReader = true;
  bool m_HasContourCut = true;

  /// Allows a setting to keep the value that the library wrote.
  void MayStay(const std::wstring& section, const std::wstring& key);
  /// A text for each thing that was opened and not closed; empty if all was closed.
  std::vector<std::string> LeftOpen();

  host::Settings& GetSettings() override { return *this; }
  host::Directories& GetDirectories() override { return *this; }
  host::Translation& GetTranslation() override { return *this; }
  void BeginWaitCursor() override;
  host::ObjectStore* GetObjectStore() override { return m_HasDocument ? &m_Store : nullptr; }
  host::TextCompose* GetTextCompose() override { return m_HasDocument ? &m_Text : nullptr; }
  host::GraphicsIO* GetGraphicsIO() override {
    return m_HasDocument && m_HasGraphicsIO ? &m_Store : nullptr;
  }
  host::ContourCut* GetContourCut() override {
    return m_HasDocument && m_HasContourCut ? &m_Store : nullptr;
  }
  host::PlaneReader* GetPlaneReader() override {
    return m_HasDocument && m_HasPlaneReader ? &m_Planes : nullptr;
  }
  host::Application* GetApplication() override { return m_HasDocument ? &m_Application : nullptr; }

 private:
  std::optional<std::wstring> Read(const std::wstring& section, const std::wstring& key,
                                   DataStoreType store) override;
  bool Write(const std::wstring& section, const std::wstring& key, const std::wstring& value,
             DataStoreType store) override;
  std::wstring BaseDirectory(path_type type) override;
  std::optional<std::wstring> WindowsDirectory() override { return std::nullopt; }
  std::optional<std::wstring> SystemDirectory() override { return std::nullopt; }
  std::optional<std::wstring> PrinterDriverDirectory() override { return std::nullopt; }
  std::optional<std::wstring> Translate(const std::wstring& text) override;

  std::map<std::pair<std::wstring, std::wstring>, int> m_Writes;
  std::set<std::pair<std::wstring, std::wstring>> m_MayStay;
};

}  // namespace rastrel::test
