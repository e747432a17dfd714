#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "rastrel/export.h"
#include "rastrel/platform/host/placed_graphics.h"
#include "rastrel/platform/host/plate_object.h"
#include "rastrel/platform/host/sheet_layer.h"
#include "rastrel/platform/host/view.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/world.h"

class CVKColor;
class CVKFullColor;
class CWnd;

namespace rastrel::host {

/// The application's own operations: palette, sign blank, pages, plate objects, drill points,
/// placed files, windows. Only the user interface thread calls. Measures are world units and
/// colors those of the document where nothing else is said.
///
/// Operations that are not pure have a default which means "not supported": it changes nothing and
/// gives 0, null, an empty result or the values that its comment names.
class RASTREL_API Application {
 public:
  Application() = default;
  virtual ~Application();
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  // --- Palette ---

  /// The document's color of that name. Non-zero when found; `color` stays as it was otherwise.
  virtual int FindPaletteColor(const wchar_t* name, CVKFullColor& color) = 0;
  /// The palette's color at an index from 0; -1 gives the invisible color. Non-zero when found;
  /// `color` stays as it was otherwise. By default 0.
  virtual int FindPaletteColor(int index, CVKColor& color);
  /// Non-zero for a color that the palette holds. By default 0.
  [[nodiscard]] virtual int IsColorInPalette(const CVKColor& color);
  /// Adds a color to the palette, with its name where it has one. Non-zero for success. By default
  /// 0.
  virtual int AddColorToPalette(const CVKFullColor& color);
  /// Non-zero for the color that draws nothing. By default 0.
  [[nodiscard]] virtual int IsInvisibleColor(const CVKColor& color);

  // --- Sign blank ---

  /// The size of the material that everything is laid out on.
  virtual void GetSignBlankSize(double& width, double& height) = 0;
  /// Sets it; the library gives 1 (have it drawn). Sizes that are not above 0 are refused: the
  /// blank stays as it was.
  virtual void SetSignBlankSize(double width, double height, int redraw) = 0;
  /// The corner, side or centre that the user counts from: codes 1 to 9, rows from the top, in each
  /// from the left, so that 7 is bottom left. `GetOriginPosIndex` gives the same code as the layout
  /// of plates uses it. By default the setter and `GetSignBlankOriginPos` act on nothing and 7.
  [[nodiscard]] virtual int GetOriginPosIndex() = 0;
  [[nodiscard]] virtual int GetSignBlankOriginPos();
  virtual void SetSignBlankOriginPos(int origin);
  /// Where the grid begins, in text units, and a third value that the library does not use. By
  /// default all 0.
  virtual void GetGridOriginXY(double& x, double& y, double& third);

  // --- Pages and sheet layers ---

  /// The page on show, counted from 1; 0 when all pages are.
  [[nodiscard]] virtual int GetDisplayPage() = 0;
  /// The highest page that an object stands on; 0 in an empty document. The library gives 0.
  [[nodiscard]] virtual int WhatisMaxNumberofPages(int reserved) = 0;
  /// Has the window of pages show what changed. The library gives 0.
  virtual void UpdatePageWindow(int page) = 0;
  /// The number of the first sheet layer that no object lies on and that was not handed out before.
  [[nodiscard]] virtual int GetNextEmptyLayer() = 0;
  /// Makes a sheet layer of that number, with a name of the host's choice.
  virtual void AddNewSheetLayer(int sheetLayer) = 0;
  /// The number of a sheet layer for separated planes that holds none; nothing if there is no such
  /// layer. By default nothing.
  [[nodiscard]] virtual std::optional<int> GetEmptySeparationLayer();
  /// The sheet layers as the main window has them. By default null.
  [[nodiscard]] virtual CSheetLayerPalette* GetSheetLayerPalette();
  /// Makes a sheet layer the only active one, and the one for new objects.
  virtual void SetActiveOnlySheetLayer(int sheetLayer);
  virtual void SetCurrentSheetLayer(int sheetLayer);

  // --- Plate objects ---

