#include <algorithm>

#include "tests/support/recording_cf_planes.h"
#include "tests/support/recording_host.h"

namespace rastrel::test {

using host::ObjectHandle;

/// The view and its document.
class RecordingApplication::View : public CVelumark5View, public CVelumark5Doc {
 public:
  explicit View(HostCalls& calls) : m_Calls(calls) {}
  CVelumark5Doc* GetDocument() override { return this; }
  void OnNew() override { m_Calls.Told("OnNew"); }
  void SetUpdateAllowed(bool allowed) override { m_Calls.Told("SetUpdateAllowed", allowed); }
  int GetOrigin() const override {
    return m_Calls.Answered(m_Calls.Answer("GetOrigin", 7), "GetOrigin");
  }

 private:
  HostCalls& m_Calls;
};

RecordingApplication::RecordingApplication(HostCalls& calls, RecordingStore& store)
    : m_Calls(calls), m_Store(store), m_View(std::make_unique<View>(calls)) {}

RecordingApplication::~RecordingApplication() = default;

std::vector<std::string> RecordingApplication::LeftOpen() const {
  std::vector<std::string> open;
  if (m_HourGlasses != 0) open.emplace_back("hourglass");
  if (m_DrillPointsOn) open.emplace_back("making of drill points");
  for (const auto& bitmap : m_Bitmaps) open.push_back("bitmap " + bitmap->Name());
  return open;
}

int RecordingApplication::FindPaletteColor(const wchar_t* name, CVKFullColor& color) {
  const auto found = m_Palette.find(name);
  if (found != m_Palette.end()) color = found->second;
  return m_Calls.Answered(found != m_Palette.end() ? 1 : 0, "FindPaletteColor", name);
}

int RecordingApplication::FindPaletteColor(int index, CVKColor& color) {
  const bool found = index >= 0 && static_cast<std::size_t>(index) < m_PaletteByIndex.size();
  if (found) color = m_PaletteByIndex[static_cast<std::size_t>(index)];
  if (index == -1) color = CVKColor(-1, COLORSPACE_RGB, 0, 0);
  return m_Calls.Answered(found || index == -1 ? 1 : 0, "FindPaletteColor", index);
}

int RecordingApplication::IsColorInPalette(const CVKColor& color) {
  return m_Calls.Answered(m_Calls.Answer("IsColorInPalette", 0), "IsColorInPalette", color);
}

int RecordingApplication::AddColorToPalette(const CVKFullColor& color) {
  return m_Calls.Answered(m_Calls.Answer("AddColorToPalette", 1), "AddColorToPalette", color);
}

int RecordingApplication::IsInvisibleColor(const CVKColor& color) {
  return m_Calls.Answered(m_Calls.Answer("IsInvisibleColor", color.IsInvisible() ? 1 : 0),
                          "IsInvisibleColor", color);
}

void RecordingApplication::GetSignBlankSize(double& width, double& height) {
  width = m_BlankWidth;
  height = m_BlankHeight;
  m_Calls.Answered(CWorldPoint{.x = width, .y = height}, "GetSignBlankSize");
}

void RecordingApplication::SetSignBlankSize(double width, double height, int redraw) {
  m_Calls.Told("SetSignBlankSize", width, height, redraw);
  if (!(width > 0 && height > 0)) return;
  m_BlankWidth = width;
  m_BlankHeight = height;
}

int RecordingApplication::GetOriginPosIndex() {
  return m_Calls.Answered(m_BlankOrigin, "GetOriginPosIndex");
}

int RecordingApplication::GetSignBlankOriginPos() {
  return m_Calls.Answered(m_BlankOrigin, "GetSignBlankOriginPos");
}

void RecordingApplication::SetSignBlankOriginPos(int origin) {
  m_Calls.Told("SetSignBlankOriginPos", origin);
  m_BlankOrigin = origin;
}

void RecordingApplication::GetGridOriginXY(double& x, double& y, double& third) {
  x = m_Calls.AnswerNumber("GetGridOriginXY.x", 0);
  y = m_Calls.AnswerNumber("GetGridOriginXY.y", 0);
  third = 0;
  m_Calls.Answered(CWorldPoint{.x = x, .y = y}, "GetGridOriginXY");
}

int RecordingApplication::GetDisplayPage() {
  return m_Calls.Answered(m_Calls.Answer("GetDisplayPage", 1), "GetDisplayPage");
}

int RecordingApplication::WhatisMaxNumberofPages(int reserved) {
  int highest = 0;
  for (const ObjectHandle object : m_Store.m_Document)
    highest = std::max(highest, m_Store.Find(object)->pages.last);
  return m_Calls.Answered(m_Calls.Answer("WhatisMaxNumberofPages", highest),
                          "WhatisMaxNumberofPages", reserved);
}

void RecordingApplication::UpdatePageWindow(int page) { m_Calls.Told("UpdatePageWindow", page); }

int RecordingApplication::GetNextEmptyLayer() {
  const int next = m_SheetLayers.empty() ? 1 : m_SheetLayers.rbegin()->first + 1;
  return m_Calls.Answered(m_Calls.Answer("GetNextEmptyLayer", next), "GetNextEmptyLayer");
}

void RecordingApplication::AddNewSheetLayer(int sheetLayer) {
  m_Calls.Told("AddNewSheetLayer", sheetLayer);
  m_SheetLayers[sheetLayer].number = sheetLayer;
}

std::optional<int> RecordingApplication::GetEmptySeparationLayer() {
  const int layer = m_Calls.Answer("GetEmptySeparationLayer", 0);
  m_Calls.Answered(layer, "GetEmptySeparationLayer");
  return layer == 0 ? std::nullopt : std::optional(layer);
}

CSheetLayerPalette* RecordingApplication::GetSheetLayerPalette() { return this; }

void RecordingApplication::SetActiveOnlySheetLayer(int sheetLayer) {
  m_Calls.Told("SetActiveOnlySheetLayer", sheetLayer);
}

void RecordingApplication::SetCurrentSheetLayer(int sheetLayer) {
  m_Calls.Told("SetCurrentSheetLayer", sheetLayer);
}

std::unique_ptr<CGenericPlateObject> RecordingApplication::NewGenericPlateObject(
    int count, double width, double height, const CWorldRect& margins, double horizontalGap,
    double verticalGap) {
  const bool fits = width > 0 && height > 0 &&
                    margins.left + width + margins.right <= m_BlankWidth &&
                    margins.top + height + margins.bottom <= m_BlankHeight;
  const bool made = m_Calls.Answer("NewGenericPlateObject", fits ? 1 : 0) != 0;
  const NameText name{made ? m_Store.NextPlateName() : "none"};
  m_Calls.Answered(name, "NewGenericPlateObject", count, width, height, margins, horizontalGap,
                   verticalGap);
  if (!made) return nullptr;
  return std::make_unique<RecordingPlate>(m_Store, name.name, count, width, height, margins,
                                          horizontalGap, verticalGap);
}

void RecordingApplication::SetPlateObjectParameters(const CWorldRect& margins, double horizontalGap,
                                                    double verticalGap) {
  m_Calls.Told("SetPlateObjectParameters", margins, horizontalGap, verticalGap);
}

ObjectHandle RecordingApplication::AdjustPlateObjects(int selectedOnly, int keepColors,
                                                      int redraw) {
  const ObjectHandle last = m_Store.LastPlate();
  m_Calls.Answered(ObjectText{last}, "AdjustPlateObjects", selectedOnly, keepColors, redraw);
  return last;
}

void RecordingApplication::AddPaneToPlateObject(ObjectHandle plate) {
  m_Calls.Told("AddPaneToPlateObject", ObjectText{plate});
  if (RecordingPlate* found = m_Store.FindPlate(plate)) found->Extend(1);
}

void RecordingApplication::AddPanesToPlateObject(ObjectHandle plate, int count) {
  m_Calls.Told("AddPanesToPlateObject", ObjectText{plate}, count);
  if (RecordingPlate* found = m_Store.FindPlate(plate)) found->Extend(count);
}

void RecordingApplication::SetXMLDrillPoint(int on, double diameter) {
  m_Calls.Told("SetXMLDrillPoint", on, diameter);
  m_DrillPointsOn = on != 0;
}

void RecordingApplication::SetDrillPointObj(const NewWorldPt& place) {
  m_Calls.Told("SetDrillPointObj", place);
  if (m_DrillPointsOn && m_Calls.Answer("SetDrillPointObj", 1) != 0) m_Store.Make(0, true);
}

int RecordingApplication::LoadTHZ(CVelumark5Doc* document, CWnd* window, const wchar_t* path,
                                  int reserved, int flag) {
  const int loaded = m_Calls.Answer("LoadTHZ", 1);
  m_Calls.Answered(loaded, "LoadTHZ", NameText{document != nullptr ? "document" : "null"}, window,
                   path, reserved, flag);
  m_Store.MakeLoaded(loaded);
  return loaded;
}

std::unique_ptr<CGenericCFPlane> RecordingApplication::NewGenericCFPlane(const wchar_t* path,
                                                                         int layer, int plane) {
  const bool made = m_Calls.Answer("NewGenericCFPlane", 1) != 0;
  const NameText name{made ? "C" + std::to_string(++m_CFPlanesMade) : "none"};
  m_Calls.Answered(name, "NewGenericCFPlane", path, layer, plane);
  if (!made) return nullptr;
  return std::make_unique<RecordingCFPlane>(m_Store, name.name, m_PlanesOfLayers);
}

CVelumark5View* RecordingApplication::UIGetActiveView() {
  return m_HasView ? m_View.get() : nullptr;
}

CWnd* RecordingApplication::GetWindowHandle(int kind) {
  if (m_Calls.Scripted("GetWindowHandle")) m_Calls.Told("GetWindowHandle", kind);
  return nullptr;
}

void RecordingApplication::HourGlass(int on) {
  m_Calls.Told("HourGlass", on);
  m_HourGlasses += on != 0 ? 1 : -1;
}

void RecordingApplication::TMessageBox(const wchar_t* text, const wchar_t* caption, unsigned icon) {
  m_Calls.Told("TMessageBox", text, caption, icon);
}

void RecordingApplication::MessageBoxW(const wchar_t* text, const wchar_t* caption, unsigned icon) {
  m_Calls.Told("MessageBoxW", text, caption, icon);
}

void RecordingApplication::ZoomObj() { m_Calls.Told("ZoomObj"); }

int RecordingApplication::GetCurrentUnits() {
  return m_Calls.Answered(m_Calls.Answer("GetCurrentUnits", 0), "GetCurrentUnits");
}

std::wstring RecordingApplication::GGetPathDeviceInI(int device) {
  return m_Calls.Answered(L"device" + std::to_wstring(device), "GGetPathDeviceInI", device);
}

std::optional<std::wstring> RecordingApplication::GetStringDevice(const wchar_t* devicePath,
                                                                  const wchar_t* section,
                                                                  const wchar_t* key) {
  for (std::size_t index = 0; index < m_Plotters.size(); ++index)
    if (devicePath == L"device" + std::to_wstring(index))
      return m_Calls.Answered(m_Plotters[index], "GetStringDevice", devicePath, section, key);
  m_Calls.Answered(nullptr, "GetStringDevice", devicePath, section, key);
  return std::nullopt;
}

int RecordingApplication::WriteStringDevice(const wchar_t* section, const wchar_t* key,
                                            const wchar_t* value) {
  m_Calls.Told("WriteStringDevice", section, key, value);
  return 1;
}

int RecordingApplication::GetQueueComChannel(const wchar_t* deviceName) {
  return m_Calls.Answered(m_Calls.Answer("GetQueueComChannel", 0), "GetQueueComChannel",
                          deviceName);
}

void RecordingApplication::SetImportRotation(double rotation) {
  m_Calls.Told("SetImportRotation", rotation);
}

void RecordingApplication::ExpectCutLine(bool expected) { m_Calls.Told("ExpectCutLine", expected); }

std::wstring RecordingApplication::LoadBaseDir() {
  m_Calls.Told("LoadBaseDir");
  return m_LoadBaseDir;
}

std::optional<CSheetLayer> RecordingApplication::GetSheetLayerFromPalette(int number) {
  m_Calls.Told("GetSheetLayerFromPalette", number);
  const auto found = m_SheetLayers.find(number);
  return found == m_SheetLayers.end() ? std::nullopt : std::optional(found->second);
}

int RecordingApplication::AddSheetToPalette(const CSheetLayer& layer) {
  m_SheetLayers[layer.number] = layer;
  return m_Calls.Answered(1, "AddSheetToPalette", layer.number, layer.name, layer.sheetType,
                          layer.hasSubstrate);
}

void RecordingApplication::RemoveSheetFromPalette(int number) {
  m_Calls.Told("RemoveSheetFromPalette", number);
  m_SheetLayers.erase(number);
}

}  // namespace rastrel::test
