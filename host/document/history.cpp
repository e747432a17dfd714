#include <algorithm>
#include <utility>

#include "host/document/document.h"

/// The members of Document that keep its history.
namespace rastrel::document {

void Document::OpenStep(const std::wstring& name) {
  if (m_OpenSteps++ == 0) m_StepName = name;
}

void Document::CloseStep() {
  if (m_OpenSteps > 0 && --m_OpenSteps == 0) m_StepKept = false;
}

// A step begins with its first change, so that one without changes leaves nothing, and one that was
// opened while the history was off does not continue the step before it.
void Document::Keep(Change change) {
  if (!m_StepKept) {
    m_Done.push_back({m_StepName, {}});
    if (m_Done.size() > HistoryDepth) m_Done.pop_front();
    m_Undone.clear();
    m_StepKept = true;
  }
  m_InHistory.insert(change.handle);
  m_Done.back().changes.push_back(std::move(change));
}

// A new last object of the document moves no place that a step has kept. One that a step speaks of
// would come back a second time when that step is undone.
bool Document::LeavesHistory(const Change& insertion) const {
  return insertion.kind == Change::Kind::Insert && insertion.parent == host::DocumentRoot &&
         m_Members->back() == insertion.handle && !m_InHistory.contains(insertion.handle);
}

void Document::KeepOrForget(Change change) {
  if (Records()) {
    Keep(std::move(change));
  } else if (LeavesHistory(change)) {
    m_Undone.clear();
  } else {
    Forget();
  }
}

void Document::Forget() {
  m_Done.clear();
  m_Undone.clear();
  m_InHistory.clear();
  m_StepKept = false;
}

std::vector<std::wstring> Document::StepNames() const {
  std::vector<std::wstring> names;
  for (const Step& step : m_Done) names.push_back(step.name);
  return names;
}

bool Document::Undo() {
  if (m_OpenSteps > 0 || m_Done.empty()) return false;
  Step step = std::move(m_Done.back());
  m_Done.pop_back();
  m_Undone.push_back(Reverse(std::move(step)));
  return true;
}

bool Document::Redo() {
  if (m_OpenSteps > 0 || m_Undone.empty()) return false;
  Step step = std::move(m_Undone.back());
  m_Undone.pop_back();
  m_Done.push_back(Reverse(std::move(step)));
  return true;
}

// Applies the changes' reverses from the last to the first, and returns the step that reverses
// that.
Document::Step Document::Reverse(Step step) {
  std::reverse(step.changes.begin(), step.changes.end());
  for (Change& change : step.changes) {
    Object& object = *m_Objects[change.handle - FirstHandle];
    switch (change.kind) {
      case Change::Kind::Edit: {
        CountPage(object, -1);
        std::swap(object, change.before);
        CountPage(object, 1);
        // The selection is the user's and no part of the history.
        object.attributes.traits = (object.attributes.traits & ~DBTRAIT_SELECTED) |
                                   (change.before.attributes.traits & DBTRAIT_SELECTED);
        break;
      }
      case Change::Kind::Insert:
        change.parent = object.parent;
        change.position = Unlink(change.handle);
        change.kind = Change::Kind::Remove;
        break;
      case Change::Kind::Remove:
        Link(change.handle, change.parent, change.position);
        change.kind = Change::Kind::Insert;
        break;
    }
  }
  return step;
}

}  // namespace rastrel::document
