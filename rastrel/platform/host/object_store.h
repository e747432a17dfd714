#pragma once

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

/// Paths of lines and arcs on their way into the document. The host makes it and knows its inside.
class RASTREL_API POLYARC {
 public:
  POLYARC() = default;
  virtual ~POLYARC();
  POLYARC(const POLYARC&) = delete;
  POLYARC& operator=(const POLYARC&) = delete;
};

namespace rastrel::host {

/// A point of a path, with its values in the order in which `PA_AddVertice` has them.
struct PolyArcVertice {
  double x = 0;             ///< world units
  double y = 0;             ///< world units
  double fifth = 0;         ///< the fifth value of the point as the cut archive has it
  double third = 0;         ///< the third
  int kind = 1;             ///< always 1
  double reserved[4] = {};  ///< always 0
};

/// What `DBInsertElement` makes an object of. The host copies what it needs.
using ElementData = std::variant<const ParagraphEle*, const POLYARC*>;

/// The document database: objects, lists, attributes, undo.
///
/// One document is open. Only the user interface thread calls, and nothing throws but for want of
/// memory. An operation on the object 0, on an object that is gone, or on a list that was destroyed
/// does nothing and gives 0.
///
/// Operations that are not pure have a default which means "not supported": it changes nothing and
/// gives 0, an empty result or the values that its comment names. A host that leaves them out can
/// still take every import that does not load graphics.
class RASTREL_API ObjectStore {
 public:
  ObjectStore() = default;
  virtual ~ObjectStore();
  ObjectStore(const ObjectStore&) = delete;
  ObjectStore& operator=(const ObjectStore&) = delete;

  // --- Undo ---

  /// Opens an undo step with a name in the user's language. All changes up to `UNCloseStep` are
  /// undone together. Steps nest; the outermost counts.
  virtual void UNOpenStep(const wchar_t* name) = 0;
  /// Closes the step opened last.
  virtual void UNCloseStep() = 0;
  /// Non-zero while changes are kept for undoing, and the switch for it. By default 0: none are.
  [[nodiscard]] virtual int GetKeepHistory();
  virtual void WriteKeepHistory(int keep);

  // --- Lists ---

  /// A list of a root's objects: DocumentRoot, or a group. `flags` is a sum of DBListFlags. Never
  /// None; destroyed by the caller with `DBDestroyList`. It keeps its members when the document
  /// changes, but for objects that are destroyed.
  [[nodiscard]] virtual ListHandle DBCreateList(ObjectHandle root, int flags, ObjFilter filter) = 0;
  /// A list without members, for `DBAddToList`. By default None.
  [[nodiscard]] virtual ListHandle DBCreateEmptyList();
  /// A new list of those members of a list that the filter takes. By default None.
  [[nodiscard]] virtual ListHandle DBFilterList(ListHandle list, ObjFilter filter);
  /// A new list of the selected objects in the order of their selection.
  [[nodiscard]] virtual ListHandle DSCreateSelectedList() = 0;
  /// Frees a list, not its objects.
  virtual void DBDestroyList(ListHandle list) = 0;
  /// The list's first, next and last member, 0 when there is none. First and last set the place in
  /// the list from which next goes on.
  [[nodiscard]] virtual ObjectHandle DBGetFirstMember(ListHandle list) = 0;
  [[nodiscard]] virtual ObjectHandle DBGetNextMember(ListHandle list) = 0;
  [[nodiscard]] virtual ObjectHandle DBGetLastMember(ListHandle list) = 0;
  /// Members of the list. By default 0.
  [[nodiscard]] virtual int DBGetMemberCount(ListHandle list);
  /// Appends an object to a list.
  virtual void DBAddToList(ListHandle list, ObjectHandle object);

  // --- Objects ---

  /// A new object of a kind, not yet in the document (a DBObjectType). By default 0.
  [[nodiscard]] virtual ObjectHandle DBCreateObject(int type);
  /// A new object of an element, not yet in the document. `attributes` may be null: the host's own.
  /// `type` is DBTYPE_PARAGRAPH (the library then gives 0, 0, 0, 1, false behind the data) or
  /// DBTYPE_POLYARC (0, 1, 0, 1, false). 0 when it can't be made.
  [[nodiscard]] virtual ObjectHandle DBInsertElement(const ELEMENT_ATTRIBUTES* attributes, int type,
                                                     const ElementData& data, int parent,
                                                     int closed, int reserved, int visible,
                                                     bool notify) = 0;
  /// A new object, not yet in the document, that shows a bitmap at that size in world units with
  /// its lower left corner at the origin. The host copies the bitmap. By default 0.
  [[nodiscard]] virtual ObjectHandle DBInsertBitmap(const CVKBitmap& bitmap, double width,
                                                    double height);
  /// Puts an object into a group, or with DocumentRoot into the document. Non-zero for success. By
  /// default 0.
  virtual int DBInsertObject(ObjectHandle object, ObjectHandle parent);
  /// Removes an object and, of a group, its members, without undo.
  virtual void DBDestroyObject(ObjectHandle object);
  /// The kind of an object, a DBObjectType or a number of the host's. By default 0.
  [[nodiscard]] virtual int DBGetObjectType(ObjectHandle object);
  /// The element behind a handle, or null.
  [[nodiscard]] virtual DBElement* DBGetObjectElement(ObjectHandle object) = 0;
  /// Adds an object to the document as part of the open undo step, and to the selection. Non-zero
  /// for success.
  virtual int DSAddObject(ObjectHandle object) = 0;
  /// The same for an object that others are derived from. The library gives 2 and the object
  /// itself.
  virtual int DSAddSourceObject(ObjectHandle object, int kind, ObjectHandle source) = 0;
  /// Joins the members of a list to one object, which takes the place of `first`. The library gives
  /// 2. The result is the group, 0 when there is none. By default 0.
  [[nodiscard]] virtual ObjectHandle DSGroupObjects(ListHandle list, int kind, ObjectHandle first);

