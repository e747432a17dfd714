#include <algorithm>
#include <iterator>
#include <utility>

#include "host/document/document_store.h"

/// The members of DocumentStore that deal with lists of objects. A list is a picture of the moment
/// when it was made: the whole document and its plates are shared and copied only if they change
/// while a list of them lives.
namespace rastrel::document {

using host::ListHandle;

bool DocumentStore::Takes(ObjFilter filter, ObjectHandle object) const {
  const Object* found = m_Document.Find(object);
  if (!found) return false;
  switch (filter) {
    case ObjFilter_IsCurrent: return true;
    case ObjFilter_IsGenericPlate: return std::holds_alternative<PlateShape>(found->shape);
    case ObjFilter_IsText: return std::holds_alternative<TextShape>(found->shape);
  }
  return false;
}

ListHandle DocumentStore::AddList(std::shared_ptr<const Handles> members) {
  m_Lists.emplace(++m_LastList, List{std::move(members), 0});
  return ListHandle{m_LastList};
}

DocumentStore::List* DocumentStore::Find(ListHandle list) {
  const auto found = m_Lists.find(static_cast<unsigned long long>(list));
  return found == m_Lists.end() ? nullptr : &found->second;
}

DocumentStore::Handles DocumentStore::MembersOf(ListHandle list) {
  Handles members;
  for (ObjectHandle member = DBGetFirstMember(list); member != 0; member = DBGetNextMember(list)) {
    members.push_back(member);
  }
  return members;
}

ListHandle DocumentStore::DBCreateList(ObjectHandle root, int flags, ObjFilter filter) {
  const bool allPages = (flags & DBLIST_PAGE) == 0 || m_Document.DisplayPage() == 0;
  if (root == host::DocumentRoot && allPages) {
    if (filter == ObjFilter_IsCurrent) return AddList(m_Document.SharedMembers());
    if (filter == ObjFilter_IsGenericPlate) return AddList(m_Document.SharedPlateObjects());
  }
  const int page = m_Document.DisplayPage();
  auto members = std::make_shared<Handles>();
  std::ranges::copy_if(
      m_Document.Members(root), std::back_inserter(*members), [&](ObjectHandle member) {
        const VK_PAGE_RANGE& pages = m_Document.Find(member)->attributes.pages;
        return Takes(filter, member) && (allPages || (pages.first <= page && page <= pages.last));
      });
  return AddList(std::move(members));
}

ListHandle DocumentStore::DBCreateEmptyList() { return AddList(std::make_shared<Handles>()); }

ListHandle DocumentStore::DBFilterList(ListHandle list, ObjFilter filter) {
  auto members = std::make_shared<Handles>();
  std::ranges::copy_if(MembersOf(list), std::back_inserter(*members),
                       [&](ObjectHandle member) { return Takes(filter, member); });
  return AddList(std::move(members));
}

ListHandle DocumentStore::DSCreateSelectedList() {
  return AddList(std::make_shared<Handles>(m_Document.Selection()));
}

void DocumentStore::DBDestroyList(ListHandle list) {
  m_Lists.erase(static_cast<unsigned long long>(list));
}

ObjectHandle DocumentStore::DBGetFirstMember(ListHandle list) {
  if (List* found = Find(list)) found->next = 0;
  return DBGetNextMember(list);
}

ObjectHandle DocumentStore::DBGetNextMember(ListHandle list) {
  List* found = Find(list);
  while (found && found->next < found->members->size()) {
    const ObjectHandle member = (*found->members)[found->next++];
    if (m_Document.Find(member)) return member;
  }
  return 0;
}

ObjectHandle DocumentStore::DBGetLastMember(ListHandle list) {
  List* found = Find(list);
  if (!found) return 0;
  found->next = found->members->size();
  const auto last = std::find_if(found->members->rbegin(), found->members->rend(),
                                 [&](ObjectHandle member) { return m_Document.Find(member); });
  return last == found->members->rend() ? 0 : *last;
}

int DocumentStore::DBGetMemberCount(ListHandle list) {
  const List* found = Find(list);
  if (!found) return 0;
  return static_cast<int>(std::ranges::count_if(
      *found->members, [&](ObjectHandle member) { return m_Document.Find(member); }));
}

void DocumentStore::DBAddToList(ListHandle list, ObjectHandle object) {
  List* found = Find(list);
  if (!found || !m_Document.Find(object)) return;
  auto members = std::make_shared<Handles>(*found->members);
  members->push_back(object);
  found->members = std::move(members);
}

}  // namespace rastrel::document
