#pragma once

/// The cut lines that the queue program found in a picture, as its archive holds them.

#include <array>
#include <cstdint>
#include <vector>

#include "rastrel/platform/mfc/string.h"
#include "rastrel/platform/values/poly_reference.h"

// The tree of one cut object. Each level has counted references to the next; a reference in a tree
// that the archive's reader made is never null.
//
//   CCutObjects > CutObject > Polygons > Polygon > SubPolyEntry > SubPoly > Vertex
//
// Used by one thread at a time.

namespace rastrel::conversion {

/// A point of a path. The three values after the place belong to the program that wrote them and to
/// the host; here they are only passed on.
class Vertex final : public PolyBaseClass2 {
 public:
  Vertex() = default;
  Vertex(double pointX, double pointY, double thirdValue, double fourthValue, double fifthValue)
      : x(pointX), y(pointY), third(thirdValue), fourth(fourthValue), fifth(fifthValue) {}

  double x = 0;  ///< centimetres
  double y = 0;  ///< centimetres, upward
  double third = 0;
  double fourth = 0;
  double fifth = 0;
};

/// One sub-path.
class SubPoly final : public PolyBaseClass2 {
 public:
  std::vector<Vertex, SfAllocator<Vertex>> vertices;  ///< in order
  std::uint8_t closed = 0;  ///< non-zero: the last vertex is joined to the first
};

/// A sub-path and its place in a polygon.
class SubPolyEntry final : public PolyBaseClass2 {
 public:
  PolyReference<SubPoly> subPoly;
  std::uint64_t value = 0;  ///< read and kept
};

/// A path: all that is painted at once.
class Polygon final : public PolyBaseClass2 {
 public:
  std::vector<SubPolyEntry, SfAllocator<SubPolyEntry>> entries;  ///< in order
  std::array<std::uint32_t, 4> values{};                         ///< read and kept
  std::uint8_t flag = 0;                                         ///< read and kept
};

/// The paths of a cut object.
class Polygons final : public PolyBaseClass2 {
 public:
  std::vector<PolyReference<Polygon>, SfAllocator<PolyReference<Polygon>>> polygons;  ///< in order
};

/// The paths of one color. A copy has polygons of its own.
struct CutObject {
  CutObject() = default;
  CutObject(const CutObject& other);
  CutObject(CutObject&& other) noexcept = default;
  CutObject& operator=(const CutObject& other);
  CutObject& operator=(CutObject&& other) noexcept = default;
  ~CutObject() = default;

  CString colorText;                 ///< compared by CPS2CutData::IsColorMatchKVI
  std::int32_t kind = 1;             ///< read and kept
  double number = 1.0;               ///< read and kept
  PolyReference<Polygons> polygons;  ///< null: none
};

}  // namespace rastrel::conversion

/// The cut objects of an archive, in its order.
class CCutObjects {
 public:
  CCutObjects() = default;
  virtual ~CCutObjects();
  CCutObjects(const CCutObjects&) = default;
  CCutObjects(CCutObjects&&) noexcept = default;
  CCutObjects& operator=(const CCutObjects&) = default;
  CCutObjects& operator=(CCutObjects&&) noexcept = default;

  std::vector<rastrel::conversion::CutObject> m_Objects;  ///< the list
};
