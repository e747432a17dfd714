#include "cli/converting/conversion_settings.h"

#include <gtest/gtest.h>

namespace rastrel::cli {
namespace {

TEST(ConversionSettings, any_one_of_them_counts) {
  EXPECT_FALSE(ConversionSettings().Any());
  ConversionSettings page;
  page.page.emplace();
  EXPECT_TRUE(page.Any());
  ConversionSettings resolution;
  resolution.resolution = 72;
  EXPECT_TRUE(resolution.Any());
  ConversionSettings cut;
  cut.cut.enabled = 1;
  EXPECT_TRUE(cut.Any());
  ConversionSettings halfCut;
  halfCut.halfCut.enabled = 1;
  EXPECT_TRUE(halfCut.Any());
}

}  // namespace
}  // namespace rastrel::cli
