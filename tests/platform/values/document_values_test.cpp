#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/poly_reference.h"
#include "rastrel/platform/values/smart_double.h"
#include "rastrel/platform/values/tm.h"
#include "rastrel/platform/values/world.h"

namespace {

TEST(SmartDouble, compares_truncated_thousandths_after_one_half_was_added) {
  EXPECT_EQ(SmartDouble(2.0), SmartDouble(2.0004));
  EXPECT_FALSE(SmartDouble(2.0) == SmartDouble(2.0006));
  // 2.0005 * 1000 + 0.5 is 2001 in doubles: the half has reached the next thousandth.
  EXPECT_FALSE(SmartDouble(2.0) == SmartDouble(2.0005));
  EXPECT_EQ(SmartDouble(2.0005), SmartDouble(2.0014));
}

TEST(SmartDouble, truncates_negative_values_toward_zero) {
  // -0.4 and 0.4 thousandths become 0.1 and 0.9, which both truncate to 0; so do -1.4 thousandths.
  EXPECT_EQ(SmartDouble(-0.0004), SmartDouble(0.0004));
  EXPECT_EQ(SmartDouble(-0.0014), SmartDouble(0.0));
  EXPECT_FALSE(SmartDouble(-0.0016) == SmartDouble(0.0));
}

TEST(SmartDouble, values_that_no_whole_number_holds_equal_each_other_and_nothing_else) {
  const double infinite = std::numeric_limits<double>::infinity();
  EXPECT_EQ(SmartDouble(1e300), SmartDouble(infinite));
  EXPECT_EQ(SmartDouble(-infinite), SmartDouble(std::nan("")));
  EXPECT_FALSE(SmartDouble(std::nan("")) == SmartDouble(0));
}

TEST(SmartDouble, counts_the_decimals_that_it_was_given) {
  EXPECT_FALSE(SmartDouble(1.04, 1) == SmartDouble(1.06, 1));
  EXPECT_EQ(SmartDouble(1.04, 1), SmartDouble(0.96, 1));
  EXPECT_EQ(SmartDouble(1.4, 0), SmartDouble(0.6, 0));
}

TEST(WorldUnits, an_inch_is_a_thousand_text_units_and_the_division_comes_first) {
  EXPECT_EQ(rastrel::host::TextFromWorld(2.54), 1000.0);
  EXPECT_EQ(rastrel::host::TextFromWorld(10.16), 10.16 / 2.54 * 1000.0);
}

TEST(LineStyleHairline, is_twice_the_smallest_normal_double) {
  EXPECT_EQ(LineStyleHairline, 2 * std::numeric_limits<double>::min());
}

TEST(DBTranslateBounds, gives_the_smallest_upright_rectangle_round_the_mapped_one) {
  const BOUNDS unit{.xmin = 0, .xmax = 2, .ymin = 0, .ymax = 1};
  EXPECT_EQ(DBTranslateBounds(unit, TM()), unit);
  const TM quarterTurn{.a = 0, .b = 1, .c = -1, .d = 0, .tx = 10, .ty = 20};
  EXPECT_EQ(DBTranslateBounds(unit, quarterTurn),
            (BOUNDS{.xmin = 9, .xmax = 10, .ymin = 20, .ymax = 22}));
  const TM mirrored{.a = -3, .b = 0, .c = 0, .d = 1, .tx = 0, .ty = 0};
  EXPECT_EQ(DBTranslateBounds(unit, mirrored),
            (BOUNDS{.xmin = -6, .xmax = 0, .ymin = 0, .ymax = 1}));
}

TEST(GetTmFromBounds, maps_one_rectangle_onto_the_other) {
  const BOUNDS source{.xmin = 1, .xmax = 3, .ymin = 2, .ymax = 3};
  const BOUNDS target{.xmin = 10, .xmax = 14, .ymin = 0, .ymax = 4};
  TM matrix;
  GetTmFromBounds(source, target, matrix);
  EXPECT_EQ(matrix, (TM{.a = 2, .b = 0, .c = 0, .d = 4, .tx = 8, .ty = -8}));
  EXPECT_EQ(DBTranslateBounds(source, matrix), target);
}

TEST(GetTmFromBounds, does_not_scale_a_line_across_itself) {
  const BOUNDS line{.xmin = 1, .xmax = 1, .ymin = 0, .ymax = 2};
  TM matrix;
  GetTmFromBounds(line, {.xmin = 5, .xmax = 9, .ymin = 0, .ymax = 1}, matrix);
  EXPECT_EQ(matrix, (TM{.a = 1, .b = 0, .c = 0, .d = 0.5, .tx = 4, .ty = 0}));
}

/// Counts its ends.
class Counted : public PolyBaseClass2 {
 public:
  explicit Counted(int& ends) : m_Ends(ends) {}
  ~Counted() override { ++m_Ends; }
  Counted(const Counted&) = default;
  Counted& operator=(const Counted&) = delete;

 private:
  int& m_Ends;
};

TEST(PolyReference, ends_the_object_when_the_last_reference_goes) {
  int ends = 0;
  {
    const PolyReference<Counted> first(new Counted(ends));
    PolyReference<Counted> second = first;
    EXPECT_EQ(first->GetReferenceCount(), 2);
    second = PolyReference<Counted>();
    EXPECT_EQ(first->GetReferenceCount(), 1);
    EXPECT_EQ(ends, 0);
  }
  EXPECT_EQ(ends, 1);
}

TEST(PolyBaseClass2, a_copy_begins_without_references) {
  int ends = 0;
  {
    const PolyReference<Counted> original(new Counted(ends));
    const Counted copy = *original;
    EXPECT_EQ(copy.GetReferenceCount(), 0);
  }
  EXPECT_EQ(ends, 2);
}

}  // namespace
