#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "rastrel/platform/host/contour_cut.h"
#include "rastrel/platform/host/graphics_io.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/plate_object.h"
#include "rastrel/platform/values/color.h"
#include "tests/support/host_calls.h"

namespace rastrel::test {

/// A pane of a recording plate object. Its edges and its plate object are not written.
class RecordingPane : public CPane {
 public:
  explicit RecordingPane(const CWorldRect& bounds, host::ObjectHandle plate = 0)
      : m_Bounds(bounds), m_Plate(plate) {}
  host::ObjectHandle GetPlateObject() const override { return m_Plate; }
  double GetLeft() const override { return m_Bounds.left; }
  double GetTop() const override { return m_Bounds.top; }
  double GetRight() const override { return m_Bounds.right; }
  double GetBottom() const override { return m_Bounds.bottom; }

 private:
  CWorldRect m_Bounds;
  host::ObjectHandle m_Plate;
};

class RecordingStore;

/// A plate object that writes its calls as `P1.ResetData(...)`. Its panes are in one row from the
/// start point. It has as many as were wanted, unless the script answers
/// `CreatePanesWithOriginTopLeft` or `...BottomLeft`.
class RecordingPlate : public CGenericPlateObject {
 public:
  RecordingPlate(RecordingStore& store, std::string name, int count, double width, double height,
                 const CWorldRect& margins, double horizontalGap, double verticalGap);
  ~RecordingPlate() override;

  int Add(int visible, int selectable, int reserved, host::ObjectHandle& object) override;
  int CreatePanesWithOriginTopLeft(const CWorldPoint& start, double width, double height) override;
  int CreatePanesWithOriginBottomLeft(const CWorldPoint& start, double width,
                                      double height) override;
  void ResetData(int count, double width, double height, const CWorldRect& margins,
                 double horizontalGap, double verticalGap,
                 const std::vector<host::ObjectHandle>& objects, int flag) override;
  int GetPaneCount() const override;
  double GetPaneWidth() const override;
  double GetPaneHeight() const override;
  CWorldRect GetMargins() const override;
  double GetHorizontalGap() const override;
  double GetVerticalGap() const override;
  CWorldRect GetLastPaneBounds() const override;
  CPane* GetFirstPane() override;
  CPane* GetNextPane() override;

  /// One more pane, without a line.
  void Extend(int panes) { m_Count += panes; }
  const std::string& Name() const { return m_Name; }

 private:
  int CreatePanes(const char* name, const CWorldPoint& start, double width, double height,
                  bool downward);
  CWorldRect BoundsOf(int pane) const;

  RecordingStore& m_Store;
  std::string m_Name;
  int m_Count;
  double m_Width;
  double m_Height;
  CWorldRect m_Margins;
  double m_HorizontalGap;
  double m_VerticalGap;
  CWorldPoint m_TopLeft;
  int m_Walk = 0;
  std::unique_ptr<RecordingPane> m_Pane;
  bool m_InDocument = false;
};

/// An object of the recording document.
struct RecordedObject {
  int type = 0;
  bool inDocument = false;
  CVKColor layer;
  CVKColor lineColor;
  LINESTYLE lineStyle;
  int sheetLayer = 0;
  VK_PAGE_RANGE pages;
  std::vector<host::ObjectHandle> members;
  std::shared_ptr<CGenericItem> item;
  ParagraphEle paragraph;
};

/// The database, the loader of native graphics and the contour cutter of a recording host. It keeps
/// as much of a document as the answers need: which objects there are and of what kind, their
/// attributes, the selection. Operations on matrices and bounds are written and change nothing.
class RecordingStore : public host::ObjectStore, public host::GraphicsIO, public host::ContourCut {
 public:
  explicit RecordingStore(HostCalls& calls) : m_Calls(calls) {}

  HostCalls& m_Calls;
  /// The result of `GetLastPaneBounds`, in place of the row that the plates are laid out in.
  std::optional<CWorldRect> m_LastPaneBounds;
  /// The line style that a new object begins with.
  LINESTYLE m_NewLineStyle;
  /// The bounds that `DBGetSelectedListBounds` reads.
  BOUNDS m_SelectedBounds{.xmin = 0, .xmax = 2, .ymin = 0, .ymax = 1};

  /// The plate object that a pane belongs to, by the name of its plate and its number from 1. 0, as
  /// without the function: the one that was asked.
  std::function<host::ObjectHandle(const std::string& plate, int pane)> m_PlateOfPane;
  /// Makes the objects of a loaded file, which are selected; without it one object of no kind for
  /// each that the answer of the load counts.
  std::function<void()> m_MakeLoaded;

  /// A text for each thing that was opened and not closed.
  std::vector<std::string> LeftOpen() const;
  /// Makes the objects of a load with that answer.
  void MakeLoaded(int answer);
  /// A new object as the host itself makes one: in the document, and selected if asked.
  host::ObjectHandle Make(int type, bool selected);
  /// The object of a handle; null for none.
  RecordedObject* Find(host::ObjectHandle object);
  /// The plate object of a handle; null if it is none.
  RecordingPlate* FindPlate(host::ObjectHandle object);
  /// The plate object that was added last, 0 without any.
  host::ObjectHandle LastPlate() const;

