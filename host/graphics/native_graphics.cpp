#include "host/graphics/native_graphics.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "host/document/document_file.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::graphics {

using document::Document;
using document::GroupShape;
using document::Object;
using document::ObjectHandle;
using document::PlateShape;
using document::Shape;

namespace {

class Copier {
 public:
  Copier(const Document& source, Document& target, std::optional<int> page)
      : m_Source(source), m_Target(target), m_Page(page) {}

  std::vector<ObjectHandle> Copy(ObjectHandle sourceParent, ObjectHandle targetParent) {
    std::vector<ObjectHandle> copies;
    for (const ObjectHandle member : m_Source.Members(sourceParent)) {
      if (const ObjectHandle copy = CopyOne(member, targetParent)) copies.push_back(copy);
    }
    return copies;
  }

  // A plate is followed by later ones, which have copies only now.
  void JoinPlates() {
    for (const auto& [own, copy] : m_Copies) {
      const auto* plate = std::get_if<PlateShape>(&m_Source.Find(own)->shape);
      if (!plate || plate->continuation == 0) continue;
      const auto next = m_Copies.find(plate->continuation);
      std::get<PlateShape>(m_Target.Edit(copy)->shape).continuation =
          next == m_Copies.end() ? 0 : next->second;
    }
  }

 private:
  ObjectHandle CopyOne(ObjectHandle handle, ObjectHandle parent) {
    const Object& object = *m_Source.Find(handle);
    const bool group = std::holds_alternative<GroupShape>(object.shape);
    document::Attributes attributes = object.attributes;
    attributes.traits &= ~DBTRAIT_SELECTED;
    if (m_Page) attributes.pages = {*m_Page, *m_Page};
    const ObjectHandle copy =
        m_Target.Create(group ? Shape(GroupShape()) : object.shape, attributes);
    if (!m_Target.Insert(copy, parent)) return 0;
    m_Copies.emplace(handle, copy);
    if (group) Copy(handle, copy);
    return copy;
  }

  const Document& m_Source;
  Document& m_Target;
  std::optional<int> m_Page;
  std::unordered_map<ObjectHandle, ObjectHandle> m_Copies;
};

}  // namespace

std::vector<ObjectHandle> CopyObjects(const Document& source, Document& target,
                                      std::optional<int> page) {
  for (const auto& [number, layer] : source.SheetLayers()) target.AddSheetLayer(layer);
  Copier copier(source, target, page);
  auto copies = copier.Copy(host::DocumentRoot, host::DocumentRoot);
  copier.JoinPlates();
  return copies;
}

int NativeGraphics::LoadVEFile(CWnd* /*window*/, const wchar_t* path, int /*reserved*/) {
  if (!path) return 0;
  const auto loaded = document::LoadDocument(path);
  if (!loaded) {
    m_Notices.AddLoss(std::wstring(path) + L": " + os::WideFromUtf8(Describe(loaded.Error())));
    return 0;
  }
  if ((*loaded)->ObjectCount() == 0) {
    m_Notices.AddLoss(std::wstring(path) + L": holds no objects");
    return 0;
  }
  const auto copies = CopyObjects(**loaded, m_Document, std::max(m_Document.DisplayPage(), 1));
  m_Document.DeselectAll();
  for (const ObjectHandle copy : copies) m_Document.Select(copy);
  return 1;
}

}  // namespace rastrel::graphics
