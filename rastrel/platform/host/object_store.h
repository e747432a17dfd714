#pragma once

/// The document database: objects, lists, selection, attributes, undo.

#include <memory>
#include <string>
#include <variant>

#include "rastrel/export.h"
#include "rastrel/platform/host/generic_item.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/paragraph.h"
#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/tm.h"

class CVKBitmap;
class CVKColor;

/// Paths of lines and arcs that are not in the document yet. The host makes it and alone knows its
/// content; the library fills it through `PA_...` and deletes it.
class RASTREL_API POLYARC {
 public:
  POLYARC() = default;
  virtual ~POLYARC();
  POLYARC(const POLYARC&) = delete;
  POLYARC& operator=(const POLYARC&) = delete;
};

namespace rastrel::host {

/// The content that `DBInsertElement` makes an object of; never null. It stays the caller's: the
/// host makes its own copy.
using ElementData = std::variant<const ParagraphEle*, const POLYARC*>;

/// The document database. One document is open. Only the user interface thread calls, and nothing
/// throws but for want of memory.
///
/// An operation on object 0, on an object that is gone, or on a list that was destroyed does
/// nothing and returns 0, null or `None`. Measures are world units (centimetres). A new object is
/// on the page on show (`Application::GetDisplayPage`), or on page 1 when all are.
///
/// An operation that is not pure has a default for a host that leaves it out: it changes nothing
/// and returns the value that its comment names. A host without them can still take every import
/// that does not load graphics.
class RASTREL_API ObjectStore {
 public:
  ObjectStore() = default;
  virtual ~ObjectStore();
  ObjectStore(const ObjectStore&) = delete;
  ObjectStore& operator=(const ObjectStore&) = delete;

  // --- Undo ---

  /// Opens an undo step. `name` is wide text in the user's language that ends with a zero. All
  /// changes up to `UNCloseStep` are undone together. Steps nest: one within another is part of the
  /// outer one.
  virtual void UNOpenStep(const wchar_t* name) = 0;
  /// Closes the step opened last.
  virtual void UNCloseStep() = 0;
  /// Non-zero while changes are kept for undoing. By default 0.
  [[nodiscard]] virtual int GetKeepHistory();
  /// Switches that on (non-zero) or off. By default nothing.
  virtual void WriteKeepHistory(int keep);

  // --- Lists ---

  /// Lists the objects of a root (DocumentRoot or a group) that the filter takes, in document
  /// order. `flags` is a sum of DBListFlags. Never `None`; the caller destroys it with
  /// `DBDestroyList`. A list keeps its members when the document changes, except objects that are
  /// destroyed.
  [[nodiscard]] virtual ListHandle DBCreateList(ObjectHandle root, int flags, ObjFilter filter) = 0;
  /// A list without members, for `DBAddToList`; the caller destroys it. By default `None`.
  [[nodiscard]] virtual ListHandle DBCreateEmptyList();
  /// A new list of the members of `list` that the filter takes; the caller destroys it. By default
  /// `None`.
  [[nodiscard]] virtual ListHandle DBFilterList(ListHandle list, ObjFilter filter);
  /// A new list of the selected objects, in the order in which they were selected; the caller
  /// destroys it.
  [[nodiscard]] virtual ListHandle DSCreateSelectedList() = 0;
  /// Frees a list, not its objects.
  virtual void DBDestroyList(ListHandle list) = 0;
  /// The list's first member, and the start of a walk through it; 0 if it is empty.
  [[nodiscard]] virtual ObjectHandle DBGetFirstMember(ListHandle list) = 0;
  /// The member after the one returned last; 0 after the last. The place of the walk is the list's.
  [[nodiscard]] virtual ObjectHandle DBGetNextMember(ListHandle list) = 0;
  /// The list's last member, at which the walk then is; 0 if it is empty.
  [[nodiscard]] virtual ObjectHandle DBGetLastMember(ListHandle list) = 0;
  /// The number of members. By default 0.
  [[nodiscard]] virtual int DBGetMemberCount(ListHandle list);
  /// Appends an object to a list. By default nothing.
  virtual void DBAddToList(ListHandle list, ObjectHandle object);

