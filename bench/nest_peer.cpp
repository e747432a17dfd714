#include "bench/nest_peer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <libnest2d/libnest2d.hpp>
#include <random>

namespace rastrel::bench {
namespace {

constexpr double UnitsPerMillimetre = 1e5;
// Enough for any layout that could be the best.
constexpr double LengthOfBin = 6000;

libnest2d::Coord Units(double millimetres) {
  return static_cast<libnest2d::Coord>(std::llround(millimetres * UnitsPerMillimetre));
}

// Clockwise and closed, as the library wants it.
libnest2d::Item ItemOf(const PeerOutline& outline) {
  libnest2d::PolygonImpl shape;
  for (const auto& [x, y] : outline) shape.Contour.emplace_back(Units(x), Units(y));
  shape.Contour.push_back(shape.Contour.front());
  libnest2d::PolygonImpl hull = libnest2d::sl::convexHull(shape);
  if (ClipperLib::Orientation(hull.Contour)) ClipperLib::ReversePath(hull.Contour);
  return libnest2d::Item(std::move(hull));
}

// How the pieces are rated at a place: their end along the roll, and a little of another.
struct Rating {
  double upward = 0;   // weight of the height above the roll's edge
  double center = 0;   // weight of the distance to the roll's middle
  float accuracy = 0;  // of the library's own search for a place
};

void Place(std::vector<libnest2d::Item>& items, double height, double gap, const Rating& rating,
           const std::function<bool()>& goOn) {
  using libnest2d::NfpPlacer;
  libnest2d::NestConfig<NfpPlacer, libnest2d::FirstFitSelection> config;
  config.placer_config.alignment = NfpPlacer::Config::Alignment::BOTTOM_LEFT;
  config.placer_config.starting_point = NfpPlacer::Config::Alignment::BOTTOM_LEFT;
  config.placer_config.accuracy = rating.accuracy;
  const double length = static_cast<double>(Units(LengthOfBin));
  const double across = static_cast<double>(Units(height));
  const double edge = static_cast<double>(Units(gap) / 2);
  config.placer_config.object_function = [=](const libnest2d::Item& item) {
    const auto box = item.boundingBox();
    const auto value = [](libnest2d::Coord coordinate) { return static_cast<double>(coordinate); };
    const double left = value(box.minCorner().X), right = value(box.maxCorner().X);
    const double bottom = value(box.minCorner().Y), top = value(box.maxCorner().Y);
    const double outside =
        std::max({0.0, -left - edge, right - length, -bottom - edge, top - across - edge});
    const double middle = std::abs((bottom + top) / 2 - across / 2);
    // A place beyond the bin is refused afterwards, with no other looked for.
    const double refused = outside > 0 ? length + 100 * outside : 0;
    return (right + rating.upward * bottom + rating.center * middle + refused) / length;
  };
  libnest2d::NestControl control;
  control.stopcond = [&goOn] { return !goOn(); };
  // The library grows each piece by half of the gap, and lets its first one reach out by that.
  const libnest2d::Box bin(libnest2d::Point(0, 0),
                           libnest2d::Point(Units(LengthOfBin), Units(height + gap)));
  libnest2d::nest(items, bin, Units(gap), config, control);
}

PeerLayout LayoutOf(const std::vector<libnest2d::Item>& items) {
  PeerLayout layout;
  for (const libnest2d::Item& item : items) {
    if (item.binId() != 0) return {};
    layout.places.push_back({static_cast<double>(item.rotation()),
                             static_cast<double>(item.translation().X) / UnitsPerMillimetre,
                             static_cast<double>(item.translation().Y) / UnitsPerMillimetre});
  }
  return layout;
}

}  // namespace

PeerLayout SearchOfPeer(const std::vector<PeerOutline>& outlines, double height, double gap,
                        const std::function<bool()>& goOn,
                        const std::function<bool(PeerLayout&)>& isRight) {
  std::mt19937 random(1);
  const auto upTo = [&](double limit) {
    return limit * static_cast<double>(random() % 1001) / 1000;
  };
  PeerLayout best;
  for (int layout = 0; layout == 0 || goOn(); ++layout) {
    std::vector<libnest2d::Item> items;
    for (const auto& outline : outlines) items.push_back(ItemOf(outline));
    Rating rating;
    rating.upward = 0.02;
    rating.accuracy = 0.3F;
    if (layout > 0) {
      // The library takes the largest first; a priority parts the pieces into coarse classes of
      // their size, with some that come earlier or later than they would.
      for (libnest2d::Item& item : items)
        item.priority(static_cast<int>(std::log2(item.area() / 1e8) * 3 + upTo(3)));
      rating.upward = upTo(0.2);
      rating.center = random() % 2 == 0 ? 0 : upTo(0.2);
      rating.accuracy = static_cast<float>(0.1 + upTo(0.6));
    }
    const std::function<bool()> wholeFirst = [] { return true; };
    Place(items, height, gap, rating, layout == 0 ? wholeFirst : goOn);
    PeerLayout made = LayoutOf(items);
    ++best.layouts;
    if (made.places.empty() || !isRight(made)) continue;
    if (best.length > 0 && best.length <= made.length) continue;
    made.layouts = best.layouts;
    best = std::move(made);
  }
  return best;
}

}  // namespace rastrel::bench
