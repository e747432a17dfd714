#include "host/document/knife_lines.h"

namespace rastrel::document {

void KnifeLines::ChangeObjectsToContourCut(host::ListHandle list, int /*reserved*/) {
  ChangeList(list, CutLine::Cut);
}

void KnifeLines::ChangeObjectsToContourCutThrough(host::ListHandle list, int /*reserved*/) {
  ChangeList(list, CutLine::Through);
}

void KnifeLines::ChangeList(host::ListHandle list, CutLine kind) {
  for (ObjectHandle object = m_Store.DBGetFirstMember(list); object != 0;
       object = m_Store.DBGetNextMember(list)) {
    ChangeObject(object, kind);
  }
}

void KnifeLines::ChangeObject(ObjectHandle handle, CutLine kind) {
  Document& document = m_Store.GetDocument();
  const Object& now = *document.Find(handle);
  if (std::holds_alternative<GroupShape>(now.shape)) {
    for (const ObjectHandle member : document.Members(handle)) ChangeObject(member, kind);
    return;
  }
  if (!std::holds_alternative<PathShape>(now.shape)) {
    m_Notices.AddLoss(L"an object without lines can't become a cut line");
    return;
  }
  Object& object = *document.Edit(handle);
  std::get<PathShape>(object.shape).cutLine = kind;
  if (!object.attributes.layer.IsInvisible()) {
    object.attributes.lineColor = object.attributes.layer;
  }
}

}  // namespace rastrel::document
