#pragma once

/// Values that pass between the library and the document database.

#include <cstdint>
#include <string>

namespace rastrel::host {

/// Names an object of the document. 0 names none, and every operation on it does nothing and
/// returns its failing result. A handle is never used again while the document is open.
using ObjectHandle = unsigned long long;

/// The document itself: the root of lists, and the parent of objects that are in no group.
inline constexpr ObjectHandle DocumentRoot = 1;

/// Names a list of objects. The value 0 names none; it counts as empty.
enum class ListHandle : unsigned long long { None = 0 };

/// An operation that keeps objects derived from others up to date; 0 names none.
using OperationHandle = unsigned long long;

/// A point of a path, with its values in the order in which `PA_AddVertice` has them.
struct PolyArcVertice {
  double x = 0;             ///< world units
  double y = 0;             ///< world units
  double fifth = 0;         ///< the fifth value of the point as the cut archive has it
  double third = 0;         ///< the third
  int kind = 1;             ///< always 1
  double reserved[4] = {};  ///< always 0
};

}  // namespace rastrel::host

/// The objects that `DBCreateList` and `DBFilterList` take from a document.
enum ObjFilter : int {
  ObjFilter_IsCurrent,       ///< every object that is part of the document and not undone
  ObjFilter_IsGenericPlate,  ///< plate objects
  ObjFilter_IsText,          ///< text objects
};

/// Flags of `DBCreateList`. The library uses members and page together (3), and members and every
/// page together (9).
enum DBListFlags : int {
  DBLIST_MEMBERS = 1,    ///< the direct members of the root that is given, in document order
  DBLIST_PAGE = 2,       ///< only those on the page on show
  DBLIST_ALL_PAGES = 8,  ///< those of every page
};

/// The kinds of object, for `DBGetObjectType`, `DBCreateObject` and `DBInsertElement`.
enum DBObjectType : int {
  DBTYPE_GROUP = 1,         ///< holds other objects
  DBTYPE_POLYARC = 128,     ///< paths of lines and arcs
  DBTYPE_PARAGRAPH = 8192,  ///< text
};

/// The traits that `DBSetTrait` switches, and `DBSetTraits` sets together (224 is the last three).
enum DBTrait : int {
  DBTRAIT_SELECTED = 1,      ///< part of the selection
  DBTRAIT_VISIBLE = 32,      ///< drawn
  DBTRAIT_SELECTABLE = 64,   ///< the user may select it
  DBTRAIT_IN_DOCUMENT = 128  ///< counts as part of the document
};

/// The pages that an object is on, from 1, both included.
struct VK_PAGE_RANGE {
  int first = 1;
  int last = 1;
  bool operator==(const VK_PAGE_RANGE&) const = default;
};

/// How an object's outline is drawn. The kind of line is `style` under the mask LINESTYLE_KIND; who
/// sets it leaves the other bits as they are.
struct LINESTYLE {
  double width = 0;         ///< world units; 0 for no line, LineStyleHairline for the thinnest
  std::uint32_t style = 0;  ///< bits
  bool operator==(const LINESTYLE&) const = default;
};

/// Bits of `LINESTYLE::style`.
enum LineStyleBits : std::uint32_t {
  LINESTYLE_NONE = 16,      ///< no line
  LINESTYLE_HAIRLINE = 32,  ///< as thin as the device can
  LINESTYLE_WIDTH = 48,     ///< as wide as `width` says
  LINESTYLE_KIND = 48       ///< the mask of the three
};

/// Means a line thinner than any width, in a field that holds a width: twice the smallest
/// normal double.
inline constexpr double LineStyleHairline = 0x1p-1021;

/// How far the user is kept from changing properties of an object by hand: 0 (free) to 100 (locked)
/// each.
struct CPropertyLocks {
  int color = 0;
  int font = 0;
  int lineStyle = 0;
  int size = 0;
  bool operator==(const CPropertyLocks&) const = default;
};

/// A sheet layer: the objects of a document that are on one piece of material.
struct CSheetLayer {
  int number = 0;            ///< from 1; 0 is no layer
  std::wstring name{};       ///< as the user sees it
  int sheetType = 0;         ///< 1: the layer of separated planes
  bool hasSubstrate = true;  ///< false: drawn without its material
  bool operator==(const CSheetLayer&) const = default;
};
