#include "host/document/document_application.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "host/document/measure_text.h"
#include "host/document/plate_item.h"
#include "host/document/plate_layout.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::document {

namespace {

constexpr unsigned StopIcon = 16;

/// The lines of a message as one: a space in place of their ends and empty lines.
std::wstring InOneLine(std::wstring_view text) {
  std::wstring line;
  for (const wchar_t character : text) {
    if (character != L'\r' && character != L'\n') {
      line += character;
    } else if (!line.empty() && line.back() != L' ') {
      line += L' ';
    }
  }
  return line;
}

}  // namespace

class DocumentApplication::View : public CVelumark5View, private CVelumark5Doc {
 public:
  explicit View(DocumentApplication& application) : m_Application(application) {}
  [[nodiscard]] CVelumark5Doc* GetDocument() override { return this; }
  void OnNew() override {
    m_Application.m_Store.Clear();
    if (m_Application.m_NewDocument) m_Application.m_NewDocument();
  }
  void SetUpdateAllowed(bool /*allowed*/) override {}

 private:
  [[nodiscard]] int GetOrigin() const override { return m_Application.m_Document.Blank().origin; }
  DocumentApplication& m_Application;
};

class DocumentApplication::SheetLayers : public CSheetLayerPalette {
 public:
  explicit SheetLayers(Document& document) : m_Document(document) {}
  [[nodiscard]] std::optional<CSheetLayer> GetSheetLayerFromPalette(int number) override {
    const auto found = m_Document.SheetLayers().find(number);
    if (found == m_Document.SheetLayers().end()) return std::nullopt;
    return found->second;
  }
  int AddSheetToPalette(const CSheetLayer& layer) override {
    return m_Document.AddSheetLayer(layer) ? 1 : 0;
  }
  void RemoveSheetFromPalette(int number) override { m_Document.RemoveSheetLayer(number); }

 private:
  Document& m_Document;
};

DocumentApplication::DocumentApplication(Document& document, DocumentStore& store, Notices& notices)
    : m_Document(document),
      m_Store(store),
      m_Notices(notices),
      m_View(std::make_unique<View>(*this)),
      m_SheetLayers(std::make_unique<SheetLayers>(document)) {}

DocumentApplication::~DocumentApplication() = default;

// --- Palette ---

int DocumentApplication::FindPaletteColor(const wchar_t* name, CVKFullColor& color) {
  const PaletteEntry* entry = name ? m_Document.Colors().Find(std::wstring(name)) : nullptr;
  if (entry) color = entry->color;
  return entry ? 1 : 0;
}

int DocumentApplication::FindPaletteColor(int index, CVKColor& color) {
  if (index == -1) {
    color = InvisibleColor();
    return 1;
  }
  const auto& entries = m_Document.Colors().Entries();
  if (index < 0 || static_cast<std::size_t>(index) >= entries.size()) return 0;
  color = entries[static_cast<std::size_t>(index)].color;
  return 1;
}

int DocumentApplication::IsColorInPalette(const CVKColor& color) {
  return color.IsInvisible() || m_Document.Colors().Find(color) ? 1 : 0;
}

int DocumentApplication::AddColorToPalette(const CVKFullColor& color) {
  return m_Document.Colors().Add({color, false}) ? 1 : 0;
}

int DocumentApplication::IsInvisibleColor(const CVKColor& color) {
  return color.IsInvisible() ? 1 : 0;
}

// --- Sign blank ---

void DocumentApplication::GetSignBlankSize(double& width, double& height) {
  width = m_Document.Blank().width;
  height = m_Document.Blank().height;
}

void DocumentApplication::SetSignBlankSize(double width, double height, int /*redraw*/) {
  SignBlank blank = m_Document.Blank();
  if (!std::isfinite(width) || !std::isfinite(height) || width <= 0 || height <= 0) {
    m_Notices.Add(os::WideFromUtf8("a blank of " + SizeText(width, height) + " is none; it stays " +
                                   SizeText(blank.width, blank.height)));
    return;
  }
  blank.width = width;
  blank.height = height;
  m_Document.SetBlank(blank);
}

int DocumentApplication::GetOriginPosIndex() { return m_Document.Blank().origin; }
int DocumentApplication::GetSignBlankOriginPos() { return m_Document.Blank().origin; }

void DocumentApplication::SetSignBlankOriginPos(int origin) {
  if (origin < 1 || origin > 9) return;
  SignBlank blank = m_Document.Blank();
  blank.origin = origin;
  m_Document.SetBlank(blank);
}

