#include <gtest/gtest.h>

#include <string>

#include "rastrel/job/job_file.h"
#include "tests/support/archive_bytes.h"

namespace {

using rastrel::test::Bytes;
using rastrel::test::Hex;
using rastrel::test::Joined;
using rastrel::test::Loaded;
using rastrel::test::Stored;

// The bytes before the characters, by the number of characters.
struct Row {
  std::size_t length;
  const char* tagged;
  const char* untagged;
};

const Row Rows[] = {
    {0, "FF FE FF 00", "00"},
    {1, "FF FE FF 01", "01"},
    {254, "FF FE FF FE", "FE"},
    {255, "FF FE FF FF FF 00", "FF FF 00"},
    {256, "FF FE FF FF 00 01", "FF 00 01"},
    {0xFFFD, "FF FE FF FF FD FF", "FF FD FF"},
    {0xFFFE, "FF FE FF FF FF FF FE FF 00 00", "FF FF FF FE FF 00 00"},
    {0xFFFF, "FF FE FF FF FF FF FF FF 00 00", "FF FF FF FF FF 00 00"},
    {0x10000, "FF FE FF FF FF FF 00 00 01 00", "FF FF FF 00 00 01 00"},
    {200'000, "FF FE FF FF FF FF 40 0D 03 00", "FF FF FF 40 0D 03 00"},
};

const Bytes Version = Hex("01 00 00 00");

TEST(WideTextInRecords, every_form_of_the_length_is_written_and_read) {
  for (const Row& row : Rows) {
    CJTSFile file;
    file.FileName = std::wstring(row.length, L'\u20ac');
    Bytes characters;
    for (std::size_t index = 0; index < row.length; ++index) {
      characters.push_back(0xAC);
      characters.push_back(0x20);
    }
    const Bytes expected = Joined({Version, Hex(row.tagged), characters});
    EXPECT_EQ(expected, Stored([&](CArchive& archive) { file.Serialize(archive); })) << row.length;
    CJTSFile loaded;
    EXPECT_TRUE(Loaded(expected, [&](CArchive& archive) { loaded.Serialize(archive); }).empty());
    EXPECT_EQ(file.FileName, loaded.FileName);
  }
}

TEST(WideTextInRecords, text_without_the_tag_has_one_byte_a_character) {
  for (const Row& row : Rows) {
    const Bytes bytes = Joined({Version, Hex(row.untagged), Bytes(row.length, 0x80)});
    CJTSFile file;
    EXPECT_TRUE(Loaded(bytes, [&](CArchive& archive) { file.Serialize(archive); }).empty());
    EXPECT_EQ(file.FileName, std::wstring(row.length, L'\u20ac'));  // 80 is the euro sign there
  }
}

TEST(WideTextInRecords, characters_beyond_the_first_plane_count_twice) {
  CJTSFile file;
  file.FileName = L"\U0001F5A8";  // a printer: D83D DDA8
  const Bytes expected = Joined({Version, Hex("FF FE FF 02 3D D8 A8 DD")});
  EXPECT_EQ(expected, Stored([&](CArchive& archive) { file.Serialize(archive); }));
  CJTSFile loaded;
  Loaded(expected, [&](CArchive& archive) { loaded.Serialize(archive); });
  EXPECT_EQ(file.FileName, loaded.FileName);
}

TEST(WideTextInRecords, a_length_that_lies_raises_and_takes_no_memory_for_it) {
  CJTSFile file;
  file.FileName = L"old";
  const Bytes bytes = Joined({Version, Hex("FF FE FF FF FF FF FF FF FF FF 41 00")});
  EXPECT_THROW(Loaded(bytes, [&](CArchive& archive) { file.Serialize(archive); }),
               CArchiveException);
  EXPECT_EQ(file.FileName, L"old");
}

}  // namespace
