#include "spreadsheet/parts.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <string>

#include "rastrel/platform/os/growing_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/xml/layer.h"
#include "spreadsheet/error.h"
#include "tests/support/library_fixture.h"
#include "tests/support/scratch_directory.h"

using rastrel::Describe;
using rastrel::FailureOf;
using rastrel::spreadsheet::Error;
using rastrel::spreadsheet::Package;
using rastrel::spreadsheet::Parts;
using rastrel::spreadsheet::UnpackProgress;
using rastrel::test::ScratchDirectory;

namespace {

// Its parts are documents of many pieces; "broken" fails in its middle, "missing" is not there.
class SlowPackage : public Package {
 public:
  SlowPackage() : Package("slow") {}
  [[nodiscard]] std::string Find(const std::string& part) const override {
    return part == "missing" ? "" : part;
  }
  [[nodiscard]] std::uint64_t SizeOf(const std::string&) const override { return 0; }
  void Unpack(const std::string& part, const std::string& target,
              const UnpackProgress& progress) override {
    std::ofstream file(target, std::ios::binary);
    file << "<root>";
    for (int piece = 0; piece < 500; ++piece) {
      if (part == "broken" && piece == 250) throw Error(FailureOf("slow: it is damaged"));
      file << "<item>" << std::string(1000, 'x') << "</item>" << std::flush;
      if (progress) progress(static_cast<std::uint64_t>(file.tellp()), 0);
    }
    file << "</root>";
  }
};

class PartsTest : public rastrel::test::LibraryTest {
 protected:
  std::size_t Items(const std::string& part) const {
    return ChildrenNamed(LoadXmlFile(rastrel::os::FromNative(m_Parts.PathOf(part))), L"item")
        .size();
  }
  ScratchDirectory m_Directory;
  Parts m_Parts{std::make_unique<SlowPackage>(), m_Directory.Path(), {}};
};

}  // namespace

TEST_F(PartsTest, parts_that_are_fetched_ahead_are_read_whole_while_they_are_unpacked) {
  EXPECT_TRUE(m_Parts.FetchAhead({"a/one", "missing", "", "a/two"}));
  EXPECT_EQ(Items("a/two"), 500U);
  EXPECT_EQ(Items("a/one"), 500U);
  EXPECT_TRUE(m_Parts.Settle());
  EXPECT_FALSE(m_Directory.Has("missing"));
}

TEST_F(PartsTest, another_part_is_fetched_when_the_ones_ahead_are_there) {
  EXPECT_TRUE(m_Parts.FetchAhead({"one"}));
  const auto fetched = m_Parts.Fetch("two");
  ASSERT_TRUE(fetched);
  EXPECT_EQ(*fetched, m_Parts.PathOf("two"));
  EXPECT_EQ(Items("two"), 500U);
  EXPECT_EQ(Items("one"), 500U);
}

TEST_F(PartsTest, a_part_that_fails_fails_for_its_reader_and_settling_says_why) {
  EXPECT_TRUE(m_Parts.FetchAhead({"broken", "behind"}));
  EXPECT_EQ(Items("broken"), 0U);
  EXPECT_EQ(Items("behind"), 0U);
  const auto settled = m_Parts.Settle();
  ASSERT_FALSE(settled);
  EXPECT_EQ(Describe(settled.Error()), "slow: it is damaged");
  EXPECT_TRUE(m_Parts.Settle());
}

TEST_F(PartsTest, a_discarded_part_goes_and_the_others_stay) {
  EXPECT_TRUE(m_Parts.FetchAhead({"one", "two"}));
  EXPECT_EQ(Items("one"), 500U);
  EXPECT_TRUE(m_Parts.Discard("one"));
  EXPECT_TRUE(m_Parts.Discard("missing"));
  EXPECT_TRUE(m_Parts.Settle());
  EXPECT_FALSE(m_Directory.Has("one"));
  EXPECT_EQ(Items("two"), 500U);
}

TEST_F(PartsTest, discarding_says_why_a_part_is_not_whole) {
  EXPECT_TRUE(m_Parts.FetchAhead({"broken"}));
  const auto discarded = m_Parts.Discard("broken");
  ASSERT_FALSE(discarded);
  EXPECT_EQ(Describe(discarded.Error()), "slow: it is damaged");
}

TEST_F(PartsTest, parts_that_nobody_waits_for_are_left) {
  EXPECT_TRUE(m_Parts.FetchAhead({"one", "two", "three"}));
}
