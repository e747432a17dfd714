#pragma once

/// The application that has the document: palette, sign blank, pages, plates, drill points, files.

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

/// The application's own operations. Only the user interface thread calls, and nothing throws but
/// for want of memory.
///
/// Measures are world units (centimetres) unless an operation says text units (thousandths of an
/// inch). New objects are on the page on show, or on page 1 when all are. Texts are wide, end with
/// a zero, and are never null; paths are texts with either separator. A text or an object that is
/// passed in belongs to the caller and ends with the call.
///
/// An operation that is not pure has a default for a host that leaves it out. The default changes
/// nothing and returns the value that the operation's comment names.
class RASTREL_API Application {
 public:
  Application() = default;
  virtual ~Application();
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  // --- Palette ---

  /// Finds the palette's color of exactly that name. Non-zero when found; 0 leaves `color` as it
  /// was.
  virtual int FindPaletteColor(const wchar_t* name, CVKFullColor& color) = 0;
  /// Finds the palette's color at an index from 0; -1 is the invisible color. Non-zero when found;
  /// 0 leaves `color` as it was. By default 0.
  virtual int FindPaletteColor(int index, CVKColor& color);
  /// Non-zero for a color that the palette holds. By default 0.
  [[nodiscard]] virtual int IsColorInPalette(const CVKColor& color);
  /// Appends a copy of a color to the palette, with its name if it has one. Non-zero for success.
  /// By default 0.
  virtual int AddColorToPalette(const CVKFullColor& color);
  /// Non-zero for the color that nothing is painted in. By default 0.
  [[nodiscard]] virtual int IsInvisibleColor(const CVKColor& color);

  // --- Sign blank ---

  /// Reads the size of the material that everything is laid out on. Both are above 0.
  virtual void GetSignBlankSize(double& width, double& height) = 0;
  /// Sets the size of the sign blank, and draws it again if `redraw` is 1, as in every call of the
  /// library. A size that is not above 0 is refused: the blank stays as it was.
  virtual void SetSignBlankSize(double width, double height, int redraw) = 0;
  /// The corner, side or center of the sign blank that plates are laid out from, as a code of 1 to
  /// 9: rows from the top, each from the left, so that 7 is the bottom left corner.
  [[nodiscard]] virtual int GetOriginPosIndex() = 0;
  /// The point of the sign blank that the user counts from, as a code of 1 to 9 as above. By
  /// default 7.
  [[nodiscard]] virtual int GetSignBlankOriginPos();
  /// Sets it. A code outside 1 to 9 changes nothing. By default nothing.
  virtual void SetSignBlankOriginPos(int origin);
  /// Reads the point at which the grid begins, in text units, and a third value that the library
  /// does not use. By default all three are 0.
  virtual void GetGridOriginXY(double& x, double& y, double& third);

  // --- Pages and sheet layers ---

  /// The page on show, from 1; 0 when all pages are shown.
  [[nodiscard]] virtual int GetDisplayPage() = 0;
  /// The highest page that an object is on; 0 in an empty document. The library passes 0.
  [[nodiscard]] virtual int WhatisMaxNumberofPages(int reserved) = 0;
  /// Has the window of pages show the changes. The library passes 0. A hint: a host without such a
  /// window does nothing.
  virtual void UpdatePageWindow(int page) = 0;
  /// The number of the first sheet layer, from 1, that holds no object and that no earlier call
  /// returned.
  [[nodiscard]] virtual int GetNextEmptyLayer() = 0;
  /// Makes a sheet layer of that number, with a name of the host's choice.
  virtual void AddNewSheetLayer(int sheetLayer) = 0;
  /// The number of a sheet layer for separated planes that holds no object; nothing if there is
  /// none. By default nothing.
  [[nodiscard]] virtual std::optional<int> GetEmptySeparationLayer();
  /// The sheet layers as the main window has them, owned by the host and valid as long as it is
  /// installed. By default null.
  [[nodiscard]] virtual CSheetLayerPalette* GetSheetLayerPalette();
  /// Makes a sheet layer the only active one. By default nothing.
  virtual void SetActiveOnlySheetLayer(int sheetLayer);
  /// Makes a sheet layer the one that new objects go to. By default nothing.
  virtual void SetCurrentSheetLayer(int sheetLayer);

  // --- Plate objects ---

  /// Makes a plate object for `count` panes of that size with those margins (distances inward from
  /// the blank's edges) and gaps. It has no panes yet and is not in the document; the caller owns
  /// it until `Add` (generic_item.h) succeeds.
  ///
  /// Null when not even one pane fits on an empty page, or when a measure is not a finite number,
  /// or a size not positive: the host shows its user why, and the library adds nothing and logs it.
  /// A host must return null then. The library lays panes out page after page until none is left,
  /// and with a pane that fits on no page it would not end.
  [[nodiscard]] virtual std::unique_ptr<CGenericPlateObject> NewGenericPlateObject(
      int count, double width, double height, const CWorldRect& margins, double horizontalGap,
      double verticalGap) = 0;
  /// Keeps margins and gaps for the document, which `AdjustPlateObjects` then uses.
  virtual void SetPlateObjectParameters(const CWorldRect& margins, double horizontalGap,
                                        double verticalGap) = 0;
  /// Lays all plate objects out again. The library passes 0, 0, 1, or 0, 1, 1 for templates that
  /// replace the document. Returns the plate object made last; 0 without any.
  virtual ObjectHandle AdjustPlateObjects(int selectedOnly, int keepColors, int redraw) = 0;
  /// Appends one pane to a plate object, as `ResetData` with a higher count does. By default
  /// nothing.
  virtual void AddPaneToPlateObject(ObjectHandle plate);
  /// Appends `count` panes to a plate object in the same way. By default nothing.
  virtual void AddPanesToPlateObject(ObjectHandle plate, int count);

