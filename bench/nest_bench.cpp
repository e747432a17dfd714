// The length of a roll that a sign shop's day of shapes takes, against the best that libnest2d
// finds for the same shapes in ten times the time; and against rows of boxes.
//
//   nest_bench [SECONDS_OF_PEER [SECONDS]]
//
// 600 and a tenth of it make the full comparison; without them it is 20 and 2.

#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/require.h"
#include "cutting/nest/nest.h"
#include "tests/cutting/nest/exact_layout.h"
#include "tests/cutting/nest/sign_shop_shapes.h"
#ifdef RASTREL_BENCH_LIBNEST2D
#include "bench/nest_peer.h"
#endif

namespace {

using namespace rastrel;
using bench::Require;

constexpr double Height = 600;
constexpr double Gap = 3;
constexpr double HighestRatio = 1.15;
constexpr double HighestRatioToRows = 1;
constexpr int Shapes = 100;

cutting::NestOptions Options(double seconds) {
  cutting::NestOptions options{.width = cutting::MaximumNestLength,
                               .height = Height,
                               .roll = true,
                               .gap = Gap,
                               .turns = cutting::NestTurns::Quarters,
                               .effort = seconds > 0 ? cutting::MaximumNestEffort : 0};
  const double begin = bench::Now(bench::Clock::Wall);
  options.goOn = [=](const cutting::NestProgress&) {
    return bench::Now(bench::Clock::Wall) - begin < seconds * 1000;
  };
  return options;
}

double Ours(const std::vector<cutting::NestInput>& inputs, double seconds) {
  const auto options = Options(seconds);
  const auto result = cutting::Nest(inputs, options);
  if (!result) bench::Fail(Describe(result.Error()));
  const auto fault = test::FaultOf(inputs, options, *result);
  if (fault) bench::Fail(*fault);
  std::fprintf(stderr, "ours: %.1f mm, %.1f %% waste, %d layouts\n", result->usedLengths.front(),
               result->wastePercent, result->layouts);
  return result->usedLengths.front();
}

#ifdef RASTREL_BENCH_LIBNEST2D
// The pieces are moved so that the layout begins at the roll's start: the peer keeps half of a gap
// there.
cutting::NestResult ResultOf(const std::vector<cutting::NestInput>& inputs,
                             const bench::PeerLayout& layout) {
  cutting::NestResult result;
  cutting::Box box;
  for (std::size_t i = 0; i < layout.places.size(); ++i) {
    const bench::PeerPlace& place = layout.places[i];
    const double cosine = std::cos(place.turn), sine = std::sin(place.turn);
    const cutting::Transform transform{
        .a = cosine, .b = sine, .c = -sine, .d = cosine, .e = place.x, .f = place.y};
    result.placements.push_back({.input = i, .transform = transform});
    for (const cutting::CutPath& path : inputs[i].job->paths)
      for (const cutting::Contour& contour : path.contours)
        box.Add(BoxOf(Transformed(contour, transform)));
  }
  for (cutting::NestPlacement& placement : result.placements) {
    placement.transform.e -= box.left;
    placement.transform.f -= box.bottom;
  }
  result.usedLengths = {box.Width()};
  return result;
}

double Peer(const std::vector<cutting::NestInput>& inputs, double seconds) {
  std::vector<bench::PeerOutline> outlines;
  for (const cutting::NestInput& input : inputs) {
    outlines.emplace_back();
    for (const cutting::Point& point : Flatten(input.job->paths.front().contours.front(), 0.05))
      outlines.back().emplace_back(point.x, point.y);
  }
  const auto options = Options(0);
  const double begin = bench::Now(bench::Clock::Wall);
  // A curve's chords lie within it; the gap makes up for it, and at the edges the height.
  const auto best = bench::SearchOfPeer(
      outlines, Height - 0.12, Gap + 0.12,
      [=] { return bench::Now(bench::Clock::Wall) - begin < seconds * 1000; },
      [&](bench::PeerLayout& layout) {
        const auto result = ResultOf(inputs, layout);
        layout.length = result.usedLengths.front();
        const auto fault = test::FaultOf(inputs, options, result);
        return !fault;
      });
  Require(best.length > 0, "the peer made no layout");
  std::fprintf(stderr, "peer: %.1f mm is the best of %d layouts\n", best.length, best.layouts);
  return best.length;
}
#endif

}  // namespace

int main(int count, char** arguments) {
  const double secondsOfPeer = count > 1 ? std::atof(arguments[1]) : 20;
  const double seconds = count > 2 ? std::atof(arguments[2]) : secondsOfPeer / 10;
  const std::vector<cutting::CutJob> jobs = test::SignShopShapes(Shapes);
  std::vector<cutting::NestInput> inputs;
  for (const cutting::CutJob& job : jobs) inputs.push_back({.name = "shape", .job = &job});
  const double ours = Ours(inputs, seconds);
  bench::Print({"roll of 60 cm with 100 shapes", ours, "mm", "rows of boxes", Ours(inputs, 0),
                HighestRatioToRows});
#ifdef RASTREL_BENCH_LIBNEST2D
  bench::Print({"roll of 60 cm with 100 shapes", ours, "mm", "libnest2d in ten times the time",
                Peer(inputs, secondsOfPeer), HighestRatio});
#endif
  return 0;
}
