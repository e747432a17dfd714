#pragma once

#include "rastrel/export.h"
#include "rastrel/platform/values/document_values.h"

namespace rastrel::host {
class ObjectStore;
}

/// The objects that are selected at the moment when it is made. It holds a list of the database and
/// frees it.
class RASTREL_API CSelectedObjectList {
 public:
  /// Lists the selection of a database, which must outlive the object.
  explicit CSelectedObjectList(rastrel::host::ObjectStore& store);
  ~CSelectedObjectList();
  CSelectedObjectList(const CSelectedObjectList&) = delete;
  CSelectedObjectList& operator=(const CSelectedObjectList&) = delete;

  /// The first object and the next one; 0 behind the last.
  [[nodiscard]] rastrel::host::ObjectHandle GetFirstMember();
  [[nodiscard]] rastrel::host::ObjectHandle GetNextMember();

 private:
  rastrel::host::ObjectStore& m_Store;
  rastrel::host::ListHandle m_List;
};