  // --- Selection ---

  /// Empties the selection.
  virtual void DBDeselectAll() = 0;
  /// Adds an object to the selection.
  virtual void DBSelect(ObjectHandle object);
  /// Makes a list's members the selection, and tells the host's windows of it.
  virtual void DBSetSelectedList(ListHandle list);
  virtual void DBNotifySelectionChanged();
  /// The bounds of all members of a list together, in world units. Non-zero for success; `bounds`
  /// stays as it was otherwise. By default 0.
  virtual int DBGetSelectedListBounds(ListHandle list, BOUNDS& bounds);

  // --- Attributes ---

  /// The color of an object's inside, and of a plate's material ("layer").
  virtual void DBSetLayer(ObjectHandle object, const CVKColor& color) = 0;
  /// Reads it. Non-zero for success. By default 0.
  virtual int DBGetLayer(ObjectHandle object, CVKColor& color);
  /// The color of an object's outline.
  virtual void DBSetLineColor(ObjectHandle object, const CVKColor& color) = 0;
  /// Reads it. Non-zero for success. By default 0.
  virtual int DBGetLineColor(ObjectHandle object, CVKColor& color);
  /// How the outline is drawn. The getter gives non-zero for success and leaves `style` otherwise.
  virtual int DBGetLineStyle(ObjectHandle object, LINESTYLE& style) = 0;
  virtual void DBSetLineStyle(ObjectHandle object, const LINESTYLE& style) = 0;
  /// The number of the sheet layer that the object lies on; 0 when it lies on none.
  [[nodiscard]] virtual int DBGetSheetLayer(ObjectHandle object) = 0;
  virtual void DBSetSheetLayer(ObjectHandle object, int sheetLayer) = 0;
  /// The pages that the object stands on; 1 to 1 for an object that is not there.
  [[nodiscard]] virtual VK_PAGE_RANGE DBGetPageRange(ObjectHandle object) = 0;
  virtual void DBSetPageRange(ObjectHandle object, const VK_PAGE_RANGE& pages) = 0;
  /// Puts an object on one page. By default by way of DBSetPageRange.
  virtual void SetPageRange(ObjectHandle object, int page);
  /// Switches one trait, a DBTrait, on (1) or off (0).
  virtual void DBSetTrait(ObjectHandle object, int trait, int value) = 0;
  /// Sets exactly these traits, a sum of DBTrait.
  virtual void DBSetTraits(ObjectHandle object, int traits);
  /// What the user may not change by hand.
  virtual void DBSetPropertyLocks(ObjectHandle object, const CPropertyLocks& locks);

  // --- Bounds and drawing ---

  /// Marks the bounds of an object as old, and has them measured again.
  virtual void DBInvalidateBounds(ObjectHandle object) = 0;
  virtual void DBValidateBounds(ObjectHandle object) = 0;
  /// Has an object drawn again; `erase` 1 also what it covered before.
  virtual void InvalidateObject(ObjectHandle object, int erase) = 0;
  /// Maps an object by a matrix in world units.
  virtual void DBApplyTM(ObjectHandle object, const TM& matrix);
  /// Between the two, the host's windows hear of changes once, at the end.
  virtual void DBHoldNotifications();
  virtual void DBReleaseNotifications();

  // --- Paths ---

  /// Builds paths: an arc, its sub-paths in order, their points in order by the indices of sub-path
  /// and point, both from 0. By default the arc is null and the others do nothing.
  [[nodiscard]] virtual std::unique_ptr<POLYARC> PA_NewPolyArc();
  virtual void PA_NewSubPoly(POLYARC& arc);
  virtual void PA_AddVertice(POLYARC& arc, int subPoly, int vertex, const PolyArcVertice& values);
  virtual void PA_CloseSubpoly(POLYARC& arc, int subPoly);

  // --- Objects that are derived from others ---

  /// The object that an object is derived from, or itself. By default the object itself.
  [[nodiscard]] virtual ObjectHandle XCGetBaseObject(ObjectHandle object);
  /// The operation that derives others from the object, or 0. By default 0.
  [[nodiscard]] virtual OperationHandle XCGetOwnedOperation(ObjectHandle object);
  /// Says whether what an operation made is still right (0: it is not), and has all made again that
  /// is not.
  virtual void SetProductListValid(OperationHandle operation, int valid);
  virtual void RecalculateOperations();
};

}  // namespace rastrel::host
