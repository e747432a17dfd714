#pragma once

#include <string>

#include "host/document/document.h"

namespace rastrel::layout {

/// Keeps an undo step of a document open as long as it lives.
class UndoStep {
 public:
  UndoStep(document::Document& document, const std::wstring& name) : m_Document(document) {
    document.OpenStep(name);
  }
  ~UndoStep() { m_Document.CloseStep(); }
  UndoStep(const UndoStep&) = delete;
  UndoStep& operator=(const UndoStep&) = delete;

 private:
  document::Document& m_Document;
};

}  // namespace rastrel::layout
