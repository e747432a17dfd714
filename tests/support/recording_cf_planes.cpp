#include "tests/support/recording_cf_planes.h"

#include <utility>

namespace rastrel::test {

RecordingCFPlane::RecordingCFPlane(RecordingStore& store, std::string name, std::vector<int> layers)
    : m_Store(store), m_Name(std::move(name)), m_Layers(std::move(layers)) {}

RecordingCFPlane::~RecordingCFPlane() {
  if (!m_InDocument) m_Store.m_Calls.Write(m_Name + " deleted");
}

int RecordingCFPlane::Add(int visible, int selectable, int reserved, host::ObjectHandle& object) {
  const std::string name = m_Name + ".Add";
  if (m_Store.m_Calls.Answer("Add", 1) == 0) {
    m_Store.m_Calls.Answered(NameText{"failed"}, name, visible, selectable, reserved);
    return 0;
  }
  object = m_Store.Make(0, false);
  m_Store.Find(object)->item.reset(this);
  m_InDocument = true;
  m_Store.m_Calls.Answered(ObjectText{object}, name, visible, selectable, reserved);
  return 1;
}

int RecordingCFPlane::GetNumberofLayers() {
  return m_Store.m_Calls.Answered(static_cast<int>(m_Layers.size()), m_Name + ".GetNumberofLayers");
}

int RecordingCFPlane::GetNumberofPlanes(int layer) {
  return m_Store.m_Calls.Answered(m_Layers.at(static_cast<std::size_t>(layer)),
                                  m_Name + ".GetNumberofPlanes", layer);
}

int RecordingCFPlane::IsStateValid() {
  return m_Store.m_Calls.Answered(m_Store.m_Calls.Answer("IsStateValid", 1),
                                  m_Name + ".IsStateValid");
}

}  // namespace rastrel::test
