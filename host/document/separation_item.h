#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "host/document/shapes.h"
#include "rastrel/platform/host/placed_graphics.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::document {

class DocumentStore;

/// The planes of a page directory that was opened. Layers are its pages; both count from 0.
class PlaneSet {
 public:
  PlaneSet() = default;
  virtual ~PlaneSet() = default;
  PlaneSet(const PlaneSet&) = delete;
  PlaneSet& operator=(const PlaneSet&) = delete;

  [[nodiscard]] virtual int LayerCount() = 0;
  /// 0 for a layer that is not there.
  [[nodiscard]] virtual int PlaneCount(int layer) = 0;
  /// The plane as a shape whose pixels are read from the directory whenever they are needed;
  /// nothing if it is not there. Not checked for being readable.
  [[nodiscard]] virtual std::optional<SeparationShape> Plane(int layer, int plane) = 0;
};

/// Opens the planes of an ".info" file by its library path. The failure is a sentence for the user.
using PlaneOpener = std::function<Expected<std::unique_ptr<PlaneSet>>(const std::wstring& info)>;

/// A separated plane as the library sees it.
class SeparationItem : public CGenericCFPlane {
 public:
  /// A plane that is not in the document. `set` must not be null.
  SeparationItem(DocumentStore& store, std::unique_ptr<PlaneSet> set, int layer, int plane);
  ~SeparationItem() override;

  int Add(int visible, int selectable, int reserved, ObjectHandle& object) override;
  [[nodiscard]] int GetNumberofLayers() override { return m_Set->LayerCount(); }
  [[nodiscard]] int GetNumberofPlanes(int layer) override { return m_Set->PlaneCount(layer); }
  /// Reads the plane to find out.
  [[nodiscard]] int IsStateValid() override;

 private:
  DocumentStore& m_Store;
  std::unique_ptr<PlaneSet> m_Set;
  std::optional<SeparationShape> m_Shape;
  ObjectHandle m_Object = 0;
};

}  // namespace rastrel::document