void DocumentApplication::GetGridOriginXY(double& x, double& y, double& third) {
  const SignBlank& blank = m_Document.Blank();
  const int column = (blank.origin - 1) % 3;  // 0 left, 1 middle, 2 right
  const int row = (blank.origin - 1) / 3;     // 0 top, 1 middle, 2 bottom
  x = host::TextFromWorld(blank.width * column / 2);
  y = host::TextFromWorld(blank.height * (2 - row) / 2);
  third = 0;
}

// --- Pages and sheet layers ---

int DocumentApplication::GetDisplayPage() { return m_Document.DisplayPage(); }
int DocumentApplication::WhatisMaxNumberofPages(int /*reserved*/) {
  return m_Document.HighestPage();
}
void DocumentApplication::UpdatePageWindow(int /*page*/) {}
int DocumentApplication::GetNextEmptyLayer() { return m_Document.NextEmptyLayer(); }

void DocumentApplication::AddNewSheetLayer(int sheetLayer) {
  m_Document.AddSheetLayer({sheetLayer, L"Layer " + std::to_wstring(sheetLayer)});
}

std::optional<int> DocumentApplication::GetEmptySeparationLayer() {
  constexpr int separationSheet = 1;
  std::unordered_set<int> used;
  for (ObjectHandle handle = host::DocumentRoot + 1; handle < m_Document.NextHandle(); ++handle)
    if (m_Document.Holds(handle)) used.insert(m_Document.Find(handle)->attributes.sheetLayer);
  for (const auto& [number, layer] : m_Document.SheetLayers())
    if (layer.sheetType == separationSheet && !used.contains(number)) return number;
  return std::nullopt;
}

void DocumentApplication::SetCurrentSheetLayer(int sheetLayer) {
  m_Document.SetCurrentSheetLayer(sheetLayer);
}

std::unique_ptr<CGenericCFPlane> DocumentApplication::NewGenericCFPlane(const wchar_t* path,
                                                                        int layer, int plane) {
  if (!m_OpenPlanes || path == nullptr) return nullptr;
  auto set = m_OpenPlanes(path);
  if (!set) {
    m_Notices.AddLoss(L"the planes: " + os::WideFromUtf8(Describe(set.Error())));
    return nullptr;
  }
  return std::make_unique<SeparationItem>(m_Store, *std::move(set), layer, plane);
}

CSheetLayerPalette* DocumentApplication::GetSheetLayerPalette() { return m_SheetLayers.get(); }

// --- Plates ---

std::unique_ptr<CGenericPlateObject> DocumentApplication::NewGenericPlateObject(
    int count, double width, double height, const CWorldRect& margins, double horizontalGap,
    double verticalGap) {
  PlateShape shape;
  shape.wanted = count;
  shape.width = width;
  shape.height = height;
  shape.margins = margins;
  shape.horizontalGap = horizontalGap;
  shape.verticalGap = verticalGap;
  // The caller lays panes out page by page until none is left: one that never fits would not end.
  Expected<void> fits = CheckPaneFits(m_Document.Blank(), shape);
  if (fits && (count < 1 || count > MaximumPanes)) {
    fits = FailureOf("a plate of " + std::to_string(count) + " panes: a document holds 1 to " +
                     std::to_string(MaximumPanes));
  }
  if (!fits) {
    m_Notices.AddLoss(os::WideFromUtf8(Describe(fits.Error())));
    return nullptr;
  }
  return std::make_unique<PlateItem>(m_Store, std::move(shape));
}

void DocumentApplication::SetPlateObjectParameters(const CWorldRect& margins, double horizontalGap,
                                                   double verticalGap) {
  m_Document.SetPlates({margins, horizontalGap, verticalGap});
}

ObjectHandle DocumentApplication::AdjustPlateObjects(int /*selectedOnly*/, int /*keepColors*/,
                                                     int /*redraw*/) {
  return PlaceNewPlates(m_Document);
}

void DocumentApplication::AddPaneToPlateObject(ObjectHandle plate) {
  AddPanesToPlateObject(plate, 1);
}

void DocumentApplication::AddPanesToPlateObject(ObjectHandle plate, int count) {
  const ObjectHandle part = LastPartOf(plate);
  if (part == 0 || count < 1) return;
  const std::size_t panes = std::get<PlateShape>(m_Document.Find(part)->shape).panes.size();
  GrowPlate(m_Document, part, panes + static_cast<std::size_t>(count));
}