  /// A plate object that wants `count` panes of that size with those margins and gaps. It has no
  /// panes yet and is not in the document. Null when not even one pane fits on an empty page, or a
  /// measure is not a number or not positive: the host tells its user why, and the library adds
  /// nothing and logs it. A host that never refuses must lay at least one pane out on each page.
  [[nodiscard]] virtual std::unique_ptr<CGenericPlateObject> NewGenericPlateObject(
      int count, double width, double height, const CWorldRect& margins, double horizontalGap,
      double verticalGap) = 0;
  /// Keeps margins and gaps for the document, for what `AdjustPlateObjects` does.
  virtual void SetPlateObjectParameters(const CWorldRect& margins, double horizontalGap,
                                        double verticalGap) = 0;
  /// Lays all plate objects out anew. The library gives 0, 0, 1, or 0, 1, 1 for templates that
  /// replace the document. The result is the handle of the plate object made last; 0 without any.
  virtual ObjectHandle AdjustPlateObjects(int selectedOnly, int keepColors, int redraw) = 0;
  /// Append one pane, or some, to a plate object, as `ResetData` with a higher count does.
  virtual void AddPaneToPlateObject(ObjectHandle plate);
  virtual void AddPanesToPlateObject(ObjectHandle plate, int count);

  // --- Drill points ---

  /// Switches the making of drill points on (1) with a diameter in world units, or off (0).
  virtual void SetXMLDrillPoint(int on, double diameter) = 0;
  /// Makes a drill point at a place in text units, adds it to the document, and selects it. Without
  /// effect while drill points are off, and for a place or a diameter that is no number.
  virtual void SetDrillPointObj(const NewWorldPt& place) = 0;

  // --- Placed files ---

  /// Loads a graphic of any other kind than the host's own through its file filters. `window` may
  /// be null; the library gives 1. `flag` says that thick lines stay as they are. Non-zero for
  /// success: the loaded objects are then the selection. 0 leaves the document as it was. By
  /// default 0.
  virtual int LoadTHZ(CVelumark5Doc* document, CWnd* window, const wchar_t* path, int reserved,
                      int flag);
  /// Objects of placed files, not yet in the document. `path` names the file, of planes the ".info"
  /// file; layers and planes count from 0. By default null.
  [[nodiscard]] virtual std::unique_ptr<CGenericEPS> NewGenericEPS(const wchar_t* path);
  [[nodiscard]] virtual std::unique_ptr<CGenericCFPlane> NewGenericCFPlane(const wchar_t* path,
                                                                           int layer, int plane);
  /// A bitmap, and its end. By default null.
  [[nodiscard]] virtual CVKBitmap* NewVKBitmap();
  virtual void DeleteVKBitmap(CVKBitmap* bitmap);

  // --- View, windows, messages ---

  /// The view that the user works in. By default null.
  [[nodiscard]] virtual CVelumark5View* UIGetActiveView();
  /// The host's window of a kind; the library asks for 2, the document's. By default null.
  [[nodiscard]] virtual CWnd* GetWindowHandle(int kind);
  /// Shows that work is going on (1), and takes that away (0).
  virtual void HourGlass(int on);
  /// Shows the user a text that is translated first, or one that stands as it is. `icon` is 16 for
  /// stop and 48 for a warning. By default both do nothing.
  virtual void TMessageBox(const wchar_t* text, const wchar_t* caption, unsigned icon);
  virtual void MessageBoxW(const wchar_t* text, const wchar_t* caption, unsigned icon);
  /// Brings all objects into view.
  virtual void ZoomObj();
  /// The unit that the user reads and types lengths in: 0 centimetres, 1 millimetres, 2 inches. By
  /// default 0.
  [[nodiscard]] virtual int GetCurrentUnits();

  // --- Devices ---

  /// The path of the settings of the plotter of that index; empty without one. By default empty.
  [[nodiscard]] virtual std::wstring GGetPathDeviceInI(int device);
  /// A text of a plotter's settings; nothing when there is none. By default nothing.
  [[nodiscard]] virtual std::optional<std::wstring> GetStringDevice(const wchar_t* devicePath,
                                                                    const wchar_t* section,
                                                                    const wchar_t* key);
  /// Stores a text for the plotter in use. Non-zero for success. By default 0.
  virtual int WriteStringDevice(const wchar_t* section, const wchar_t* key, const wchar_t* value);
  /// The channel of the queue of a device that jobs are printed to. By default 0.
  [[nodiscard]] virtual int GetQueueComChannel(const wchar_t* deviceName);
  /// The rotation that a template asks for its job, as its number stands there.
  virtual void SetImportRotation(double rotation);
};

}  // namespace rastrel::host
