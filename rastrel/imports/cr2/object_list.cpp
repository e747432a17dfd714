#include "rastrel/imports/cr2/object_list.h"

namespace rastrel::imports {

std::vector<host::ObjectHandle> ObjectList::Members() const {
  std::vector<host::ObjectHandle> members;
  if (!HasList()) return members;
  for (host::ObjectHandle member = m_Store->DBGetFirstMember(m_List); member != 0;
       member = m_Store->DBGetNextMember(m_List))
    members.push_back(member);
  return members;
}

std::vector<host::ObjectHandle> ColoredObjects(host::ObjectStore& store,
                                               const ObjectList& graphic) {
  const host::ObjectHandle first = graphic.First();
  if (first == 0) return {};
  if (store.DBGetObjectType(first) != DBTYPE_GROUP) return graphic.Members();
  const ObjectList members(
      store, store.DBCreateList(first, DBLIST_MEMBERS | DBLIST_ALL_PAGES, ObjFilter_IsCurrent));
  return members.Members();
}

host::ObjectHandle GroupObjects(host::ObjectStore& store, const ObjectList& objects) {
  const host::ObjectHandle first = objects.First();
  // The step's name is English: it has no mark for the translation table.
  store.UNOpenStep(L"Group Graphic Components");
  const host::ObjectHandle group = store.DSGroupObjects(objects.Get(), 2, first);
  store.UNCloseStep();
  if (group == 0) return 0;
  store.InvalidateObject(group, 0);
  store.DBAddToList(objects.Get(), group);
  return group;
}

void GroupOnPage(host::ObjectStore& store, const ObjectList& objects, int page) {
  const int count = objects.Count();
  if (count == 0) return;
  const host::ObjectHandle one = count < 2 ? objects.First() : GroupObjects(store, objects);
  if (one != 0) {
    store.SetPageRange(one, page);
    return;
  }
  for (const host::ObjectHandle object : objects.Members()) store.SetPageRange(object, page);
}

}  // namespace rastrel::imports
