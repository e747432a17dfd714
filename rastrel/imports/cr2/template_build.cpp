#include "rastrel/imports/cr2/template_build.h"

#include <cstddef>
#include <optional>
#include <unordered_set>
#include <vector>

#include "rastrel/imports/cr2/cut_line.h"
#include "rastrel/imports/cr2/graphic_frames.h"
#include "rastrel/imports/cr2/object_list.h"
#include "rastrel/imports/cr2/pane_place.h"
#include "rastrel/imports/cr2/plate.h"
#include "rastrel/imports/cr2/text_frames.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/plate_object.h"

namespace rastrel::imports {
namespace {

void FillPanes(TemplateImport& import, const Cr2Document& document, host::ObjectHandle plate) {
  const GraphicsDirectory graphics(document.graphics);
  const OutputFilter filter(document.outputFilter);
  CGenericPlateObject* const object = PlateObjectOf(import.document.store, plate);
  const CPane* pane = object != nullptr ? object->GetFirstPane() : nullptr;
  for (const CR2_PLATE& content : document.plates) {
    if (pane == nullptr) return;
    const PanePlace place = PlaceOf(*pane, plate);
    if (!content.graphicFrames.empty())
      AddGraphicsToPane(import, place, document.plateTemplate, graphics, filter,
                        content.graphicFrames);
    if (!content.textFrames.empty())
      AddTextToPane(import, place, document.plateTemplate, filter, content.textFrames);
    if (import.cancelled) return;
    pane = object->GetNextPane();
  }
}

void BuildPlates(TemplateImport& import, const Cr2Document& document, host::ObjectHandle plate) {
  if (document.cutLine.present != 0.0)
    AddCutLineToPlate(import, plate, document.plateTemplate, document.cutLine);
  for (std::size_t further = 1; further < document.plates.size(); ++further)
    import.document.application.AddPaneToPlateObject(plate);
  FillPanes(import, document, plate);
}

void ReplaceDocument(TemplateImport& import) {
  CVelumark5View* const view = import.document.application.UIGetActiveView();
  if (view != nullptr)
    view->OnNew();
  else
    import.LogMissing(L"has no view to replace the document in");
}

/// Puts the plates of a zml on the panes of all plate objects, in order.
class ZmlPlates {
 public:
  ZmlPlates(TemplateImport& import, const Cr2Document& document, const std::wstring& imageDirectory)
      : m_Import(import),
        m_Document(document),
        m_ImageDirectory(imageDirectory),
        m_Graphics(document.graphics) {}

  void Fill(const ObjectList& plateObjects) {
    const std::vector<host::ObjectHandle> objects = plateObjects.Members();
    const std::unordered_set<host::ObjectHandle> listed(objects.begin(), objects.end());
    for (const host::ObjectHandle object : objects)
      if (!FillPanesOf(object, listed)) return;
  }

 private:
  /// False when no further plate is to be built.
  bool FillPanesOf(host::ObjectHandle object,
                   const std::unordered_set<host::ObjectHandle>& listed) {
    CGenericPlateObject* const plate = PlateObjectOf(m_Import.document.store, object);
    if (plate == nullptr) return true;
    for (const CPane* pane = plate->GetFirstPane(); pane != nullptr; pane = plate->GetNextPane()) {
      // Panes that went on on a further page come again with the plate object there, and so do all
      // after them: a walk through them for each page of a large order would take quadratic time.
      const host::ObjectHandle part = pane->GetPlateObject();
      if (part != 0 && part != object && listed.contains(part)) break;
      const PanePlace place = PlaceOf(*pane, object);
      if (m_Next == m_Document.plates.size()) return false;
      FillPane(place, m_Document.plates[m_Next++]);
      if (m_Import.cancelled) return false;
    }
    return true;
  }

  void FillPane(const PanePlace& pane, const CR2_PLATE& content) {
    if (m_Document.cutLine.present != 0.0)
      AddCutLineToPane(m_Import, pane, m_Document.plateTemplate, m_Document.cutLine);
    AddGraphicsToPane(m_Import, pane, m_Graphics, m_ImageDirectory, content.graphicFrames);
    AddTextToPane(m_Import, pane, m_Document.plateTemplate, content.textFrames);
  }

  TemplateImport& m_Import;
  const Cr2Document& m_Document;
  const std::wstring& m_ImageDirectory;
  GraphicsDirectory m_Graphics;
  std::size_t m_Next = 0;  ///< the plate for the next pane
};

}  // namespace

void BuildCr2(TemplateImport& import, Cr2Document& document) {
  SetupSignBlank(import, document.tableSize);
  const std::optional<host::ObjectHandle> plate =
      CreatePlate(import, document.tableSize, document.plateTemplate);
  if (plate) BuildPlates(import, document, *plate);
  import.document.application.AdjustPlateObjects(0, 0, 1);
  ShowClosingMessage(import);
}

void BuildZml(TemplateImport& import, const Cr2Document& document,
              const std::wstring& imageDirectory) {
  host::ObjectStore& store = import.document.store;
  ReplaceDocument(import);
  SetupSignBlankAsGiven(import, document.tableSize);
  const std::optional<host::ObjectHandle> plate =
      CreateZmlPlate(import, document.tableSize, document.plateTemplate);
  if (plate)
    import.document.application.AddPanesToPlateObject(*plate,
                                                      static_cast<int>(document.plates.size()) - 1);
  {
    const ObjectList plateObjects(
        store, store.DBCreateList(host::DocumentRoot, DBLIST_MEMBERS | DBLIST_ALL_PAGES,
                                  ObjFilter_IsGenericPlate));
    ZmlPlates(import, document, imageDirectory).Fill(plateObjects);
  }
  ShowClosingMessage(import);
}

}  // namespace rastrel::imports
