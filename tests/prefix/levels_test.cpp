#include "rastrel/prefix/levels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "rastrel/platform/os/path.h"

namespace {

using namespace rastrel::prefix;

CLevelsData Levels(double low, double gamma, double high) {
  CLevelsData levels;
  levels.Low = low;
  levels.Gamma = gamma;
  levels.High = high;
  return levels;
}

// One entry, computed as the format's page says, one operation a line.
std::uint32_t LiteralEntry(const CLevelsData& levels, int i) {
  const double range = levels.High - levels.Low;
  const double exponent = 1.0 / levels.Gamma;
  double t = i * 0.00390625;
  t = t / 255.0;
  double u = range * t;
  u = u + levels.Low;
  u = u / 255.0;
  double s = std::pow(u, exponent);
  s = s * 255.0;
  if (std::isnan(s)) return 0;
  if (s < 0.0) s = 0.0;
  if (s > 255.0) s = 255.0;
  return static_cast<std::uint32_t>(std::trunc(s * 256.0));
}

// The format's page, for each number that an entry can be: "%2.2x". Made once, since a
// table of entries is made very often here.
const std::wstring& LiteralDigits(std::uint32_t entry) {
  static const std::vector<std::wstring> all = [] {
    std::vector<std::wstring> texts;
    for (unsigned number = 0; number <= 255U * 256U; ++number) {
      char text[16];
      const int length = std::snprintf(text, sizeof text, "%2.2x", number);
      texts.emplace_back(text, text + length);
    }
    return texts;
  }();
  return all.at(entry);
}

std::wstring LiteralTable(const CLevelsData& levels) {
  std::wstring table;
  table.reserve(1100);
  for (int i = 0; i < 256; ++i) {
    table += LiteralDigits(LiteralEntry(levels, i));
    if ((i + 1) % 32 == 0) table += L'\n';
  }
  return table;
}

// Settings of every kind: in the range of the scale, whole, far out, and the numbers at which the
// arithmetic does something special.
class RandomLevels {
 public:
  explicit RandomLevels(unsigned seed) : m_Random(seed) {}

  CLevelsData Next() { return Levels(End(0.0), Gamma(), End(255.0)); }

 private:
  double Between(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(m_Random);
  }
  unsigned Below(unsigned limit) { return static_cast<unsigned>(m_Random() % limit); }
  double End(double usual) {
    switch (Below(8)) {
      case 0: return usual;
      case 1:
      case 2: return std::floor(Between(0.0, 256.0));
      case 3: return Between(-300.0, 600.0);
      case 4: return Between(-1e6, 1e6);
      case 5: return Special();
      default: return Between(0.0, 255.0);
    }
  }
  double Gamma() {
    switch (Below(8)) {
      case 0: return 1.0;
      case 1: return static_cast<double>(Below(10)) / 2.0;
      case 2: return Between(-10.0, 10.0);
      case 3: return Special();
      default: return Between(0.05, 5.0);
    }
  }
  double Special() {
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    constexpr double Numbers[] = {0.0,  -0.0,     1.0,       -1.0,   0.5,
                                  1e-9, -1e300,   1e300,     255.0,  65280.0,
                                  3.0,  Infinity, -Infinity, 5e-324, std::nan("")};
    return Numbers[Below(std::size(Numbers))];
  }

  std::mt19937_64 m_Random;
};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int UsualSettings = 50'000;
#else
constexpr int UsualSettings = 1'000'000;
#endif

// The settings are tried in parts, which a test run may spread over processors.
class RandomLevelsTable : public ::testing::TestWithParam<int> {
 protected:
  static constexpr int Parts = 5;

