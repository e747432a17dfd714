#include <cmath>
#include <utility>

#include "host/document/bitmap.h"
#include "host/document/document_store.h"
#include "host/document/palette.h"
#include "host/document/path_element.h"

/// The members of DocumentStore that make objects of elements.
namespace rastrel::document {

namespace {

// The path of an element, if it is one of this host.
std::optional<PathShape> PathOf(const host::ElementData& data) {
  const auto* arc = std::get_if<const POLYARC*>(&data);
  const auto* element = arc ? dynamic_cast<const PathElement*>(*arc) : nullptr;
  return element ? element->Shape() : std::nullopt;
}

PathElement* ElementOf(POLYARC& arc) { return dynamic_cast<PathElement*>(&arc); }

}  // namespace

ObjectHandle DocumentStore::DBInsertElement(const ELEMENT_ATTRIBUTES* /*attributes*/, int type,
                                            const host::ElementData& data, int /*parent*/,
                                            int /*closed*/, int /*reserved*/, int visible,
                                            bool /*notify*/) {
  Attributes attributes = m_Document.NewAttributes();
  if (visible == 0) attributes.traits &= ~DBTRAIT_VISIBLE;
  if (type == DBTYPE_PARAGRAPH) {
    const auto* paragraph = std::get_if<const ParagraphEle*>(&data);
    TextShape text;
    if (!paragraph || !*paragraph || !m_TakeText || !m_TakeText(**paragraph, text)) return 0;
    return m_Document.Create(std::move(text), attributes);
  }
  if (type != DBTYPE_POLYARC) return 0;
  auto path = PathOf(data);
  if (!path) return 0;
  // Lines come from a knife's way: an inside would cover the artwork that they go around.
  attributes.layer = InvisibleColor();
  return m_Document.Create(*std::move(path), attributes);
}

ObjectHandle DocumentStore::DBInsertBitmap(const CVKBitmap& bitmap, double width, double height) {
  const auto* own = dynamic_cast<const Bitmap*>(&bitmap);
  const bool hasSize = std::isfinite(width) && std::isfinite(height) && width > 0 && height > 0;
  if (!own || !own->Pixels() || !hasSize) return 0;
  return m_Document.Create(BitmapShape{own->Pixels(), width, height}, m_Document.NewAttributes());
}

// --- Paths ---

std::unique_ptr<POLYARC> DocumentStore::PA_NewPolyArc() { return std::make_unique<PathElement>(); }

void DocumentStore::PA_NewSubPoly(POLYARC& arc) {
  if (PathElement* element = ElementOf(arc)) element->AddSubPath();
}

void DocumentStore::PA_AddVertice(POLYARC& arc, int subPoly, int vertex,
                                  const host::PolyArcVertice& values) {
  if (PathElement* element = ElementOf(arc))
    element->AddPoint(subPoly, vertex, {values.x, values.y});
}

void DocumentStore::PA_CloseSubpoly(POLYARC& arc, int subPoly) {
  if (PathElement* element = ElementOf(arc)) element->Close(subPoly);
}

}  // namespace rastrel::document
