#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/host/placed_graphics.h"
#include "tests/support/recording_document.h"

namespace rastrel::test {

/// A plane that writes its calls as `C1.IsStateValid() -> 1`, and "C1 deleted" if it is destroyed
/// without being in the document. The script answers `IsStateValid` (1) and `Add` (1).
class RecordingCFPlane : public CGenericCFPlane {
 public:
  /// `layers` has the number of planes of each layer.
  RecordingCFPlane(RecordingStore& store, std::string name, std::vector<int> layers);
  ~RecordingCFPlane() override;

  int Add(int visible, int selectable, int reserved, host::ObjectHandle& object) override;
  int GetNumberofLayers() override;
  int GetNumberofPlanes(int layer) override;
  int IsStateValid() override;

 private:
  RecordingStore& m_Store;
  std::string m_Name;
  std::vector<int> m_Layers;
  bool m_InDocument = false;
};

}  // namespace rastrel::test
