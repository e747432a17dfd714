#include "rastrel/platform/os/dos_eps.h"

#include <gtest/gtest.h>

#include <string>

namespace rastrel::os {
namespace {

using namespace std::string_literals;

const std::string Head =
    "\xC5\xD0\xD3\xC6"
    "\x1E\0\0\0\x00\x01\0\0"
    "\x04\x03\x02\x81\xFF\xFF\xFF\xFF"
    "\0\0\0\0\x05\0\0\0\xFF\xFF"s;

TEST(DosEpsHead, has_three_parts_with_the_least_byte_first) {
  ASSERT_EQ(Head.size(), DosEpsHeadSize);
  const DosEpsHead head = ReadDosEpsHead(Head + "%!PS");
  EXPECT_EQ(head.postScript.place, 30U);
  EXPECT_EQ(head.postScript.size, 256U);
  EXPECT_EQ(head.metafile.place, 0x81020304U);
  EXPECT_EQ(head.metafile.size, 0xFFFFFFFFU);
  EXPECT_EQ(head.tiff.place, 0U);
  EXPECT_EQ(head.tiff.size, 5U);
}

TEST(DosEpsHead, of_a_file_that_ends_in_it_has_zeros_for_the_rest) {
  EXPECT_EQ(ReadDosEpsHead(Head.substr(0, 10)).postScript.size, 256U);
  EXPECT_EQ(ReadDosEpsHead(Head.substr(0, 9)).postScript.size, 0U);
  EXPECT_EQ(ReadDosEpsHead(Head.substr(0, 14)).metafile.place, 0x0304U);
  EXPECT_EQ(ReadDosEpsHead({}).tiff.size, 0U);
}

TEST(IsDosEps, is_known_by_its_first_four_bytes) {
  EXPECT_TRUE(IsDosEps(Head));
  EXPECT_TRUE(IsDosEps(Head.substr(0, 4)));
  EXPECT_FALSE(IsDosEps(Head.substr(0, 3)));
  EXPECT_FALSE(IsDosEps("%!PS" + Head));
}

}  // namespace
}  // namespace rastrel::os
