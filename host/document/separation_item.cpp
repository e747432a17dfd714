#include "host/document/separation_item.h"

#include <utility>

#include "host/document/document_store.h"

namespace rastrel::document {

SeparationItem::SeparationItem(DocumentStore& store, std::unique_ptr<PlaneSet> set, int layer,
                               int plane)
    : m_Store(store), m_Set(std::move(set)), m_Shape(m_Set->Plane(layer, plane)) {}

SeparationItem::~SeparationItem() = default;

int SeparationItem::Add(int visible, int selectable, int /*reserved*/, ObjectHandle& object) {
  if (m_Object != 0 || !m_Shape) return 0;
  Attributes attributes = m_Store.GetDocument().NewAttributes();
  attributes.traits =
      (visible != 0 ? DBTRAIT_VISIBLE : 0) | (selectable != 0 ? DBTRAIT_SELECTABLE : 0);
  const ObjectHandle created = m_Store.GetDocument().Create(*m_Shape, attributes);
  if (created == 0) return 0;
  m_Object = created;
  m_Store.Adopt(m_Object, std::unique_ptr<CGenericItem>(this));
  object = m_Object;
  return 1;
}

// The mean is kept by those pixels for which it is worth it.
int SeparationItem::IsStateValid() { return m_Shape && m_Shape->pixels->MeanInk() ? 1 : 0; }

}  // namespace rastrel::document