  // How many settings a part tries; all parts as many as RASTREL_TEST_LEVELS says, or the usual.
  static int SettingCount() {
    const std::string asked = rastrel::os::EnvironmentValue("RASTREL_TEST_LEVELS");
    return (asked.empty() ? UsualSettings : std::atoi(asked.c_str())) / Parts;
  }
};

TEST_P(RandomLevelsTable, is_the_literal_evaluation_to_the_last_digit) {
  const int count = SettingCount();
  ASSERT_LT(0, count);
  RandomLevels random(20261121 + static_cast<unsigned>(GetParam()));
  int different = 0;
  for (int index = 0; index < count && different < 5; ++index) {
    const CLevelsData levels = random.Next();
    if (LiteralTable(levels) == LevelsTable(levels)) continue;
    ++different;
    ADD_FAILURE() << "Low " << levels.Low << ", Gamma " << levels.Gamma << ", High " << levels.High;
  }
}

INSTANTIATE_TEST_SUITE_P(, RandomLevelsTable, ::testing::Range(0, 5));

// The entries as numbers, for those in the middle of a table.
std::vector<std::uint32_t> EntriesOf(const CLevelsData& levels) {
  std::vector<std::uint32_t> entries;
  for (int i = 0; i < 256; ++i) entries.push_back(LiteralEntry(levels, i));
  return entries;
}

TEST(LevelsTable, has_the_entries_of_the_worked_examples) {
  struct Row {
    CLevelsData levels;
    std::uint32_t at0, at1, at128, at255;
  };
  const Row rows[] = {
      {Levels(0.0, 1.0, 255.0), 0x00, 0x01, 0x80, 0xff},
      {Levels(0.0, 1.0, 128.0), 0x00, 0x00, 0x40, 0x80},
      {Levels(10.0, 1.0, 255.0), 0xa00, 0xa00, 0xa7a, 0xaf5},
      {Levels(0.0, 2.0, 255.0), 0x00, 0xff, 0xb4a, 0xff0},
      // Of more than 255 parts there are 255, and not up to 256.
      {Levels(255.5, 1.0, 255.5), 0xff00, 0xff00, 0xff00, 0xff00},
  };
  for (const Row& row : rows) {
    const auto entries = EntriesOf(row.levels);
    EXPECT_EQ(row.at0, entries[0]);
    EXPECT_EQ(row.at1, entries[1]);
    EXPECT_EQ(row.at128, entries[128]);
    EXPECT_EQ(row.at255, entries[255]);
    EXPECT_EQ(LiteralTable(row.levels), LevelsTable(row.levels));
  }
}

TEST(LevelsTable, begins_and_ends_as_the_worked_examples_say) {
  EXPECT_TRUE(LevelsTable(Levels(0.0, 1.0, 128.0)).starts_with(L"0000"));
  EXPECT_TRUE(LevelsTable(Levels(0.0, 1.0, 128.0)).ends_with(L"80\n"));
  EXPECT_TRUE(LevelsTable(Levels(10.0, 1.0, 255.0)).starts_with(L"a00a00"));
  EXPECT_TRUE(LevelsTable(Levels(10.0, 1.0, 255.0)).ends_with(L"af5\n"));
  EXPECT_TRUE(LevelsTable(Levels(0.0, 2.0, 255.0)).starts_with(L"00ff"));
  EXPECT_TRUE(LevelsTable(Levels(0.0, 2.0, 255.0)).ends_with(L"ff0\n"));
}

TEST(LevelsTable, the_defaults_count_from_00_to_ff_in_eight_lines) {
  std::wstring counted;
  for (int i = 0; i < 256; ++i) {
    counted += L"0123456789abcdef"[i / 16];
    counted += L"0123456789abcdef"[i % 16];
    if (i % 32 == 31) counted += L'\n';
  }
  const std::wstring table = LevelsTable(CLevelsData());
  EXPECT_EQ(counted, table);
  EXPECT_EQ(8 * 64 + 8U, table.size());
  EXPECT_EQ(std::count(table.begin(), table.end(), L'\n'), 8);
}

TEST(LevelsTable, gamma_0_makes_all_below_one_nothing_and_all_above_the_most) {
  // The exponent is infinite: 0.5 goes to 0, 1 stays 1, and 2 goes beyond the scale.
  std::wstring zeros;
  for (int line = 0; line < 8; ++line) zeros += std::wstring(64, L'0') + L'\n';
  EXPECT_EQ(zeros, LevelsTable(Levels(0.0, 0.0, 255.0)));
  std::wstring most;
  for (int i = 0; i < 256; ++i) most += i % 32 == 31 ? L"ff00\n" : L"ff00";
  EXPECT_EQ(most, LevelsTable(Levels(255.0, 0.0, 255.0)));
  EXPECT_EQ(most, LevelsTable(Levels(510.0, 0.0, 510.0)));
}

TEST(LevelsTable, no_entry_has_more_than_four_digits) {
  RandomLevels random(7);
  for (int index = 0; index < 500; ++index) {
    const std::wstring table = LevelsTable(random.Next());
    EXPECT_LE(512U + 8, table.size());
    EXPECT_GE(1024U + 8, table.size());
    EXPECT_EQ(std::count(table.begin(), table.end(), L'\n'), 8);
  }
}

// The table that a section defines for a color.
std::wstring TableIn(const std::wstring& section, const std::wstring& color) {
  const std::wstring head = L"/" + color + L"extratransfertable <\n";
  const std::size_t begin = section.find(head) + head.size();
  return section.substr(begin, section.find(L'>', begin) - begin);
}

CJobData FiveDifferentLevels(bool linked) {
  CJobData settings;
  settings.LevelsEnabled = true;
  settings.LevelsLinked = linked;
  for (std::size_t index = 0; index < settings.Levels.size(); ++index)
    settings.Levels[index] = Levels(static_cast<double>(index), 1.0, 200.0);
  return settings;
}

TEST(LevelsSection, linked_levels_make_four_equal_tables_of_the_master) {
  CJobData settings = FiveDifferentLevels(true);
  const std::wstring section = LevelsSection(settings);
  for (const wchar_t* const color : {L"red", L"green", L"blue", L"gray"})
    EXPECT_EQ(LiteralTable(settings.Levels[0]), TableIn(section, color));
  for (std::size_t index = 1; index < 5; ++index) settings.Levels[index] = CLevelsData();
  EXPECT_EQ(section, LevelsSection(settings));
}

TEST(LevelsSection, unlinked_levels_make_each_table_of_its_own_entry) {
  CJobData settings = FiveDifferentLevels(false);
  const std::wstring section = LevelsSection(settings);
  std::size_t index = 0;
  for (const wchar_t* const color : {L"red", L"green", L"blue", L"gray"})
    EXPECT_EQ(LiteralTable(settings.Levels[++index]), TableIn(section, color));
  settings.Levels[0] = Levels(99.0, 3.0, 100.0);
  EXPECT_EQ(section, LevelsSection(settings));
}

TEST(LevelsSection, the_extra_planes_stand_in_the_branch_of_six_colors_alone) {
  const std::wstring section = LevelsSection(CJobData());
  const std::size_t other = section.find(L"    } {\n");
  ASSERT_NE(std::wstring::npos, other);
  for (const wchar_t* const plane : {L" hex1transfertable ", L" hex2transfertable ",
                                     L" hex1imagetransfertable ", L" hex2imagetransfertable "}) {
    const std::size_t at = section.find(plane);
    EXPECT_GT(other, at) << std::wstring(plane);
    EXPECT_EQ(std::wstring::npos, section.find(plane, at + 1));
  }
}

}  // namespace
