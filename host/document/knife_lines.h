#pragma once

#include "host/document/document_store.h"
#include "rastrel/platform/host/contour_cut.h"

namespace rastrel::document {

/// Makes paths of a document into cut lines, of groups all that they hold. A cut line is drawn in
/// its line color, which becomes that of its layer where that is visible: the library sets the
/// layer's color ahead. Objects that are no paths stay as they are, with a loss in the notices.
class KnifeLines : public host::ContourCut {
 public:
  /// Both must outlive the object.
  KnifeLines(DocumentStore& store, Notices& notices) : m_Store(store), m_Notices(notices) {}

  void ChangeObjectsToContourCut(host::ListHandle list, int reserved) override;
  void ChangeObjectsToContourCutThrough(host::ListHandle list, int reserved) override;

 private:
  void ChangeList(host::ListHandle list, CutLine kind);
  void ChangeObject(ObjectHandle object, CutLine kind);

  DocumentStore& m_Store;
  Notices& m_Notices;
};

}  // namespace rastrel::document
