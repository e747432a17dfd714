#pragma once

#include <cstddef>
#include <vector>

#include "host/document/shapes.h"
#include "rastrel/platform/host/plate_object.h"

namespace rastrel::document {

class DocumentStore;

/// A plate as the library sees it. Until `Add` it holds its shape itself; from then on the document
/// does, and the item looks there.
class PlateItem : public CGenericPlateObject {
 public:
  /// A plate that is not in the document.
  PlateItem(DocumentStore& store, PlateShape shape);
  /// The plate of a document's object.
  PlateItem(DocumentStore& store, ObjectHandle object);
  ~PlateItem() override;

  int Add(int visible, int selectable, int reserved, ObjectHandle& object) override;
  int CreatePanesWithOriginTopLeft(const CWorldPoint& start, double width, double height) override;
  int CreatePanesWithOriginBottomLeft(const CWorldPoint& start, double width,
                                      double height) override;
  void ResetData(int count, double width, double height, const CWorldRect& margins,
                 double horizontalGap, double verticalGap, const std::vector<ObjectHandle>& objects,
                 int flag) override;
  [[nodiscard]] int GetPaneCount() const override { return Shape().wanted; }
  [[nodiscard]] double GetPaneWidth() const override { return Shape().width; }
  [[nodiscard]] double GetPaneHeight() const override { return Shape().height; }
  [[nodiscard]] CWorldRect GetMargins() const override { return Shape().margins; }
  [[nodiscard]] double GetHorizontalGap() const override { return Shape().horizontalGap; }
  [[nodiscard]] double GetVerticalGap() const override { return Shape().verticalGap; }
  [[nodiscard]] CWorldRect GetLastPaneBounds() const override;
  [[nodiscard]] CPane* GetFirstPane() override;
  [[nodiscard]] CPane* GetNextPane() override;

 private:
  class Pane;

  [[nodiscard]] const PlateShape& Shape() const;
  [[nodiscard]] PlateShape& ShapeToChange();
  int CreatePanes(const CWorldPoint& start, double width, double height, bool fromBottom);
  void AppendPart(const PlateShape& part, ObjectHandle plate);
  void EndWalk();

  DocumentStore& m_Store;
  ObjectHandle m_Object = 0;
  PlateShape m_Shape;  // while m_Object is 0
  // The panes of the parts that the walk has come to. They stay where they are while it goes on.
  std::vector<std::vector<Pane>> m_Parts;
  std::size_t m_Walk = 0;       // the next pane of the last part
  ObjectHandle m_NextPart = 0;  // the part whose panes follow; 0 after the last
};

}  // namespace rastrel::document
