#include "rastrel/job/job_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/archive_bytes.h"
#include "tests/support/library_fixture.h"
#include "tests/support/private_member.h"

namespace {

using rastrel::test::Bytes;
using rastrel::test::Hex;
using rastrel::test::LibraryTest;
using rastrel::test::Loaded;
using rastrel::test::Stored;

class JobFile : public LibraryTest {};

CJTSFile FileOf(const std::wstring& directory, const std::wstring& name) {
  CJTSFile file;
  file.Directory = directory;
  file.FileName = name;
  return file;
}

Bytes RecordOf(const std::wstring& name) {
  CJTSFile file = FileOf(L"", name);
  return Stored([&](CArchive& archive) { file.Serialize(archive); });
}

TEST_F(JobFile, the_fields_stand_in_order) {
  const CJTSFile file;
  rastrel::test::ExpectInOrder({rastrel::test::PlaceOf(file.Directory),
                                rastrel::test::PlaceOf(file.FileName),
                                rastrel::test::PlaceOf(file.FullPath)});
}

TEST_F(JobFile, is_made_by_its_run_time_class) {
  const std::unique_ptr<CObject> file(CJTSFile::GetThisClass()->CreateObject());
  EXPECT_NE(dynamic_cast<CJTSFile*>(file.get()), nullptr);
  EXPECT_STREQ(file->GetRuntimeClass()->m_lpszClassName, "CJTSFile");
}

TEST_F(JobFile, the_full_path_is_joined_anew_at_every_use) {
  CJTSFile file = FileOf(L"C:\\a\\", L"b.ps");
  EXPECT_EQ(file.GetFullPath(), L"C:\\a\\b.ps");
  file.FullPath = L"not trusted";
  EXPECT_EQ(file.GetFullPath(), L"C:\\a\\b.ps");
  file.Directory = L"no separator";
  EXPECT_EQ(file.GetFullPath(), L"no separatorb.ps");
  EXPECT_EQ(file.FullPath, file.GetFullPath());
}

TEST_F(JobFile, percent_signs_of_a_path_stay) {
  CJTSFile file = FileOf(L"C:\\100%s\\", L"%d%%.ps");
  EXPECT_EQ(file.GetFullPath(), L"C:\\100%s\\%d%%.ps");
}

TEST_F(JobFile, set_defaults_empties_directory_and_name_and_keeps_the_cache) {
  CJTSFile file = FileOf(L"C:\\a\\", L"b.ps");
  file.GetFullPath();
  file.SetDefaults();
  EXPECT_EQ(file.Directory, L"");
  EXPECT_EQ(file.FileName, L"");
  EXPECT_EQ(file.FullPath, L"C:\\a\\b.ps");
  EXPECT_EQ(file.GetFullPath(), L"");
}

TEST_F(JobFile, the_size_is_that_of_the_file_and_0_without_one) {
  m_Library.Directory().Write("jobs/a.ps", "1234567");
  CJTSFile file = FileOf(m_Library.Directory().Wide() + L"\\jobs\\", L"a.ps");
  EXPECT_EQ(file.GetSize(), 7);
  EXPECT_EQ(m_Library.Directory().Wide() + L"\\jobs\\a.ps", file.FullPath);
  file.FileName = L"missing.ps";
  EXPECT_EQ(file.GetSize(), 0);
  EXPECT_EQ(FileOf(m_Library.Directory().Wide() + L"/", L"jobs").GetSize(), 0);
  EXPECT_EQ(FileOf(L"", L"").GetSize(), 0);
}

TEST_F(JobFile, a_size_beyond_32_bits_is_returned_whole) {
  m_Library.Directory().Write("large.ps", "");
  std::filesystem::resize_file(m_Library.Directory().Path("large.ps"), 5'000'000'000);
  EXPECT_EQ(FileOf(m_Library.Directory().Wide() + L"/", L"large.ps").GetSize(), 5'000'000'000);
}

TEST_F(JobFile, only_version_and_name_are_written) {
  CJTSFile file = FileOf(L"C:\\a\\", L"b.ps");
  EXPECT_EQ(Hex("01 00 00 00 FF FE FF 04 62 00 2E 00 70 00 73 00"),
            Stored([&](CArchive& archive) { file.Serialize(archive); }));
}

TEST_F(JobFile, reading_removes_the_directory_from_the_text) {
  struct Row {
    const wchar_t *stored, *directory, *name, *path;
  };
  const Row rows[] = {
      {L"b.ps", L"D:\\x\\", L"b.ps", L"D:\\x\\b.ps"},
      {L"C:\\a\\b.ps", L"C:\\a\\", L"b.ps", L"C:\\a\\b.ps"},
      {L"C:\\a\\b.ps", L"D:\\x\\", L"C:\\a\\b.ps", L"D:\\x\\C:\\a\\b.ps"},
      {L"C:\\a\\b.ps", L"", L"C:\\a\\b.ps", L"C:\\a\\b.ps"},
      {L"xxb.psxx", L"xx", L"b.ps", L"xxb.ps"},
      {L"xxx", L"xx", L"x", L"xxx"},
      {L"xyxyabab", L"xyab", L"xyab", L"xyabxyab"},  // text that closes up is not searched again
      {L"C:\\A\\b.ps", L"c:\\a\\", L"C:\\A\\b.ps", L"c:\\a\\C:\\A\\b.ps"},
      {L"", L"D:\\x\\", L"", L"D:\\x\\"},
  };
  for (const Row& row : rows) {
    CJTSFile file = FileOf(row.directory, L"old.ps");
    Loaded(RecordOf(row.stored), [&](CArchive& archive) { file.Serialize(archive); });
    EXPECT_EQ(row.name, file.FileName) << row.stored;
    EXPECT_EQ(row.path, file.FullPath);
    EXPECT_EQ(row.directory, file.Directory);
  }
}

TEST_F(JobFile, another_version_empties_the_name_and_reads_no_text) {
  CJTSFile file = FileOf(L"D:\\x\\", L"old.ps");
  const Bytes rest =
      Loaded(Hex("02 00 00 00 FF FE FF 00"), [&](CArchive& archive) { file.Serialize(archive); });
  EXPECT_EQ(Hex("FF FE FF 00"), rest);
  EXPECT_EQ(file.FileName, L"");
  EXPECT_EQ(file.FullPath, L"D:\\x\\");
}

TEST_F(JobFile, a_record_cut_at_any_byte_raises_and_keeps_the_name) {
  const Bytes whole = RecordOf(L"b.ps");
  for (std::size_t length = 0; length < whole.size(); ++length) {
    CJTSFile file = FileOf(L"D:\\x\\", L"old.ps");
    const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_THROW(Loaded(part, [&](CArchive& archive) { file.Serialize(archive); }),
                 CArchiveException);
    EXPECT_EQ(file.FileName, L"old.ps");
  }
}

}  // namespace
