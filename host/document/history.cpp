#include <algorithm>
#include <utility>

#include "host/document/document.h"

/// The members of Document that keep its history.
namespace rastrel::document {

void Document::OpenStep(const std::wstring& name) {
  if (m_OpenSteps++ > 0 || !m_KeepHistory) return;
  m_Done.push_back({name, {}});
  m_Undone.clear();
}

void Document::CloseStep() {
  if (m_OpenSteps == 0 || --m_OpenSteps > 0 || m_Done.empty()) return;
  if (m_Done.back().changes.empty()) m_Done.pop_back();
  if (m_Done.size() > HistoryDepth) m_Done.pop_front();
}

void Document::Keep(Change change) {
  // An object that is destroyed within a step takes the history with it, the open step included.
  if (m_Done.empty()) m_Done.push_back({});
  m_Done.back().changes.push_back(std::move(change));
}

void Document::KeepOrForget(Change change) {
  if (Records()) {
    Keep(std::move(change));
  } else {
    Forget();
  }
}

void Document::Forget() {
  m_Done.clear();
  m_Undone.clear();
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
