#include "host/render/tiff_fields.h"

#include <gtest/gtest.h>

namespace rastrel::render {
namespace {

using namespace std::string_literals;

TEST(TiffNumber, has_the_least_byte_first) {
  std::string bytes;
  AppendTiffNumber(bytes, 0x01020304, 4);
  AppendTiffNumber(bytes, 0x0506, 2);
  AppendTiffNumber(bytes, 0x0708, 1);
  EXPECT_EQ(bytes, "\x04\x03\x02\x01\x06\x05\x08");
}

TEST(TiffRational, is_in_ten_thousandths_and_ends_at_the_largest) {
  std::string bytes;
  AppendTiffRational(bytes, 72.5);  // 725,000 is 0x0B1008
  EXPECT_EQ(bytes, "\x08\x10\x0B\0\x10\x27\0\0"s);
  bytes.clear();
  AppendTiffRational(bytes, 1e12);
  EXPECT_EQ(bytes, "\xFF\xFF\xFF\xFF\x10\x27\0\0"s);
}

TEST(TiffFields, follow_their_number_and_end_with_the_next_directory) {
  TiffFields fields;
  fields.Short(258, 8);
  fields.Long(256, 0x01020304);
  fields.Add(297, TiffType::Short, 2, 0x00030001);  // two short values: 1 and 3
  EXPECT_EQ(fields.Bytes(0x10),
            "\x03\0"
            "\x02\x01\x03\0\x01\0\0\0\x08\0\0\0"
            "\0\x01\x04\0\x01\0\0\0\x04\x03\x02\x01"
            "\x29\x01\x03\0\x02\0\0\0\x01\0\x03\0"
            "\x10\0\0\0"s);
  EXPECT_EQ(fields.Bytes(0).size(), TiffFields::Size(3));
}

}  // namespace
}  // namespace rastrel::render
