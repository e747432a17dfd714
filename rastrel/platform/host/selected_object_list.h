#pragma once

/// A list of the selected objects that frees itself.

#include "rastrel/export.h"
#include "rastrel/platform/values/document_values.h"

namespace rastrel::host {
class ObjectStore;
}

/// The objects that were selected when it was made: a list of the database, destroyed with the
/// object. Only the user interface thread uses it.
class RASTREL_API CSelectedObjectList {
 public:
  /// Lists the selection of a database, which must outlive the object.
  explicit CSelectedObjectList(rastrel::host::ObjectStore& store);
  ~CSelectedObjectList();
  CSelectedObjectList(const CSelectedObjectList&) = delete;
  CSelectedObjectList& operator=(const CSelectedObjectList&) = delete;

  /// The first object, in the order of selection, and the start of a walk; 0 if there is none.
  [[nodiscard]] rastrel::host::ObjectHandle GetFirstMember();
  /// The object after the one returned last; 0 after the last.
  [[nodiscard]] rastrel::host::ObjectHandle GetNextMember();

 private:
  rastrel::host::ObjectStore& m_Store;
  rastrel::host::ListHandle m_List;
};
