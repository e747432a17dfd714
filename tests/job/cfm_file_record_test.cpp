#include <gtest/gtest.h>

#include <string>

#include "rastrel/job/cfm_file.h"
#include "tests/support/archive_bytes.h"

namespace {

using rastrel::test::Bytes;
using rastrel::test::Hex;
using rastrel::test::Loaded;
using rastrel::test::Stored;

// Written and read under another base directory.
std::wstring RoundTrip(const std::wstring& directory) {
  CCFMFile file;
  file.AddEntry(directory, L"page");
  const Bytes bytes = Stored([&](CArchive& archive) { archive << file; });
  CCFMFile loaded;
  loaded.BaseDirectory = L"E:\\spool";
  Loaded(bytes, [&](CArchive& archive) { archive >> loaded; });
  return loaded.Entries.at(0).Directory;
}

TEST(CfmFileRecord, a_directory_follows_the_base_directory_of_the_loading_machine) {
  struct Row {
    const wchar_t *saved, *loaded;
  };
  const Row rows[] = {
      {L"D:\\q\\rip\\CFM\\job.cfm\\", L"E:\\spool\\job.cfm\\"},
      {L"D:\\q\\rip\\CFM\\job.cfm", L"E:\\spool\\job.cfm"},
      {L"/q/rip/CFM/job.cfm/", L"E:\\spool\\job.cfm/"},
      {L"\\\\server\\CFM\\job.cfm\\", L"E:\\spool\\job.cfm\\"},
      {L"D:\\job.cfm\\", L"E:\\spool\\job.cfm\\"},
      {L"D:job.cfm\\", L"E:\\spool\\job.cfm\\"},
      // Without a parent all of it is stored.
      {L"job.cfm\\", L"E:\\spool\\job.cfm\\"},
      {L"default", L"E:\\spool\\default"},
      {L"\\", L"E:\\spool\\\\"},
      {L"", L"E:\\spool\\"},
      // The parents go once, at the front.
      {L"a\\a\\b\\", L"E:\\spool\\b\\"},
      {L"x\\xx\\x\\", L"E:\\spool\\x\\"},
      {L"D:\\100%\\%s\\", L"E:\\spool\\%s\\"},
  };
  for (const Row& row : rows) EXPECT_EQ(row.loaded, RoundTrip(row.saved));
}

TEST(CfmFileRecord, is_written_byte_for_byte) {
  CCFMFile file;
  file.TotalSize = -2;
  file.AddEntry(L"D:\\q\\job.cfm\\", L"\u20ac");
  file.AddEntry(L"", L"");
  EXPECT_EQ(Hex("01 00 00 00 "
                "FE FF FF FF FF FF FF FF "
                "02 00 00 00 "
                "08 00 00 00 6A 6F 62 2E 63 66 6D 5C "
                "03 00 00 00 E2 82 AC "
                "00 00 00 00 "
                "00 00 00 00"),
            Stored([&](CArchive& archive) { archive << file; }));
}

TEST(CfmFileRecord, the_version_is_not_looked_at) {
  CCFMFile file;
  Loaded(Hex("FF FF FF FF 05 00 00 00 00 00 00 00 00 00 00 00"),
         [&](CArchive& archive) { archive >> file; });
  EXPECT_EQ(file.TotalSize, 5);
  EXPECT_TRUE(file.Entries.empty());
}

TEST(CfmFileRecord, reading_appends) {
  CCFMFile file;
  file.AddEntry(L"first", L"1");
  CCFMFile saved;
  saved.AddEntry(L"C:\\second\\", L"2");
  const Bytes bytes = Stored([&](CArchive& archive) { archive << saved; });
  Loaded(bytes, [&](CArchive& archive) { archive >> file; });
  ASSERT_EQ(file.Entries.size(), 2U);
  EXPECT_EQ(file.Entries[0].Directory, L"first");
  EXPECT_EQ(file.Entries[1].Directory, L"\\second\\");
}

TEST(CfmFileRecord, a_record_cut_at_any_byte_raises_and_keeps_whole_entries) {
  CCFMFile saved;
  saved.TotalSize = 1;
  saved.AddEntry(L"C:\\a\\", L"1");
  saved.AddEntry(L"C:\\b\\", L"2");
  const Bytes whole = Stored([&](CArchive& archive) { archive << saved; });
  ASSERT_EQ(16U + 2 * (4 + 2 + 4 + 1), whole.size());
  for (std::size_t length = 0; length < whole.size(); ++length) {
    CCFMFile file;
    const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_THROW(Loaded(part, [&](CArchive& archive) { archive >> file; }), CArchiveException);
    EXPECT_EQ(length >= 12 ? 1 : 0, file.TotalSize);
    EXPECT_EQ(length >= 27 ? 1U : 0U, file.Entries.size());
  }
}

TEST(CfmFileRecord, a_count_and_a_length_that_lie_end_with_the_stream) {
  CCFMFile file;
  EXPECT_THROW(
      Loaded(Hex("01 00 00 00 00 00 00 00 00 00 00 00 FF FF FF FF 00 00 00 00 00 00 00 00"),
             [&](CArchive& archive) { archive >> file; }),
      CArchiveException);
  EXPECT_EQ(file.Entries.size(), 1U);
  EXPECT_THROW(Loaded(Hex("01 00 00 00 00 00 00 00 00 00 00 00 01 00 00 00 FF FF FF FF 41"),
                      [&](CArchive& archive) { archive >> file; }),
               CArchiveException);
  EXPECT_EQ(file.Entries.size(), 1U);
}

TEST(CfmFileRecord, a_copy_is_deep_and_leaves_the_base_directory) {
  CCFMFile file;
  file.AddEntry(L"a", L"1");
  file.TotalSize = 5;
  file.BaseDirectory = L"theirs";
  CCFMFile target;
  target.AddEntry(L"gone", L"gone");
  target.BaseDirectory = L"ours";
  target = file;
  file.Entries[0].Directory = L"changed";
  ASSERT_EQ(target.Entries.size(), 1U);
  EXPECT_EQ(target.Entries[0].Directory, L"a");
  EXPECT_EQ(target.TotalSize, 5);
  EXPECT_EQ(target.BaseDirectory, L"ours");
  const CCFMFile copy(file);
  EXPECT_EQ(copy.Entries.at(0).Directory, L"changed");
  EXPECT_EQ(copy.BaseDirectory, L"");
}

TEST(CfmFileRecord, adding_an_entry_leaves_the_size_as_it_is) {
  CCFMFile file;
  file.TotalSize = 5;
  file.AddEntry(L"a", L"1");
  EXPECT_EQ(file.TotalSize, 5);
}

}  // namespace
