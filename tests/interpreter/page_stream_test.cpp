#include "interpreter/page_stream.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace rastrel::interpreter {
namespace {

// Keeps pages as text, one string a page: "width x height x channels: bytes".
class Collector : public PageReceiver {
 public:
  bool BeginPage(const PageSize& size) override {
    m_Text = std::to_string(size.width) + "x" + std::to_string(size.height) + "x" +
             std::to_string(size.channels) + ":";
    return size.width != m_Refused;
  }
  bool AddPixels(std::span<const std::byte> bytes) override {
    m_Text.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return true;
  }
  bool EndPage() override {
    m_Pages.push_back(m_Text);
    return true;
  }

  std::vector<std::string> m_Pages;
  unsigned m_Refused = 0;

 private:
  std::string m_Text;
};

bool Add(PageStream& stream, const std::string& text) {
  return stream.Add(std::as_bytes(std::span(text)));
}

const std::string TwoPages =
    "P6\n# Image of a device (of 10 20 30)\n2 1\n255\nABCDEF"
    "P5 3 2 255\nabc#e\n";
const std::vector<std::string> TwoPagesRead{"2x1x3:ABCDEF", "3x2x1:abc#e\n"};

TEST(PageStream, cuts_images_into_pages) {
  Collector collector;
  PageStream stream(collector);
  EXPECT_TRUE(Add(stream, TwoPages));
  EXPECT_TRUE(stream.Finish());
  EXPECT_EQ(collector.m_Pages, TwoPagesRead);
}

TEST(PageStream, does_not_depend_on_the_pieces) {
  for (std::size_t cut = 0; cut <= TwoPages.size(); ++cut) {
    Collector collector;
    PageStream stream(collector);
    EXPECT_TRUE(Add(stream, TwoPages.substr(0, cut)));
    EXPECT_TRUE(Add(stream, TwoPages.substr(cut)));
    EXPECT_TRUE(stream.Finish());
    EXPECT_EQ(collector.m_Pages, TwoPagesRead) << cut;
  }
}

TEST(PageStream, that_ends_within_a_page_says_so) {
  const std::size_t secondPage = TwoPages.find("P5");
  for (std::size_t cut = 1; cut < TwoPages.size(); ++cut) {
    Collector collector;
    PageStream stream(collector);
    ASSERT_TRUE(Add(stream, TwoPages.substr(0, cut)));
    EXPECT_EQ(stream.Finish(), cut == secondPage) << cut;
    EXPECT_EQ(stream.Reason().empty(), cut == secondPage) << cut;
  }
}

TEST(PageStream, of_nothing_has_no_page_and_no_fault) {
  Collector collector;
  PageStream stream(collector);
  EXPECT_TRUE(stream.Finish());
  EXPECT_TRUE(collector.m_Pages.empty());
}

TEST(PageStream, refuses_bytes_that_are_no_image) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"P4\n8 1\n255\n", "an image of another kind"},
      {"forged\n", "an image of another kind"},
      {"P6\n0 1\n255\n", "a bad width"},
      {"P6\n-3 1\n255\n", "a bad width"},
      {"P6\n99999999999999999999 1\n255\n", "a bad width"},
      {"P6\n1 1x\n255\n", "a bad height"},
      {"P6\n1 1\n65535\n", "samples of another depth"},
      {"P6\n#" + std::string(2000, 'x'), "an image's header is too long"},
      {std::string(2000, ' '), "an image's header is too long"},
  };
  for (const auto& [text, problem] : cases) {
    Collector collector;
    PageStream stream(collector);
    EXPECT_FALSE(Add(stream, text)) << text;
    EXPECT_EQ(stream.Reason(), problem) << text;
  }
}

TEST(PageStream, ends_without_a_reason_of_its_own_when_the_receiver_says_so) {
  Collector collector;
  collector.m_Refused = 3;
  PageStream stream(collector);
  EXPECT_FALSE(Add(stream, TwoPages));
  EXPECT_EQ(stream.Reason(), "");
  EXPECT_EQ(collector.m_Pages.size(), 1U);
}

TEST(PageStream, reports_how_much_of_the_page_has_come) {
  Collector collector;
  PageStream stream(collector);
  EXPECT_EQ(stream.PresentShare(), 0);
  EXPECT_TRUE(Add(stream, "P5 4 1 255\nabc"));
  EXPECT_EQ(stream.PresentShare(), 0.75);
  EXPECT_TRUE(Add(stream, "d"));
  EXPECT_EQ(stream.PresentShare(), 0);
}

}  // namespace
}  // namespace rastrel::interpreter
