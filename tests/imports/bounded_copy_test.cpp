// The copy into fields of fixed size.

#include "rastrel/imports/bounded_copy.h"

#include <algorithm>
#include <array>

#include "tests/xml/xml_fixture.h"

namespace {

using rastrel::imports::BoundedCopy;

class BoundedCopyTest : public rastrel::test::XmlTest {
 protected:
  BoundedCopyTest() { m_Memory.fill(L'#'); }
  [[nodiscard]] std::span<wchar_t> Field() { return std::span(m_Memory).subspan(1, 4); }
  [[nodiscard]] bool NeighboursAreUntouched() const {
    return m_Memory.front() == L'#' && m_Memory.back() == L'#';
  }
  std::array<wchar_t, 6> m_Memory{};
};

TEST_F(BoundedCopyTest, a_text_that_leaves_room_for_the_terminator_fits) {
  for (const wchar_t* const value : {L"", L"ab", L"abc"}) {
    EXPECT_TRUE(BoundedCopy(Field(), value, L"NAME", L"a.xml"));
    EXPECT_STREQ(value, Field().data());
    EXPECT_TRUE(NeighboursAreUntouched());
  }
  EXPECT_EQ(Reason(), "");
}

TEST_F(BoundedCopyTest, a_text_that_does_not_fit_is_neither_cut_nor_written) {
  for (const wchar_t* const value : {L"abcd", L"abcde"}) {
    EXPECT_FALSE(BoundedCopy(Field(), value, L"NAME", L"a.xml"));
    EXPECT_STREQ(Field().data(), L"");
    EXPECT_TRUE(NeighboursAreUntouched());
  }
}

TEST_F(BoundedCopyTest, names_the_element_the_file_and_the_lengths) {
  const std::size_t mark = m_Library.LogMark();
  EXPECT_FALSE(BoundedCopy(Field(), L"abcdefg", L"NAME", L"a.xml"));
  const std::string expected =
      "a.xml: the value of NAME has 7 characters, and its field has room for 3";
  EXPECT_EQ("[XML] " + expected + "\r\n", m_Library.LogTextsBehind(mark));
  EXPECT_EQ(expected, Reason());
}

TEST_F(BoundedCopyTest, a_field_without_room_takes_nothing) {
  EXPECT_FALSE(BoundedCopy({}, L"", L"NAME", L"a.xml"));
  EXPECT_FALSE(BoundedCopy({}, L"x", L"NAME", L"a.xml"));
}

}  // namespace
