// Painted spot colors, which a program of their own and a warm interpreter find alike.

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "interpreter/interpreter.h"
#include "tests/interpreter/warm/warm_fixture.h"
#include "tests/support/scratch_directory.h"
#include "tests/support/wait_until.h"

namespace rastrel::interpreter::testing {
namespace {

using Names = std::vector<std::string>;

// A box from 100, 100 on that is painted in `Within`; beyond its right edge is `Beyond`.
std::string Eps(int side, const std::string& before = "") {
  const std::string edge = std::to_string(100 + side);
  return "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 100 100 " + edge + " " + edge + "\n" + before +
         "\n/Ink {[/Separation 3 -1 roll /DeviceCMYK {0 exch 0 exch 0}] setcolorspace 1 setcolor} "
         "def\n"
         "(Within) Ink " +
         std::to_string(97 + side) + " 103 2 2 rectfill\n(Beyond) Ink " +
         std::to_string(105 + side) + " 103 9 9 rectfill\nshowpage\n";
}

Names PaintedOf(const std::string& path, int side) {
  const auto painted = PaintedSpots(path, PageArea{100, 100, 100.0 + side, 100.0 + side});
  return painted ? *painted : Names{Describe(painted.Error())};
}

TEST(WarmPainted, files_of_different_sizes_share_an_interpreter_and_have_their_own_pages) {
  if (const auto why = WhyNoWarm(); !why.empty()) GTEST_SKIP() << why;
  const WarmFixture fixture;
  const test::ScratchDirectory files;
  const auto check = [&files](int side, const std::string& before) {
    files.Write("sign.eps", Eps(side, before));
    const std::string path = files.Path("sign.eps");
    EXPECT_EQ(PaintedOf(path, side), Names{"Within"}) << side << before;
  };
  check(60, "");  // by a program each, until two have wished for an interpreter
  check(90, "");
  ASSERT_TRUE(test::WaitUntil([&] { return fixture.Place().Living().size() == 1; }));
  for (const int side : {10, 60, 90, 700, 1497, 1498}) check(side, "");
  // A file can set no page of its own.
  check(60, "<</PageSize [900 900]>> setpagedevice");
  check(60, "<</PageSize [900 900] /Policies <</PageSize 3>> >> setpagedevice");
  check(60, "<</HWResolution [144 144]>> setpagedevice");
  check(60, "statusdict begin a4 end");
  check(60, "grestoreall");
  // One with a resolution of its own is no reason for a second interpreter.
  check(1499, "");
  check(1499, "");
  EXPECT_EQ(fixture.Place().Living().size(), 1U);
}

}  // namespace
}  // namespace rastrel::interpreter::testing
