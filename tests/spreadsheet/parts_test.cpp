#include "spreadsheet/parts.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

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

// Its parts say that they are large. "endless" begins as a document and comes to an end only when
// nobody wants more of it, or after a while; "large" is one whole document.
class LargePackage : public Package {
 public:
  explicit LargePackage(std::atomic<int>& ends) : Package("large"), m_Ends(ends) {}
  [[nodiscard]] std::string Find(const std::string& part) const override { return part; }
  [[nodiscard]] std::uint64_t SizeOf(const std::string&) const override {
    return Parts::WholeBytes + 1;
  }
  void Unpack(const std::string& part, const std::string& target,
              const UnpackProgress& progress) override {
    std::ofstream file(target, std::ios::binary);
    file << "<root>" << std::flush;
    const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    while (part == "endless" && std::chrono::steady_clock::now() < limit) {
      progress(6, SizeOf(part));
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    file << "</root>" << std::flush;
    progress(13, SizeOf(part));
    ++m_Ends;
  }

 private:
  std::atomic<int>& m_Ends;
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

TEST_F(PartsTest, stopping_leaves_the_rest_of_large_parts) {
  std::atomic<int> ends = 0;
  const ScratchDirectory directory;
  Parts parts(std::make_unique<LargePackage>(ends), directory.Path(), {});
  EXPECT_TRUE(parts.FetchAhead({"endless", "large"}));
  EXPECT_TRUE(parts.Stop());
  EXPECT_EQ(ends, 0);
  EXPECT_FALSE(LoadXmlFile(rastrel::os::FromNative(parts.PathOf("large"))));
}

TEST_F(PartsTest, a_large_part_is_left_when_its_reader_goes_on_to_the_next) {
  std::atomic<int> ends = 0;
  const ScratchDirectory directory;
  Parts parts(std::make_unique<LargePackage>(ends), directory.Path(), {});
  EXPECT_TRUE(parts.FetchAhead({"endless", "large"}));
  EXPECT_TRUE(LoadXmlFile(rastrel::os::FromNative(parts.PathOf("large"))));
  EXPECT_EQ(ends, 1);
}

TEST_F(PartsTest, stopping_still_finds_a_small_part_damaged) {
  EXPECT_TRUE(m_Parts.FetchAhead({"one", "broken"}));
  const auto stopped = m_Parts.Stop();
  ASSERT_FALSE(stopped);
  EXPECT_EQ(Describe(stopped.Error()), "slow: it is damaged");
}

TEST_F(PartsTest, parts_that_nobody_waits_for_are_left) {
  EXPECT_TRUE(m_Parts.FetchAhead({"one", "two", "three"}));
}
