#include <algorithm>

#include "tests/support/recording_document.h"

namespace rastrel::test {

using host::ListHandle;
using host::ObjectHandle;

namespace {

std::string StepsText(const std::vector<std::wstring>& steps) {
  std::string text;
  for (const std::wstring& step : steps) text += (text.empty() ? "" : ", ") + TextOf(step);
  return text;
}

}  // namespace

std::vector<std::string> RecordingStore::LeftOpen() const {
  std::vector<std::string> open;
  if (!m_Steps.empty()) open.push_back("undo step " + StepsText(m_Steps));
  for (const auto& [list, content] : m_Lists) open.push_back("list " + TextOf(list));
  if (m_Held != 0) open.emplace_back("held notifications");
  if (m_KeepHistory == 0) open.emplace_back("undo history switched off");
  return open;
}

ObjectHandle RecordingStore::Make(int type, bool selected) {
  const ObjectHandle object = ++m_LastObject;
  m_Objects[object].type = type;
  m_Objects[object].lineStyle = m_NewLineStyle;
  if (selected) {
    AddToDocument(object);
    m_Selection.push_back(object);
  }
  return object;
}

void RecordingStore::MakeLoaded(int answer) {
  if (m_MakeLoaded) return m_MakeLoaded();
  for (int object = 0; object < answer; ++object) Make(0, true);
}

RecordedObject* RecordingStore::Find(ObjectHandle object) {
  const auto found = m_Objects.find(object);
  return found == m_Objects.end() ? nullptr : &found->second;
}

RecordingPlate* RecordingStore::FindPlate(ObjectHandle object) {
  const RecordedObject* found = Find(object);
  return found == nullptr ? nullptr : dynamic_cast<RecordingPlate*>(found->item.get());
}

ObjectHandle RecordingStore::LastPlate() const { return m_Plates.empty() ? 0 : m_Plates.back(); }

void RecordingStore::AddToDocument(ObjectHandle object) {
  RecordedObject* found = Find(object);
  if (found == nullptr || found->inDocument) return;
  found->inDocument = true;
  m_Document.push_back(object);
  if (FindPlate(object) != nullptr) m_Plates.push_back(object);
}

void RecordingStore::UNOpenStep(const wchar_t* name) {
  m_Calls.Told("UNOpenStep", name);
  m_Steps.emplace_back(name);
}

void RecordingStore::UNCloseStep() {
  m_Calls.Told("UNCloseStep");
  if (m_Steps.empty())
    m_Calls.Write("error: no undo step is open");
  else
    m_Steps.pop_back();
}

int RecordingStore::GetKeepHistory() { return m_Calls.Answered(m_KeepHistory, "GetKeepHistory"); }

void RecordingStore::WriteKeepHistory(int keep) {
  m_Calls.Told("WriteKeepHistory", keep);
  m_KeepHistory = keep;
}

bool RecordingStore::Takes(ObjectHandle object, ObjFilter filter) {
  switch (filter) {
    case ObjFilter_IsCurrent: return true;
    case ObjFilter_IsGenericPlate: return FindPlate(object) != nullptr;
    case ObjFilter_IsText: return Find(object) != nullptr && Find(object)->type == DBTYPE_PARAGRAPH;
  }
  return false;
}

ListHandle RecordingStore::MakeList(std::vector<ObjectHandle> members) {
  const ListHandle list{++m_ListsMade};
  m_Lists[list].members = std::move(members);
  return list;
}

RecordingStore::List* RecordingStore::FindList(ListHandle list) {
  const auto found = m_Lists.find(list);
  return found == m_Lists.end() ? nullptr : &found->second;
}

ListHandle RecordingStore::DBCreateList(ObjectHandle root, int flags, ObjFilter filter) {
  std::vector<ObjectHandle> members;
  if (root == host::DocumentRoot && filter == ObjFilter_IsGenericPlate)
    members = m_Plates;
  else if (root == host::DocumentRoot)
    members = m_Document;
  else if (const RecordedObject* group = Find(root))
    members = group->members;
  std::erase_if(members, [&](ObjectHandle object) { return !Takes(object, filter); });
  return m_Calls.Answered(MakeList(std::move(members)), "DBCreateList", root, flags, filter);
}

ListHandle RecordingStore::DBCreateEmptyList() {
  return m_Calls.Answered(MakeList({}), "DBCreateEmptyList");
}

ListHandle RecordingStore::DBFilterList(ListHandle list, ObjFilter filter) {
  std::vector<ObjectHandle> members;
  if (const List* source = FindList(list)) members = source->members;
  std::erase_if(members, [&](ObjectHandle object) { return !Takes(object, filter); });
  return m_Calls.Answered(MakeList(std::move(members)), "DBFilterList", list, filter);
}

ListHandle RecordingStore::DSCreateSelectedList() {
  return m_Calls.Answered(MakeList(m_Selection), "DSCreateSelectedList");
}

void RecordingStore::DBDestroyList(ListHandle list) {
  m_Calls.Told("DBDestroyList", list);
  if (m_Lists.erase(list) == 0) m_Calls.Write("error: no such list");
}

ObjectHandle RecordingStore::MemberAt(const char* name, ListHandle list, std::size_t place) {
  ObjectHandle member = 0;
  if (List* found = FindList(list)) {
    found->place = place;
    if (place < found->members.size()) member = found->members[place];
  }
  m_Calls.Answered(ObjectText{member}, name, list);
  return member;
}

ObjectHandle RecordingStore::DBGetFirstMember(ListHandle list) {
  return MemberAt("DBGetFirstMember", list, 0);
}

ObjectHandle RecordingStore::DBGetNextMember(ListHandle list) {
  const List* found = FindList(list);
  return MemberAt("DBGetNextMember", list, found == nullptr ? 0 : found->place + 1);
}

ObjectHandle RecordingStore::DBGetLastMember(ListHandle list) {
  const List* found = FindList(list);
  const bool hasMembers = found != nullptr && !found->members.empty();
  return MemberAt("DBGetLastMember", list, hasMembers ? found->members.size() - 1 : 0);
}

int RecordingStore::DBGetMemberCount(ListHandle list) {
  const List* found = FindList(list);
  const int count = found == nullptr ? 0 : static_cast<int>(found->members.size());
  return m_Calls.Answered(count, "DBGetMemberCount", list);
}

void RecordingStore::DBAddToList(ListHandle list, ObjectHandle object) {
  m_Calls.Told("DBAddToList", list, ObjectText{object});
  if (List* found = FindList(list)) found->members.push_back(object);
}

ObjectHandle RecordingStore::DBCreateObject(int type) {
  const ObjectHandle object = Make(type, false);
  m_Calls.Answered(ObjectText{object}, "DBCreateObject", type);
  return object;
}

ObjectHandle RecordingStore::DBInsertElement(const ELEMENT_ATTRIBUTES* attributes, int type,
                                             const host::ElementData& data, int parent, int closed,
                                             int reserved, int visible, bool notify) {
  ObjectHandle object = 0;
  std::string element = "arc";
  const auto* paragraph = std::get_if<const ParagraphEle*>(&data);
  if (paragraph != nullptr) element = "paragraph " + TextOf(**paragraph);
  if (m_Calls.Answer("DBInsertElement", 1) != 0) {
    object = Make(type, false);
    if (paragraph != nullptr) Find(object)->paragraph = **paragraph;
  }
  m_Calls.Answered(ObjectText{object}, "DBInsertElement",
                   NameText{attributes != nullptr ? "attributes" : "null"}, type, NameText{element},
                   parent, closed, reserved, visible, notify);
  return object;
}

ObjectHandle RecordingStore::DBInsertBitmap(const CVKBitmap&, double width, double height) {
  const ObjectHandle object = m_Calls.Answer("DBInsertBitmap", 1) != 0 ? Make(0, false) : 0;
  m_Calls.Answered(ObjectText{object}, "DBInsertBitmap", width, height);
  return object;
}

int RecordingStore::DBInsertObject(ObjectHandle object, ObjectHandle parent) {
  if (parent == host::DocumentRoot)
    AddToDocument(object);
  else if (RecordedObject* group = Find(parent))
    group->members.push_back(object);
  return m_Calls.Answered(m_Calls.Answer("DBInsertObject", 1), "DBInsertObject", ObjectText{object},
                          ObjectText{parent});
}

void RecordingStore::DBDestroyObject(ObjectHandle object) {
  m_Calls.Told("DBDestroyObject", ObjectText{object});
  std::erase(m_Document, object);
  std::erase(m_Plates, object);
  std::erase(m_Selection, object);
  m_Objects.erase(object);
}

int RecordingStore::DBGetObjectType(ObjectHandle object) {
  const RecordedObject* found = Find(object);
  return m_Calls.Answered(found == nullptr ? 0 : found->type, "DBGetObjectType",
                          ObjectText{object});
}

DBElement* RecordingStore::DBGetObjectElement(ObjectHandle object) {
  class Element : public DBElement {
   public:
    Element(const RecordedObject& found, bool filled) : m_Found(found), m_Filled(filled) {}
    CGenericItem* GetPlaceholderItem() override { return m_Found.item.get(); }
    bool IsFilled() const override { return m_Filled; }
    ParagraphEle* GetParagraph() override {
      return m_Found.type == DBTYPE_PARAGRAPH ? &m_Found.paragraph : nullptr;
    }

   private:
    RecordedObject m_Found;
    bool m_Filled;
  };
  m_Calls.Told("DBGetObjectElement", ObjectText{object});
  const RecordedObject* found = Find(object);
  if (found == nullptr) return nullptr;
  m_Element = std::make_unique<Element>(*found, m_Calls.Answer("IsFilled", 1) != 0);
  return m_Element.get();
}

int RecordingStore::DSAddObject(ObjectHandle object) {
  AddToDocument(object);
  return m_Calls.Answered(m_Calls.Answer("DSAddObject", 1), "DSAddObject", ObjectText{object});
}

int RecordingStore::DSAddSourceObject(ObjectHandle object, int kind, ObjectHandle source) {
  AddToDocument(object);
  return m_Calls.Answered(m_Calls.Answer("DSAddSourceObject", 1), "DSAddSourceObject",
                          ObjectText{object}, kind, ObjectText{source});
}

ObjectHandle RecordingStore::DSGroupObjects(ListHandle list, int kind, ObjectHandle first) {
  ObjectHandle group = 0;
  if (m_Calls.Answer("DSGroupObjects", 1) != 0) {
    group = Make(DBTYPE_GROUP, false);
    if (const List* found = FindList(list)) Find(group)->members = found->members;
    AddToDocument(group);
  }
  m_Calls.Answered(ObjectText{group}, "DSGroupObjects", list, kind, ObjectText{first});
  return group;
}

void RecordingStore::DBDeselectAll() {
  m_Calls.Told("DBDeselectAll");
  m_Selection.clear();
}

void RecordingStore::DBSelect(ObjectHandle object) {
  m_Calls.Told("DBSelect", ObjectText{object});
  m_Selection.push_back(object);
}

void RecordingStore::DBSetSelectedList(ListHandle list) {
  m_Calls.Told("DBSetSelectedList", list);
  if (const List* found = FindList(list)) m_Selection = found->members;
}

void RecordingStore::DBNotifySelectionChanged() { m_Calls.Told("DBNotifySelectionChanged"); }

int RecordingStore::DBGetSelectedListBounds(ListHandle list, BOUNDS& bounds) {
  bounds = m_SelectedBounds;
  m_Calls.Answered(bounds, "DBGetSelectedListBounds", list);
  return 1;
}

int RecordingStore::LoadVEFile(CWnd* window, const wchar_t* path, int reserved) {
  const int loaded = m_Calls.Answer("LoadVEFile", 1);
  m_Calls.Answered(loaded, "LoadVEFile", window, path, reserved);
  MakeLoaded(loaded);
  return loaded;
}

void RecordingStore::ChangeObjectsToContourCut(ListHandle list, int reserved) {
  m_Calls.Told("ChangeObjectsToContourCut", list, reserved);
}

void RecordingStore::ChangeObjectsToContourCutThrough(ListHandle list, int reserved) {
  m_Calls.Told("ChangeObjectsToContourCutThrough", list, reserved);
}

}  // namespace rastrel::test