// Panes come one by one, to plates on hundreds of pages, so the search begins where the last one
// ended.
ObjectHandle DocumentApplication::LastPartOf(ObjectHandle plate) {
  const auto shapeOf = [&](ObjectHandle handle) {
    const Object* object = m_Document.Find(handle);
    return object ? std::get_if<PlateShape>(&object->shape) : nullptr;
  };
  if (!shapeOf(plate)) return 0;
  if (m_GrownPlate != plate || !m_Document.Holds(m_LastPart)) m_LastPart = plate;
  m_GrownPlate = plate;
  for (ObjectHandle next = m_LastPart; m_Document.Holds(next); next = shapeOf(next)->continuation)
    m_LastPart = next;
  return m_LastPart;
}

// --- Drill points ---

void DocumentApplication::SetXMLDrillPoint(int on, double diameter) {
  m_DrillDiameter.reset();
  if (on != 0) m_DrillDiameter = diameter;
}

void DocumentApplication::SetDrillPointObj(const NewWorldPt& place) {
  if (!m_DrillDiameter) return;
  const CWorldPoint centre{place.x / host::TextUnitsPerInch * host::CentimetresPerInch,
                           place.y / host::TextUnitsPerInch * host::CentimetresPerInch};
  if (!std::isfinite(centre.x) || !std::isfinite(centre.y) || !std::isfinite(*m_DrillDiameter) ||
      *m_DrillDiameter <= 0 || *m_DrillDiameter > LargestDrillDiameter) {
    m_Notices.AddLoss(os::WideFromUtf8("a drill point of " + MeasureText(*m_DrillDiameter) +
                                       " cm at " + MeasureText(centre.x) + ", " +
                                       MeasureText(centre.y) + " cm can't be made"));
    return;
  }
  const ObjectHandle drill =
      m_Document.Create(DrillShape{centre, *m_DrillDiameter}, m_Document.NewAttributes());
  m_Store.DSAddObject(drill);
}

// --- Placed files ---

int DocumentApplication::LoadTHZ(CVelumark5Doc* /*document*/, CWnd* /*window*/, const wchar_t* path,
                                 int /*reserved*/, int /*flag*/) {
  return path && m_LoadGraphic ? m_LoadGraphic(path, m_ExpectsCutLine) : 0;
}

std::unique_ptr<CGenericEPS> DocumentApplication::NewGenericEPS(const wchar_t* path) {
  return path && m_OpenEps ? m_OpenEps(path) : nullptr;
}

CVKBitmap* DocumentApplication::NewVKBitmap() {
  auto bitmap = std::make_unique<Bitmap>();
  Bitmap* const made = bitmap.get();
  m_Bitmaps.emplace(made, std::move(bitmap));
  return made;
}

void DocumentApplication::DeleteVKBitmap(CVKBitmap* bitmap) { m_Bitmaps.erase(bitmap); }

// --- View, messages ---

CVelumark5View* DocumentApplication::UIGetActiveView() { return m_View.get(); }

void DocumentApplication::TMessageBox(const wchar_t* text, const wchar_t* caption, unsigned icon) {
  MessageBoxW(text, caption, icon);
}

// Stop means that the import gave something up. A notice is one line, so that the lines of a
// message are joined.
void DocumentApplication::MessageBoxW(const wchar_t* text, const wchar_t* /*caption*/,
                                      unsigned icon) {
  if (!text) return;
  const std::wstring line = InOneLine(text);
  if (icon == StopIcon) {
    m_Notices.AddLoss(line);
  } else {
    m_Notices.Add(line);
  }
}

// --- Devices and files of an import ---

std::wstring DocumentApplication::GGetPathDeviceInI(int device) {
  return m_Files ? m_Files->PlotterPath(device) : std::wstring();
}

std::optional<std::wstring> DocumentApplication::GetStringDevice(const wchar_t* devicePath,
                                                                 const wchar_t* section,
                                                                 const wchar_t* key) {
  if (!m_Files || !devicePath || !section || !key) return std::nullopt;
  return m_Files->ReadPlotter(devicePath, section, key);
}

int DocumentApplication::WriteStringDevice(const wchar_t* section, const wchar_t* key,
                                           const wchar_t* value) {
  if (!m_Files || !section || !key || !value) return 0;
  return m_Files->WritePlotter(section, key, value) ? 1 : 0;
}

// A document holds numbers alone.
void DocumentApplication::SetImportRotation(double rotation) {
  m_Document.SetRotation(std::isfinite(rotation) ? rotation : 0);
}

std::wstring DocumentApplication::LoadBaseDir() {
  std::wstring directory = m_Files ? m_Files->ImportDirectory() : std::wstring();
  return directory.empty() ? host::Application::LoadBaseDir() : directory;
}

}  // namespace rastrel::document
