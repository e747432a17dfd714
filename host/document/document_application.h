#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "host/document/document.h"
#include "host/document/document_store.h"
#include "host/document/notices.h"
#include "host/document/program_files.h"
#include "host/document/separation_item.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/view.h"

namespace rastrel::document {

/// The largest hole, in world units: larger ones are refused.
inline constexpr double LargestDrillDiameter = 100;

/// The application of the embedded host over one document: palette, blank, pages, plates, drill
/// points and messages. Its loader of graphics is set from outside.
class DocumentApplication : public host::Application {
 public:
  /// Loads a file at a path, or a cut line, adds its objects to the document and selects them;
  /// non-zero for success.
  using LoadGraphic = std::function<int(const std::wstring& path, bool cutLine)>;

  /// All must outlive the application.
  DocumentApplication(Document& document, DocumentStore& store, Notices& notices);
  ~DocumentApplication() override;
  void SetGraphicLoader(LoadGraphic loader) { m_LoadGraphic = std::move(loader); }
  /// Opens a file at a path as the object of `NewGenericEPS`; null if it can't.
  using OpenEps = std::function<std::unique_ptr<CGenericEPS>(const std::wstring& path)>;
  void SetEpsOpener(OpenEps opener) { m_OpenEps = std::move(opener); }
  /// Called after the view has made the document a new one (`OnNew`): who keeps something of the
  /// old document drops it.
  void SetNewDocumentHandler(std::function<void()> handler) { m_NewDocument = std::move(handler); }

  /// Returns the unit of lengths for each GetCurrentUnits; without it that is 0, centimetres.
  void SetUnitsSource(std::function<int()> units) { m_Units = std::move(units); }
  /// Opens separated planes; without it there are none.
  void SetPlaneOpener(PlaneOpener opener) { m_OpenPlanes = std::move(opener); }

  /// The files of the program, not owned; without them there are no plotters, and an import writes
  /// its files to the base directory for temporary ones.
  void SetProgramFiles(ProgramFiles* files) { m_Files = files; }

  int FindPaletteColor(const wchar_t* name, CVKFullColor& color) override;
  int FindPaletteColor(int index, CVKColor& color) override;
  /// The invisible color is in every palette, at the index -1.
  [[nodiscard]] int IsColorInPalette(const CVKColor& color) override;
  int AddColorToPalette(const CVKFullColor& color) override;
  [[nodiscard]] int IsInvisibleColor(const CVKColor& color) override;

  void GetSignBlankSize(double& width, double& height) override;
  void SetSignBlankSize(double width, double height, int redraw) override;
  [[nodiscard]] int GetOriginPosIndex() override;
  [[nodiscard]] int GetSignBlankOriginPos() override;
  void SetSignBlankOriginPos(int origin) override;
  /// The grid begins where the user counts from.
  void GetGridOriginXY(double& x, double& y, double& third) override;

  [[nodiscard]] int GetDisplayPage() override;
  [[nodiscard]] int WhatisMaxNumberofPages(int reserved) override;
  void UpdatePageWindow(int page) override;
  [[nodiscard]] int GetNextEmptyLayer() override;
  void AddNewSheetLayer(int sheetLayer) override;
  [[nodiscard]] CSheetLayerPalette* GetSheetLayerPalette() override;

  [[nodiscard]] std::unique_ptr<CGenericPlateObject> NewGenericPlateObject(
      int count, double width, double height, const CWorldRect& margins, double horizontalGap,
      double verticalGap) override;
  void SetPlateObjectParameters(const CWorldRect& margins, double horizontalGap,
                                double verticalGap) override;
  ObjectHandle AdjustPlateObjects(int selectedOnly, int keepColors, int redraw) override;
  void AddPaneToPlateObject(ObjectHandle plate) override;
  void AddPanesToPlateObject(ObjectHandle plate, int count) override;

  void SetXMLDrillPoint(int on, double diameter) override;
  void SetDrillPointObj(const NewWorldPt& place) override;

  /// The first layer of separated planes, by its number, that no object of the document is on.
  [[nodiscard]] std::optional<int> GetEmptySeparationLayer() override;
  /// New objects go there from now on, if there is such a layer when they are made.
  void SetCurrentSheetLayer(int sheetLayer) override;
  /// Null where the planes can't be opened, which is a loss in the notices.
  [[nodiscard]] std::unique_ptr<CGenericCFPlane> NewGenericCFPlane(const wchar_t* path, int layer,
                                                                   int plane) override;

  int LoadTHZ(CVelumark5Doc* document, CWnd* window, const wchar_t* path, int reserved,
              int flag) override;
  /// Null without an opener (SetEpsOpener).
  [[nodiscard]] std::unique_ptr<CGenericEPS> NewGenericEPS(const wchar_t* path) override;
  [[nodiscard]] CVKBitmap* NewVKBitmap() override;
  /// A pointer that NewVKBitmap did not return, or that was given back, changes nothing.
  void DeleteVKBitmap(CVKBitmap* bitmap) override;
  void ExpectCutLine(bool expected) override { m_ExpectsCutLine = expected; }
  [[nodiscard]] CVelumark5View* UIGetActiveView() override;
  [[nodiscard]] int GetCurrentUnits() override { return m_Units ? m_Units() : 0; }
  void TMessageBox(const wchar_t* text, const wchar_t* caption, unsigned icon) override;
  void MessageBoxW(const wchar_t* text, const wchar_t* caption, unsigned icon) override;

  [[nodiscard]] std::wstring GGetPathDeviceInI(int device) override;
  [[nodiscard]] std::optional<std::wstring> GetStringDevice(const wchar_t* devicePath,
                                                            const wchar_t* section,
                                                            const wchar_t* key) override;
  int WriteStringDevice(const wchar_t* section, const wchar_t* key, const wchar_t* value) override;
  void SetImportRotation(double rotation) override;
  [[nodiscard]] std::wstring LoadBaseDir() override;

 private:
  class View;
  class SheetLayers;

  // The part of a plate object, itself or a continuation, that has its last pane; 0 if it is none.
  ObjectHandle LastPartOf(ObjectHandle plate);

  Document& m_Document;
  DocumentStore& m_Store;
  Notices& m_Notices;
  LoadGraphic m_LoadGraphic;
  OpenEps m_OpenEps;
  std::function<int()> m_Units;
  PlaneOpener m_OpenPlanes;
  std::function<void()> m_NewDocument;
  ProgramFiles* m_Files = nullptr;
  bool m_ExpectsCutLine = false;
  std::map<const CVKBitmap*, std::unique_ptr<Bitmap>> m_Bitmaps;  // that were not given back
  std::unique_ptr<View> m_View;
  std::unique_ptr<SheetLayers> m_SheetLayers;
  std::optional<double> m_DrillDiameter;  // nothing while drill points are off
  ObjectHandle m_GrownPlate = 0;          // the plate object that panes were added to last, or 0
  ObjectHandle m_LastPart = 0;            // the part of it that had its last pane then
};

}  // namespace rastrel::document