  // --- Objects ---

  /// Makes an empty object of a kind (a DBObjectType), not yet in the document. By default 0.
  [[nodiscard]] virtual ObjectHandle DBCreateObject(int type);
  /// Makes an object of an element, not yet in the document. `attributes` may be null: the host's
  /// own. `type` is DBTYPE_PARAGRAPH, and the library then passes 0, 0, 0, 1, false after the data,
  /// or DBTYPE_POLYARC (0, 1, 0, 1, false). 0 if it can't be made.
  [[nodiscard]] virtual ObjectHandle DBInsertElement(const ELEMENT_ATTRIBUTES* attributes, int type,
                                                     const ElementData& data, int parent,
                                                     int closed, int reserved, int visible,
                                                     bool notify) = 0;
  /// Makes an object, not yet in the document, that shows a bitmap at that size with its lower left
  /// corner at the origin. The host copies the bitmap. 0 if it can't be made. By default 0.
  [[nodiscard]] virtual ObjectHandle DBInsertBitmap(const CVKBitmap& bitmap, double width,
                                                    double height);
  /// Puts an object into a group, or with DocumentRoot into the document. Non-zero for success. By
  /// default 0.
  virtual int DBInsertObject(ObjectHandle object, ObjectHandle parent);
  /// Removes an object, and a group's members with it. It can't be undone. By default nothing.
  virtual void DBDestroyObject(ObjectHandle object);
  /// The kind of an object: a DBObjectType, or a number of the host's own. By default 0.
  [[nodiscard]] virtual int DBGetObjectType(ObjectHandle object);
  /// The element of a handle, owned by the document; null if there is none.
  [[nodiscard]] virtual DBElement* DBGetObjectElement(ObjectHandle object) = 0;
  /// Adds an object to the document, as part of the open undo step, and to the selection. Non-zero
  /// for success.
  virtual int DSAddObject(ObjectHandle object) = 0;
  /// The same for an object that others are derived from. The library passes 2 and the object
  /// itself.
  virtual int DSAddSourceObject(ObjectHandle object, int kind, ObjectHandle source) = 0;
  /// Joins the members of a list to one group, which takes the place of `first`. The library passes
  /// 2. Returns the group; 0 if none was made. By default 0.
  [[nodiscard]] virtual ObjectHandle DSGroupObjects(ListHandle list, int kind, ObjectHandle first);

  // --- Selection ---

  /// Empties the selection.
  virtual void DBDeselectAll() = 0;
  /// Adds an object to the selection. By default nothing.
  virtual void DBSelect(ObjectHandle object);
  /// Replaces the selection by a list's members. By default nothing.
  virtual void DBSetSelectedList(ListHandle list);
  /// Notifies the host's windows that the selection has changed. By default nothing.
  virtual void DBNotifySelectionChanged();
  /// Reads the bounds of all members of a list together, in world units. Non-zero for success; 0
  /// leaves `bounds` as it was. By default 0.
  virtual int DBGetSelectedListBounds(ListHandle list, BOUNDS& bounds);

  // --- Attributes ---

