#include "cutting/drawing/maps.h"

namespace rastrel::cutting {

Transform Then(const Transform& first, const Transform& second) {
  return {first.a * second.a + first.b * second.c,
          first.a * second.b + first.b * second.d,
          first.c * second.a + first.d * second.c,
          first.c * second.b + first.d * second.d,
          first.e * second.a + first.f * second.c + second.e,
          first.e * second.b + first.f * second.d + second.f};
}

Point Turned(const Transform& map, Point direction) {
  return {map.a * direction.x + map.c * direction.y, map.b * direction.x + map.d * direction.y};
}

}  // namespace rastrel::cutting
