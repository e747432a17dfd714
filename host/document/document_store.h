#pragma once

#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "rastrel/platform/host/object_store.h"

namespace rastrel::document {

/// The paragraph of a text object, as DBElement::GetParagraph returns it, and the object that a
/// paragraph names: 0 for one that is closed and in no object yet.
[[nodiscard]] ParagraphEle ParagraphOf(ObjectHandle text);
[[nodiscard]] ObjectHandle TextNamedBy(const ParagraphEle& paragraph);

/// The document database of the embedded host over one document.
///
/// Only the text engine knows the meaning of a paragraph's element: it registers the function that
/// returns its text. A store without one makes no text objects.
class DocumentStore : public host::ObjectStore {
 public:
  /// Moves the text that an element names to its second argument, once; false if there is none.
  using TakeText = std::function<bool(const ParagraphEle&, TextShape&)>;

  /// The document must outlive the store.
  explicit DocumentStore(Document& document);
  ~DocumentStore() override;

  [[nodiscard]] Document& GetDocument() { return m_Document; }
  /// Takes messages about colors and lines that are set and don't show; null for none. They must
  /// outlive the store.
  void ReportTo(Notices* notices) { m_Notices = notices; }
  void SetTextSource(TakeText takeText) { m_TakeText = std::move(takeText); }
  /// Makes an item the placeholder of an object.
  void Adopt(ObjectHandle object, std::unique_ptr<CGenericItem> item);
  /// Makes the document a new one (Document::Clear): items, elements and lists of the old one end.
  void Clear();
  /// Lists that were made and not destroyed.
  [[nodiscard]] std::size_t OpenLists() const { return m_Lists.size(); }

  void UNOpenStep(const wchar_t* name) override;
  void UNCloseStep() override;
  [[nodiscard]] int GetKeepHistory() override;
  void WriteKeepHistory(int keep) override;

  [[nodiscard]] host::ListHandle DBCreateList(ObjectHandle root, int flags,
                                              ObjFilter filter) override;
  [[nodiscard]] host::ListHandle DBCreateEmptyList() override;
  [[nodiscard]] host::ListHandle DBFilterList(host::ListHandle list, ObjFilter filter) override;
  [[nodiscard]] host::ListHandle DSCreateSelectedList() override;
  void DBDestroyList(host::ListHandle list) override;
  [[nodiscard]] ObjectHandle DBGetFirstMember(host::ListHandle list) override;
  [[nodiscard]] ObjectHandle DBGetNextMember(host::ListHandle list) override;
  [[nodiscard]] ObjectHandle DBGetLastMember(host::ListHandle list) override;
  [[nodiscard]] int DBGetMemberCount(host::ListHandle list) override;
  void DBAddToList(host::ListHandle list, ObjectHandle object) override;

  [[nodiscard]] ObjectHandle DBCreateObject(int type) override;
  /// A path has a thin black line and no inside.
  [[nodiscard]] ObjectHandle DBInsertElement(const ELEMENT_ATTRIBUTES* attributes, int type,
                                             const host::ElementData& data, int parent, int closed,
                                             int reserved, int visible, bool notify) override;
  /// Takes bitmaps that DocumentApplication::NewVKBitmap made; a size must be finite and above 0.
  [[nodiscard]] ObjectHandle DBInsertBitmap(const CVKBitmap& bitmap, double width,
                                            double height) override;
  int DBInsertObject(ObjectHandle object, ObjectHandle parent) override;
  void DBDestroyObject(ObjectHandle object) override;
  [[nodiscard]] int DBGetObjectType(ObjectHandle object) override;
  [[nodiscard]] DBElement* DBGetObjectElement(ObjectHandle object) override;
  int DSAddObject(ObjectHandle object) override;
  int DSAddSourceObject(ObjectHandle object, int kind, ObjectHandle source) override;
  [[nodiscard]] ObjectHandle DSGroupObjects(host::ListHandle list, int kind,
                                            ObjectHandle first) override;

  void DBDeselectAll() override;
  void DBSelect(ObjectHandle object) override;
  void DBSetSelectedList(host::ListHandle list) override;
  int DBGetSelectedListBounds(host::ListHandle list, BOUNDS& bounds) override;

  // Colors and lines that a group gets are those of all that it holds.
  void DBSetLayer(ObjectHandle object, const CVKColor& color) override;
  int DBGetLayer(ObjectHandle object, CVKColor& color) override;
  void DBSetLineColor(ObjectHandle object, const CVKColor& color) override;
  int DBGetLineColor(ObjectHandle object, CVKColor& color) override;
  int DBGetLineStyle(ObjectHandle object, LINESTYLE& style) override;
  void DBSetLineStyle(ObjectHandle object, const LINESTYLE& style) override;
  [[nodiscard]] int DBGetSheetLayer(ObjectHandle object) override;
  void DBSetSheetLayer(ObjectHandle object, int sheetLayer) override;
  [[nodiscard]] VK_PAGE_RANGE DBGetPageRange(ObjectHandle object) override;
  void DBSetPageRange(ObjectHandle object, const VK_PAGE_RANGE& pages) override;
  void DBSetTrait(ObjectHandle object, int trait, int value) override;
  void DBSetTraits(ObjectHandle object, int traits) override;
  void DBSetPropertyLocks(ObjectHandle object, const CPropertyLocks& locks) override;

  // Bounds are measured when they are asked for, and nothing is on show: there is nothing to do.
  void DBInvalidateBounds(ObjectHandle object) override;
  void DBValidateBounds(ObjectHandle object) override;
  void InvalidateObject(ObjectHandle object, int erase) override;
  void DBApplyTM(ObjectHandle object, const TM& matrix) override;

  /// A path's element is a PathElement, and of a point only its place counts.
  [[nodiscard]] std::unique_ptr<POLYARC> PA_NewPolyArc() override;
  void PA_NewSubPoly(POLYARC& arc) override;
  void PA_AddVertice(POLYARC& arc, int subPoly, int vertex,
                     const host::PolyArcVertice& values) override;
  void PA_CloseSubpoly(POLYARC& arc, int subPoly) override;

 private:
  class Element;
  using Handles = std::vector<ObjectHandle>;
  struct List {
    std::shared_ptr<const Handles> members;
    std::size_t next = 0;
  };

  [[nodiscard]] bool Takes(ObjFilter filter, ObjectHandle object) const;
  host::ListHandle AddList(std::shared_ptr<const Handles> members);
  [[nodiscard]] List* Find(host::ListHandle list);
  [[nodiscard]] Handles MembersOf(host::ListHandle list);
  [[nodiscard]] Attributes* Edit(ObjectHandle object);
  void ReportKeptLook(ObjectHandle object);
  [[nodiscard]] ObjectHandle NextAfter(ObjectHandle object, Handles those) const;

  Document& m_Document;
  Notices* m_Notices = nullptr;
  TakeText m_TakeText;
  std::unordered_map<unsigned long long, List> m_Lists;
  unsigned long long m_LastList = 0;
  std::unordered_map<ObjectHandle, std::unique_ptr<CGenericItem>> m_Items;
  std::unordered_map<ObjectHandle, std::unique_ptr<Element>> m_Elements;
};

}  // namespace rastrel::document