  /// Sets the color of an object's inside ("layer"): of a plate its material, of text its letters.
  virtual void DBSetLayer(ObjectHandle object, const CVKColor& color) = 0;
  /// Reads it. Non-zero for success; 0 leaves `color` as it was. By default 0.
  virtual int DBGetLayer(ObjectHandle object, CVKColor& color);
  /// Sets the color of an object's outline.
  virtual void DBSetLineColor(ObjectHandle object, const CVKColor& color) = 0;
  /// Reads it. Non-zero for success; 0 leaves `color` as it was. By default 0.
  virtual int DBGetLineColor(ObjectHandle object, CVKColor& color);
  /// Reads how the outline is drawn. Non-zero for success; 0 leaves `style` as it was.
  virtual int DBGetLineStyle(ObjectHandle object, LINESTYLE& style) = 0;
  /// Sets how the outline is drawn.
  virtual void DBSetLineStyle(ObjectHandle object, const LINESTYLE& style) = 0;
  /// The number of the sheet layer that the object is on, from 1; 0 for none.
  [[nodiscard]] virtual int DBGetSheetLayer(ObjectHandle object) = 0;
  /// Moves the object to a sheet layer; 0 for none.
  virtual void DBSetSheetLayer(ObjectHandle object, int sheetLayer) = 0;
  /// The pages that the object is on; 1 to 1 for an object that is gone.
  [[nodiscard]] virtual VK_PAGE_RANGE DBGetPageRange(ObjectHandle object) = 0;
  /// Puts an object on those pages.
  virtual void DBSetPageRange(ObjectHandle object, const VK_PAGE_RANGE& pages) = 0;
  /// Puts an object on one page. By default calls `DBSetPageRange` with it as the first and the
  /// last.
  virtual void SetPageRange(ObjectHandle object, int page);
  /// Switches one trait, a DBTrait, on (1) or off (0).
  virtual void DBSetTrait(ObjectHandle object, int trait, int value) = 0;
  /// Switches exactly these traits on, a sum of DBTrait, and all others off. By default nothing.
  virtual void DBSetTraits(ObjectHandle object, int traits);
  /// Sets how far the user may change the object by hand. By default nothing.
  virtual void DBSetPropertyLocks(ObjectHandle object, const CPropertyLocks& locks);

  // --- Bounds and drawing ---

  /// Marks the bounds of an object as out of date. A host that measures by itself does nothing.
  virtual void DBInvalidateBounds(ObjectHandle object) = 0;
  /// Measures the bounds of an object again. A host that measures by itself does nothing.
  virtual void DBValidateBounds(ObjectHandle object) = 0;
  /// Has an object drawn again; with `erase` 1 also the area that it covered before. A host that
  /// draws by itself does nothing.
  virtual void InvalidateObject(ObjectHandle object, int erase) = 0;
  /// Maps an object by a matrix in world units, after the matrix that it has. By default nothing.
  virtual void DBApplyTM(ObjectHandle object, const TM& matrix);
  /// Holds messages to the host's windows back until `DBReleaseNotifications`. By default nothing.
  virtual void DBHoldNotifications();
  /// Sends one message for all changes since `DBHoldNotifications`. By default nothing.
  virtual void DBReleaseNotifications();

  // --- Paths ---

  /// Makes paths without content, which the caller owns. By default null; the three operations
  /// below are then not called, and by default do nothing.
  [[nodiscard]] virtual std::unique_ptr<POLYARC> PA_NewPolyArc();
  /// Appends a sub-path without points.
  virtual void PA_NewSubPoly(POLYARC& arc);
  /// Appends a point. Sub-paths and points count from 0 and come in order.
  virtual void PA_AddVertice(POLYARC& arc, int subPoly, int vertex, const PolyArcVertice& values);
  /// Closes a sub-path: its last point is joined to its first.
  virtual void PA_CloseSubpoly(POLYARC& arc, int subPoly);

  // --- Objects that are derived from others ---

  /// The object that an object is derived from. By default the object itself.
  [[nodiscard]] virtual ObjectHandle XCGetBaseObject(ObjectHandle object);
  /// The operation that derives others from the object; 0 if there is none. By default 0.
  [[nodiscard]] virtual OperationHandle XCGetOwnedOperation(ObjectHandle object);
  /// Marks the objects that an operation derived as right (non-zero) or out of date (0). By default
  /// nothing.
  virtual void SetProductListValid(OperationHandle operation, int valid);
  /// Derives all objects again that are out of date. By default nothing.
  virtual void RecalculateOperations();
};

}  // namespace rastrel::host
