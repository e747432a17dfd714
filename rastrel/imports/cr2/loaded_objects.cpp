#include "rastrel/imports/cr2/loaded_objects.h"

#include <cstddef>
#include <unordered_map>

#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/graphics_io.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/object_store.h"

namespace rastrel::imports {
namespace {

constexpr unsigned IconWarning = 48;
constexpr std::size_t MaximumMessageLength = 260;

/// The type of each object of the page on show.
using KnownObjects = std::unordered_map<host::ObjectHandle, int>;

bool IsNative(const std::wstring& path) {
  return path.find(L".krv") != std::wstring::npos || path.find(L".KRV") != std::wstring::npos;
}

ObjectList ObjectsOnPage(host::ObjectStore& store) {
  return {store, store.DBCreateList(host::DocumentRoot, DBLIST_MEMBERS | DBLIST_PAGE,
                                    ObjFilter_IsCurrent)};
}

KnownObjects NoteObjects(host::ObjectStore& store) {
  KnownObjects known;
  const ObjectList present = ObjectsOnPage(store);
  for (const host::ObjectHandle object : present.Members())
    known.emplace(object, store.DBGetObjectType(object));
  return known;
}

void SelectNewObjects(host::ObjectStore& store, const KnownObjects& known) {
  const ObjectList present = ObjectsOnPage(store);
  const ObjectList brought(store, store.DBCreateEmptyList());
  for (const host::ObjectHandle object : present.Members()) {
    const int type = store.DBGetObjectType(object);
    const auto old = known.find(object);
    if (old == known.end() || old->second != type) store.DBAddToList(brought.Get(), object);
  }
  store.DBSetSelectedList(brought.Get());
  store.DBNotifySelectionChanged();
}

bool LoadNative(TemplateImport& import, const std::wstring& path) {
  host::GraphicsIO* const loader = host::GetHost().GetGraphicsIO();
  if (loader == nullptr) {
    import.LogMissing(L"loads no graphics");
    return false;
  }
  return loader->LoadVEFile(nullptr, path.c_str(), 1) != 0;
}

bool LoadForeign(TemplateImport& import, const std::wstring& path, int thickLines) {
  host::Application& application = import.document.application;
  CVelumark5View* const view = application.UIGetActiveView();
  CVelumark5Doc* const document = view != nullptr ? view->GetDocument() : nullptr;
  return application.LoadTHZ(document, nullptr, path.c_str(), 1, thickLines) != 0;
}

/// Says to the host that a cut line is loaded, as long as this lives.
class CutLineExpected {
 public:
  CutLineExpected(host::Application& application, LoadPurpose purpose)
      : m_Application(application), m_IsExpected(purpose == LoadPurpose::CutLine) {
    if (m_IsExpected) m_Application.ExpectCutLine(true);
  }
  ~CutLineExpected() {
    if (m_IsExpected) m_Application.ExpectCutLine(false);
  }
  CutLineExpected(const CutLineExpected&) = delete;
  CutLineExpected& operator=(const CutLineExpected&) = delete;

 private:
  host::Application& m_Application;
  bool m_IsExpected;
};

bool LoadFile(TemplateImport& import, const std::wstring& path, LoadPurpose purpose,
              int thickLines) {
  const CutLineExpected expected(import.document.application, purpose);
  return IsNative(path) ? LoadNative(import, path) : LoadForeign(import, path, thickLines);
}

/// Removes the sheet layers that a native file brought, so that they do not pile up.
void RemoveSheetLayersFrom(host::Application& application, int first) {
  const int next = application.GetNextEmptyLayer();
  CSheetLayerPalette* const palette = application.GetSheetLayerPalette();
  if (palette == nullptr) return;
  for (int layer = next; layer >= first; --layer)
    if (palette->GetSheetLayerFromPalette(layer)) palette->RemoveSheetFromPalette(layer);
}

void ShowLoadFailure(TemplateImport& import, const std::wstring& path) {
  std::wstring text = L"Unable to load graphics file\n" + path;
  if (text.size() > MaximumMessageLength) text.resize(MaximumMessageLength);
  import.document.application.TMessageBox(text.c_str(), import.caption, IconWarning);
}

}  // namespace

ObjectList LoadObjects(TemplateImport& import, const std::wstring& path, LoadPurpose purpose,
                       int thickLines) {
  host::ObjectStore& store = import.document.store;
  const int firstLayer = import.document.application.GetNextEmptyLayer();
  const KnownObjects known = NoteObjects(store);
  const bool loaded = LoadFile(import, path, purpose, thickLines);
  SelectNewObjects(store, known);
  if (!loaded) {
    ShowLoadFailure(import, path);
    return {};
  }
  ObjectList objects(store, store.DSCreateSelectedList());
  if (IsNative(path)) RemoveSheetLayersFrom(import.document.application, firstLayer);
  return objects;
}

void AssignSheetLayer(TemplateImport& import, const ObjectList& objects, host::ObjectHandle plate) {
  host::ObjectStore& store = import.document.store;
  const int layer = store.DBGetSheetLayer(plate);
  for (const host::ObjectHandle object : objects.Members()) store.DBSetSheetLayer(object, layer);
}

void PlaceObjects(TemplateImport& import, const ObjectList& objects, const TM& matrix, int page) {
  host::ObjectStore& store = import.document.store;
  store.DBDeselectAll();
  for (const host::ObjectHandle object : objects.Members()) {
    store.DBApplyTM(object, matrix);
    store.SetPageRange(object, page);
    store.InvalidateObject(object, 0);
    store.DBSetTrait(object, DBTRAIT_SELECTED, 0);
  }
}

}  // namespace rastrel::imports
