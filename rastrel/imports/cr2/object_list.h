#pragma once

#include <utility>
#include <vector>

#include "rastrel/imports/document_host.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/values/document_values.h"

namespace rastrel::imports {

/// A list of the document's objects, destroyed at its end. Without a list it counts as empty and
/// calls nothing.
class ObjectList {
 public:
  ObjectList() = default;
  /// Takes over a list that the store made.
  ObjectList(host::ObjectStore& store, host::ListHandle list) : m_Store(&store), m_List(list) {}
  ObjectList(ObjectList&& other) noexcept
      : m_Store(other.m_Store), m_List(std::exchange(other.m_List, host::ListHandle::None)) {}
  ObjectList& operator=(ObjectList&&) = delete;
  ObjectList(const ObjectList&) = delete;
  ObjectList& operator=(const ObjectList&) = delete;
  ~ObjectList() {
    if (HasList()) m_Store->DBDestroyList(m_List);
  }

  [[nodiscard]] host::ListHandle Get() const { return m_List; }
  /// The first member; 0 if there is none.
  [[nodiscard]] host::ObjectHandle First() const {
    return HasList() ? m_Store->DBGetFirstMember(m_List) : 0;
  }
  /// The number of members.
  [[nodiscard]] int Count() const { return HasList() ? m_Store->DBGetMemberCount(m_List) : 0; }
  /// The members in order, by one walk.
  [[nodiscard]] std::vector<host::ObjectHandle> Members() const;

 private:
  [[nodiscard]] bool HasList() const { return m_List != host::ListHandle::None; }

  host::ObjectStore* m_Store = nullptr;
  host::ListHandle m_List = host::ListHandle::None;
};

/// The objects that colors and line styles of a loaded graphic go to: the members of its first
/// object if that is a group, else all objects of the graphic.
[[nodiscard]] std::vector<host::ObjectHandle> ColoredObjects(host::ObjectStore& store,
                                                             const ObjectList& graphic);

/// Joins a list of two or more objects to a group in an undo step, and adds the group to the list.
/// Returns the group, or 0 if the host can't group.
[[nodiscard]] host::ObjectHandle GroupObjects(host::ObjectStore& store, const ObjectList& objects);

/// Groups a list of two or more objects and puts the group on a page, or the one object. Without a
/// group the objects are put there one by one. Nothing happens for an empty list.
void GroupOnPage(host::ObjectStore& store, const ObjectList& objects, int page);

}  // namespace rastrel::imports
