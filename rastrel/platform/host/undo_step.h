#pragma once

/// Undo steps that close themselves.

#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/translation.h"

namespace rastrel::host {

/// An undo step, open as long as this lives. The name is translated. Used on the user interface
/// thread.
class UndoStep {
 public:
  UndoStep(ObjectStore& store, const wchar_t* name) : m_Store(store) {
    m_Store.UNOpenStep(TranslatedText(name).c_str());
  }
  ~UndoStep() { m_Store.UNCloseStep(); }
  UndoStep(const UndoStep&) = delete;
  UndoStep& operator=(const UndoStep&) = delete;

 private:
  ObjectStore& m_Store;
};

}  // namespace rastrel::host
