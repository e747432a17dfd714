#include "rastrel/conversion/cut/cut_objects.h"

#include <utility>

namespace rastrel::conversion {

namespace {

template <class Object>
PolyReference<Object> CopyOf(const Object& object) {
  return PolyReference<Object>(new Object(object));
}

// A copy shares the objects of its references, so each level replaces them by copies.
PolyReference<Polygon> DeepCopy(const Polygon& polygon) {
  PolyReference<Polygon> copy = CopyOf(polygon);
  for (SubPolyEntry& entry : copy->entries)
    if (entry.subPoly) entry.subPoly = CopyOf(*entry.subPoly);
  return copy;
}

PolyReference<Polygons> DeepCopy(const PolyReference<Polygons>& polygons) {
  if (!polygons) return {};
  PolyReference<Polygons> copy = CopyOf(*polygons);
  for (PolyReference<Polygon>& polygon : copy->polygons)
    if (polygon) polygon = DeepCopy(*polygon);
  return copy;
}

}  // namespace

CutObject::CutObject(const CutObject& other)
    : colorText(other.colorText),
      kind(other.kind),
      number(other.number),
      polygons(DeepCopy(other.polygons)) {}

CutObject& CutObject::operator=(const CutObject& other) {
  CutObject copy(other);
  *this = std::move(copy);
  return *this;
}

}  // namespace rastrel::conversion

CCutObjects::~CCutObjects() = default;
