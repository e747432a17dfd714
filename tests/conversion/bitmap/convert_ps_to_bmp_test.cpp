// Conversions to a bitmap, call by call and file by file, with a queue program that is a script.

#include "rastrel/conversion/bitmap/convert_ps_to_bmp.h"

#include <gtest/gtest.h>

#include "tests/conversion/bitmap/convert_fixture.h"

using namespace rastrel::test;
namespace host = rastrel::host;

namespace {

using ConvertPsToBmp = ConvertTest;

TEST_F(ConvertPsToBmp, makes_a_bitmap_object_and_leaves_no_file) {
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + LoadedCalls + ClearedCalls + EndCalls + ClosedCalls);
  EXPECT_EQ(Changes(), Lines());
  EXPECT_EQ(LogTexts().find("[CLQ] the"), std::string::npos) << LogTexts();
}

}  // namespace