  // --- Drill points ---

  /// Switches drill points on (1), with a diameter in world units, or off (0).
  virtual void SetXMLDrillPoint(int on, double diameter) = 0;
  /// Makes a drill point at a place in text units, adds it to the document, and makes it the
  /// selection. Nothing happens while drill points are off, or for a place or a diameter that is
  /// not a finite number.
  virtual void SetDrillPointObj(const NewWorldPt& place) = 0;

  // --- Placed files ---

  /// Loads a graphic of any kind but the host's own through its file filters. `document` is the
  /// view's, `window` may be null, and the library passes 1 as `reserved`. `flag` is non-zero to
  /// keep thick lines as they are. Non-zero for success: the loaded objects are then the selection.
  /// 0 leaves the document as it was. By default 0.
  ///
  /// Colors and line styles that are set on the loaded objects afterwards must show. Their bounds
  /// are those of their outlines, without the widths of lines: content is placed by them.
  virtual int LoadTHZ(CVelumark5Doc* document, CWnd* window, const wchar_t* path, int reserved,
                      int flag);
  /// Makes the object of a placed EPS file, not yet in the document and owned by the caller until
  /// `Add` succeeds. By default null.
  [[nodiscard]] virtual std::unique_ptr<CGenericEPS> NewGenericEPS(const wchar_t* path);
  /// Makes the object of a separated plane in the same way. `path` is that of the ".info" file;
  /// layers and planes count from 0. By default null.
  [[nodiscard]] virtual std::unique_ptr<CGenericCFPlane> NewGenericCFPlane(const wchar_t* path,
                                                                           int layer, int plane);
  /// Makes an empty bitmap, which the caller gives back with `DeleteVKBitmap`. By default null.
  [[nodiscard]] virtual CVKBitmap* NewVKBitmap();
  /// Destroys a bitmap of `NewVKBitmap`, once. By default nothing.
  virtual void DeleteVKBitmap(CVKBitmap* bitmap);

  // --- View, windows, messages ---

  /// The view that the user works in, owned by the host. By default null.
  [[nodiscard]] virtual CVelumark5View* UIGetActiveView();
  /// The host's window of a kind, owned by the host. The library asks for 2, the document's. By
  /// default null.
  [[nodiscard]] virtual CWnd* GetWindowHandle(int kind);
  /// Shows that work is in progress (1), or no longer (0). By default nothing.
  virtual void HourGlass(int on);
  /// Shows the user a text after translating it, and waits until it has been read. `icon` is 16 for
  /// stop and 48 for a warning. By default nothing: the message is lost.
  virtual void TMessageBox(const wchar_t* text, const wchar_t* caption, unsigned icon);
  /// The same without a translation.
  virtual void MessageBoxW(const wchar_t* text, const wchar_t* caption, unsigned icon);
  /// Brings all objects into view. By default nothing.
  virtual void ZoomObj();
  /// The unit in which the user reads and types lengths: 0 centimetres, 1 millimetres, 2 inches. By
  /// default 0.
  [[nodiscard]] virtual int GetCurrentUnits();

  // --- Devices ---

  /// The path of the settings of the plotter of that index; empty if there is none. By default
  /// empty.
  [[nodiscard]] virtual std::wstring GGetPathDeviceInI(int device);
  /// A text of a plotter's settings, by the path that `GGetPathDeviceInI` returned; nothing if
  /// there is none. By default nothing.
  [[nodiscard]] virtual std::optional<std::wstring> GetStringDevice(const wchar_t* devicePath,
                                                                    const wchar_t* section,
                                                                    const wchar_t* key);
  /// Stores a text for the plotter in use. Non-zero for success. By default 0.
  virtual int WriteStringDevice(const wchar_t* section, const wchar_t* key, const wchar_t* value);
  /// The channel of the queue of a device that jobs are printed to. By default 0.
  [[nodiscard]] virtual int GetQueueComChannel(const wchar_t* deviceName);
  /// Sets the rotation that a template asks for its job: the number in the template, as it is. By
  /// default nothing.
  virtual void SetImportRotation(double rotation);

  // --- Files of an import ---

  /// Says that the graphics loaded from now on are cut lines (true), until false. A host then loads
  /// a path whose file names no fill without one, so that it does not cover its plate. By default
  /// nothing.
  virtual void ExpectCutLine(bool expected);
  /// The directory, without a closing separator, that files written for the length of an import go
  /// to. By default the base directory PATH_TEMP (base_dir.h).
  [[nodiscard]] virtual std::wstring LoadBaseDir();
};

}  // namespace rastrel::host
