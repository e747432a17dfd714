#include "rastrel/platform/host/length_units.h"

#include <gtest/gtest.h>

#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/host.h"
#include "tests/support/bare_document.h"
#include "tests/support/test_host.h"

namespace rastrel::host {
namespace {

class UnitApplication : public test::BareApplication {
 public:
  [[nodiscard]] int GetCurrentUnits() override { return m_Number; }
  int m_Number = 0;
};

class UnitHost : public test::TestHost {
 public:
  [[nodiscard]] Application* GetApplication() override { return m_Application; }
  Application* m_Application = nullptr;
};

TEST(LengthUnits, of_a_host_without_an_application_are_centimetres) {
  UnitHost host;
  EXPECT_EQ(CurrentLengthUnit(), LengthUnit::Centimetres);
}

TEST(LengthUnits, are_the_host_s_and_centimetres_for_a_number_of_no_unit) {
  UnitApplication application;
  UnitHost host;
  host.m_Application = &application;
  const struct {
    int number;
    LengthUnit unit;
  } rows[] = {{0, LengthUnit::Centimetres},
              {1, LengthUnit::Millimetres},
              {2, LengthUnit::Inches},
              {3, LengthUnit::Centimetres},
              {-1, LengthUnit::Centimetres}};
  for (const auto& row : rows) {
    application.m_Number = row.number;
    EXPECT_EQ(CurrentLengthUnit(), row.unit) << row.number;
  }
}

TEST(LengthUnits, are_turned_both_ways) {
  EXPECT_DOUBLE_EQ(FromCentimetres(5.08, LengthUnit::Centimetres), 5.08);
  EXPECT_DOUBLE_EQ(FromCentimetres(5.08, LengthUnit::Millimetres), 50.8);
  EXPECT_DOUBLE_EQ(FromCentimetres(5.08, LengthUnit::Inches), 2);
  EXPECT_DOUBLE_EQ(ToCentimetres(5.08, LengthUnit::Centimetres), 5.08);
  EXPECT_DOUBLE_EQ(ToCentimetres(50.8, LengthUnit::Millimetres), 5.08);
  EXPECT_DOUBLE_EQ(ToCentimetres(2, LengthUnit::Inches), 5.08);
}

}  // namespace
}  // namespace rastrel::host
