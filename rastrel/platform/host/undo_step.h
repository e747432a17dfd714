#pragma once

/// Undo steps that close themselves.

#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/translation.h"

namespace rastrel::host {

/// An undo step, open as long as this lives unless it is left open. The name is translated. Used on
/// the user interface thread.
class UndoStep {
 public:
  UndoStep(ObjectStore& store, const wchar_t* name) : m_Store(store) {
    m_Store.UNOpenStep(TranslatedText(name).c_str());
  }
  ~UndoStep() {
    if (m_Closes) m_Store.UNCloseStep();
  }
  UndoStep(const UndoStep&) = delete;
  UndoStep& operator=(const UndoStep&) = delete;

  /// The step stays open when this ends.
  void LeaveOpen() { m_Closes = false; }

 private:
  ObjectStore& m_Store;
  bool m_Closes = true;
};

}  // namespace rastrel::host
