#include "cutting/rules/color_difference.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>
#include <array>

namespace rastrel::cutting {
namespace {

struct Pair {
  LabColor one;
  LabColor other;
  double difference;
};

// Sharma, Wu, Dalal: The CIEDE2000 Color-Difference Formula (2005), table 1.
constexpr std::array<Pair, 34> Published{{
    {{50, 2.6772, -79.7751}, {50, 0, -82.7485}, 2.0425},
    {{50, 3.1571, -77.2803}, {50, 0, -82.7485}, 2.8615},
    {{50, 2.8361, -74.0200}, {50, 0, -82.7485}, 3.4412},
    {{50, -1.3802, -84.2814}, {50, 0, -82.7485}, 1.0000},
    {{50, -1.1848, -84.8006}, {50, 0, -82.7485}, 1.0000},
    {{50, -0.9009, -85.5211}, {50, 0, -82.7485}, 1.0000},
    {{50, 0, 0}, {50, -1, 2}, 2.3669},
    {{50, -1, 2}, {50, 0, 0}, 2.3669},
    {{50, 2.4900, -0.0010}, {50, -2.4900, 0.0009}, 7.1792},
    {{50, 2.4900, -0.0010}, {50, -2.4900, 0.0010}, 7.1792},
    {{50, 2.4900, -0.0010}, {50, -2.4900, 0.0011}, 7.2195},
    {{50, 2.4900, -0.0010}, {50, -2.4900, 0.0012}, 7.2195},
    {{50, -0.0010, 2.4900}, {50, 0.0009, -2.4900}, 4.8045},
    {{50, -0.0010, 2.4900}, {50, 0.0010, -2.4900}, 4.8045},
    {{50, -0.0010, 2.4900}, {50, 0.0011, -2.4900}, 4.7461},
    {{50, 2.5, 0}, {50, 0, -2.5}, 4.3065},
    {{50, 2.5, 0}, {73, 25, -18}, 27.1492},
    {{50, 2.5, 0}, {61, -5, 29}, 22.8977},
    {{50, 2.5, 0}, {56, -27, -3}, 31.9030},
    {{50, 2.5, 0}, {58, 24, 15}, 19.4535},
    {{50, 2.5, 0}, {50, 3.1736, 0.5854}, 1.0000},
    {{50, 2.5, 0}, {50, 3.2972, 0}, 1.0000},
    {{50, 2.5, 0}, {50, 1.8634, 0.5757}, 1.0000},
    {{50, 2.5, 0}, {50, 3.2592, 0.3350}, 1.0000},
    {{60.2574, -34.0099, 36.2677}, {60.4626, -34.1751, 39.4387}, 1.2644},
    {{63.0109, -31.0961, -5.8663}, {62.8187, -29.7946, -4.0864}, 1.2630},
    {{61.2901, 3.7196, -5.3901}, {61.4292, 2.2480, -4.9620}, 1.8731},
    {{35.0831, -44.1164, 3.7933}, {35.0232, -40.0716, 1.5901}, 1.8645},
    {{22.7233, 20.0904, -46.6940}, {23.0331, 14.9730, -42.5619}, 2.0373},
    {{36.4612, 47.8580, 18.3852}, {36.2715, 50.5065, 21.2231}, 1.4146},
    {{90.8027, -2.0831, 1.4410}, {91.1528, -1.6435, 0.0447}, 1.4441},
    {{90.9257, -0.5406, -0.9208}, {88.6381, -0.8985, -0.7239}, 1.5381},
    {{6.7747, -0.2908, -2.4247}, {5.8714, -0.0985, -2.2286}, 0.6377},
    {{2.0776, 0.0795, -1.1350}, {0.9033, -0.0636, -0.5514}, 0.9082},
}};

TEST(ColorDifference, is_as_published) {
  for (const Pair& pair : Published)
    EXPECT_NEAR(ColorDifference(pair.one, pair.other), pair.difference, 0.00005)
        << "pair " << (&pair - Published.data()) + 1;
}

LabColor Lab(ColorModel model, std::vector<double> components) {
  const auto lab = LabOf({.model = model, .components = std::move(components)});
  EXPECT_TRUE(lab);
  return lab.value_or(LabColor{});
}

// sRGB red is 54.29, 80.80, 69.89 under D50, as colorimetry's tables have it.
TEST(LabOf, red_is_that_of_srgb) {
  const LabColor red = Lab(ColorModel::Rgb, {1, 0, 0});
  EXPECT_NEAR(red.lightness, 54.29, 0.05);
  EXPECT_NEAR(red.a, 80.80, 0.2);
  EXPECT_NEAR(red.b, 69.89, 0.2);
}

TEST(LabOf, grey_white_and_paper_have_no_tint) {
  EXPECT_NEAR(ColorDifference(Lab(ColorModel::Gray, {1}), {100, 0, 0}), 0, 0.05);
  EXPECT_NEAR(ColorDifference(Lab(ColorModel::Gray, {0}), {0, 0, 0}), 0, 0.05);
  EXPECT_NEAR(ColorDifference(Lab(ColorModel::Cmyk, {0, 0, 0, 0}), {100, 0, 0}), 0, 0.05);
}

TEST(LabOf, components_out_of_range_count_as_the_nearest) {
  EXPECT_EQ(ColorDifference(Lab(ColorModel::Rgb, {2, -1, 0}), Lab(ColorModel::Rgb, {1, 0, 0})), 0);
}

TEST(LabOf, cmyk_is_near_the_profile_that_its_overprints_come_from) {
  cmsHPROFILE cmyk =
      cmsOpenProfileFromFile("/usr/share/color/icc/ghostscript/default_cmyk.icc", "r");
  if (cmyk == nullptr) GTEST_SKIP() << "Ghostscript's profiles are not installed";
  cmsHPROFILE lab = cmsCreateLab4Profile(nullptr);
  cmsHTRANSFORM transform = cmsCreateTransform(cmyk, TYPE_CMYK_DBL, lab, TYPE_Lab_DBL,
                                               INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);
  double sum = 0;
  double greatest = 0;
  for (int i = 0; i < 1296; ++i) {
    const std::array<double, 4> inks{i % 6 / 5.0, i / 6 % 6 / 5.0, i / 36 % 6 / 5.0, i / 216 / 5.0};
    const std::array<double, 4> percent{inks[0] * 100, inks[1] * 100, inks[2] * 100, inks[3] * 100};
    cmsCIELab wanted{};
    cmsDoTransform(transform, percent.data(), &wanted, 1);
    const double apart = ColorDifference(Lab(ColorModel::Cmyk, {inks.begin(), inks.end()}),
                                         {wanted.L, wanted.a, wanted.b});
    sum += apart;
    greatest = std::max(greatest, apart);
  }
  cmsDeleteTransform(transform);
  cmsCloseProfile(lab);
  cmsCloseProfile(cmyk);
  // The figures of the format's page.
  EXPECT_LE(sum / 1296, 1.95);
  EXPECT_LE(greatest, 5.05);
}

}  // namespace
}  // namespace rastrel::cutting