  void UNOpenStep(const wchar_t* name) override;
  void UNCloseStep() override;
  int GetKeepHistory() override;
  void WriteKeepHistory(int keep) override;
  host::ListHandle DBCreateList(host::ObjectHandle root, int flags, ObjFilter filter) override;
  host::ListHandle DBCreateEmptyList() override;
  host::ListHandle DBFilterList(host::ListHandle list, ObjFilter filter) override;
  host::ListHandle DSCreateSelectedList() override;
  void DBDestroyList(host::ListHandle list) override;
  host::ObjectHandle DBGetFirstMember(host::ListHandle list) override;
  host::ObjectHandle DBGetNextMember(host::ListHandle list) override;
  host::ObjectHandle DBGetLastMember(host::ListHandle list) override;
  int DBGetMemberCount(host::ListHandle list) override;
  void DBAddToList(host::ListHandle list, host::ObjectHandle object) override;
  host::ObjectHandle DBCreateObject(int type) override;
  host::ObjectHandle DBInsertElement(const ELEMENT_ATTRIBUTES* attributes, int type,
                                     const host::ElementData& data, int parent, int closed,
                                     int reserved, int visible, bool notify) override;
  host::ObjectHandle DBInsertBitmap(const CVKBitmap& bitmap, double width, double height) override;
  int DBInsertObject(host::ObjectHandle object, host::ObjectHandle parent) override;
  void DBDestroyObject(host::ObjectHandle object) override;
  int DBGetObjectType(host::ObjectHandle object) override;
  DBElement* DBGetObjectElement(host::ObjectHandle object) override;
  int DSAddObject(host::ObjectHandle object) override;
  int DSAddSourceObject(host::ObjectHandle object, int kind, host::ObjectHandle source) override;
  host::ObjectHandle DSGroupObjects(host::ListHandle list, int kind,
                                    host::ObjectHandle first) override;
  void DBDeselectAll() override;
  void DBSelect(host::ObjectHandle object) override;
  void DBSetSelectedList(host::ListHandle list) override;
  void DBNotifySelectionChanged() override;
  int DBGetSelectedListBounds(host::ListHandle list, BOUNDS& bounds) override;
  void DBSetLayer(host::ObjectHandle object, const CVKColor& color) override;
  int DBGetLayer(host::ObjectHandle object, CVKColor& color) override;
  void DBSetLineColor(host::ObjectHandle object, const CVKColor& color) override;
  int DBGetLineColor(host::ObjectHandle object, CVKColor& color) override;
  int DBGetLineStyle(host::ObjectHandle object, LINESTYLE& style) override;
  void DBSetLineStyle(host::ObjectHandle object, const LINESTYLE& style) override;
  int DBGetSheetLayer(host::ObjectHandle object) override;
  void DBSetSheetLayer(host::ObjectHandle object, int sheetLayer) override;
  VK_PAGE_RANGE DBGetPageRange(host::ObjectHandle object) override;
  void DBSetPageRange(host::ObjectHandle object, const VK_PAGE_RANGE& pages) override;
  void SetPageRange(host::ObjectHandle object, int page) override;
  void DBSetTrait(host::ObjectHandle object, int trait, int value) override;
  void DBSetTraits(host::ObjectHandle object, int traits) override;
  void DBSetPropertyLocks(host::ObjectHandle object, const CPropertyLocks& locks) override;
  void DBInvalidateBounds(host::ObjectHandle object) override;
  void DBValidateBounds(host::ObjectHandle object) override;
  void InvalidateObject(host::ObjectHandle object, int erase) override;
  void DBApplyTM(host::ObjectHandle object, const TM& matrix) override;
  void DBHoldNotifications() override;
  void DBReleaseNotifications() override;
  std::unique_ptr<POLYARC> PA_NewPolyArc() override;
  void PA_NewSubPoly(POLYARC& arc) override;
  void PA_AddVertice(POLYARC& arc, int subPoly, int vertex,
                     const host::PolyArcVertice& values) override;
  void PA_CloseSubpoly(POLYARC& arc, int subPoly) override;
  host::ObjectHandle XCGetBaseObject(host::ObjectHandle object) override;
  host::OperationHandle XCGetOwnedOperation(host::ObjectHandle object) override;
  void SetProductListValid(host::OperationHandle operation, int valid) override;
  void RecalculateOperations() override;

  int LoadVEFile(CWnd* window, const wchar_t* path, int reserved) override;
  void ChangeObjectsToContourCut(host::ListHandle list, int reserved) override;
  void ChangeObjectsToContourCutThrough(host::ListHandle list, int reserved) override;

 private:
  friend class RecordingPlate;
  struct List {
    std::vector<host::ObjectHandle> members;
    std::size_t place = 0;
  };

  bool Takes(host::ObjectHandle object, ObjFilter filter);
  host::ListHandle MakeList(std::vector<host::ObjectHandle> members);
  List* FindList(host::ListHandle list);
  host::ObjectHandle MemberAt(const char* name, host::ListHandle list, std::size_t place);
  void AddToDocument(host::ObjectHandle object);
  std::string NextPlateName() { return "P" + std::to_string(++m_PlatesMade); }

  std::map<host::ObjectHandle, RecordedObject> m_Objects;
  std::vector<host::ObjectHandle> m_Document;  ///< its objects, in order
  std::vector<host::ObjectHandle> m_Plates;    ///< of these the plates
  std::vector<host::ObjectHandle> m_Selection;
  std::map<host::ListHandle, List> m_Lists;
  std::unique_ptr<DBElement> m_Element;
  std::vector<std::wstring> m_Steps;
  host::ObjectHandle m_LastObject = host::DocumentRoot;
  unsigned long long m_ListsMade = 0;
  int m_PlatesMade = 0;
  int m_KeepHistory = 1;
  int m_Held = 0;

  friend class RecordingApplication;
};

}  // namespace rastrel::test
