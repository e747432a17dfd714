#pragma once

#include <functional>
#include <utility>
#include <vector>

// For C++17, which the peer's headers need, and so without any other header of ours.
namespace rastrel::bench {

using PeerOutline = std::vector<std::pair<double, double>>;  ///< x and y, millimetres

/// An outline at a place: turned counterclockwise about the origin, then moved.
struct PeerPlace {
  double turn = 0;  ///< radians
  double x = 0, y = 0;
};

struct PeerLayout {
  double length = 0;  ///< of the roll, millimetres; 0 if nothing was placed
  std::vector<PeerPlace> places;
  int layouts = 0;  ///< made in all
};

/// The best layout that libnest2d finds for the outlines on a roll: one layout after the other,
/// each with other settings and another order of the pieces, until `goOn` returns false. It takes
/// convex outlines alone, so that of others it gets the hull. A layout counts if `isRight`, which
/// sets its length, says so. Lengths are millimetres; `height` is across the roll.
[[nodiscard]] PeerLayout SearchOfPeer(const std::vector<PeerOutline>& outlines, double height,
                                      double gap, const std::function<bool()>& goOn,
                                      const std::function<bool(PeerLayout&)>& isRight);

}  // namespace rastrel::bench
