#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "rastrel/job/cfm_file.h"
#include "rastrel/platform/os/text.h"
#include "tests/support/library_fixture.h"
#include "tests/support/present_directory.h"
#include "tests/support/scratch_directory.h"
#include "tests/support/tree_snapshot.h"

namespace {

namespace fs = std::filesystem;
using rastrel::os::Utf8FromWide;
using rastrel::test::LibraryTest;
using rastrel::test::PresentDirectory;
using rastrel::test::ScratchDirectory;
using rastrel::test::TreeSnapshot;

class CfmFileDisk : public LibraryTest {
 protected:
  void SetUp() override { m_Mark = m_Library.LogMark(); }
  [[nodiscard]] std::string Logged() const { return m_Library.LogTextsBehind(m_Mark); }
  [[nodiscard]] std::string OutputName(const std::string& name) const {
    return "Queue/rip/System/c-out/" + name;
  }

  ScratchDirectory m_Scratch;
  CCFMFile m_File;
  std::size_t m_Mark = 0;
};

TEST_F(CfmFileDisk, the_size_is_measured_once_and_remembered) {
  m_Scratch.Write("p1/data", std::string(100, 'x'));
  m_Scratch.Write("p2/sub/data", std::string(11, 'x'));
  m_File.AddEntry(m_Scratch.Wide(), L"p1");
  m_File.AddEntry(m_Scratch.Wide() + L"/", L"p2");
  EXPECT_EQ(m_File.GetSizeOnDisk(), 111);
  EXPECT_EQ(m_File.TotalSize, 111);
  m_Scratch.Write("p1/more", std::string(1000, 'x'));
  EXPECT_EQ(m_File.GetSizeOnDisk(), 111);
  m_File.TotalSize = 0;
  EXPECT_EQ(m_File.GetSizeOnDisk(), 1111);
}

TEST_F(CfmFileDisk, a_size_of_0_is_unknown_and_measured_anew) {
  m_File.AddEntry(m_Scratch.Wide(), L"p");
  EXPECT_EQ(m_File.GetSizeOnDisk(), 0);
  m_Scratch.Write("p/data", "12345");
  EXPECT_EQ(m_File.GetSizeOnDisk(), 5);
}

TEST_F(CfmFileDisk, pages_of_the_default_directory_lie_in_the_rips_output_directory) {
  m_Library.Directory().Write(OutputName("page/data"), "123");
  m_File.AddEntry(L"default", L"page");
  EXPECT_EQ(m_File.GetSizeOnDisk(), 3);
  // Only the exact text "default" means it.
  CCFMFile other;
  other.AddEntry(L"Default", L"page");
  EXPECT_EQ(other.GetSizeOnDisk(), 0);
}

TEST_F(CfmFileDisk, an_empty_directory_is_the_root) {
  const PresentDirectory present(m_Scratch.Path());
  m_Scratch.Write("page/data", "123");
  m_File.AddEntry(L"", L"page");
  EXPECT_EQ(m_File.GetSizeOnDisk(), 0);
}

TEST_F(CfmFileDisk, deleting_takes_the_pages_and_the_first_entrys_directory) {
  m_Scratch.Write("job.cfm/p1/data", "x");
  m_Scratch.Write("job.cfm/p2/data", "x");
  m_Scratch.Write("job.cfm/stray", "x");
  m_Scratch.Write("other/p3/data", "x");
  m_File.AddEntry(m_Scratch.Wide("job.cfm") + L"\\", L"p1");
  m_File.AddEntry(m_Scratch.Wide("job.cfm") + L"\\", L"p2");
  m_File.AddEntry(m_Scratch.Wide("other"), L"p3");
  m_File.TotalSize = 5;
  EXPECT_TRUE(m_File.DeletePages());
  EXPECT_FALSE(m_Scratch.Has("job.cfm"));
  EXPECT_FALSE(m_Scratch.Has("other/p3"));
  EXPECT_TRUE(m_Scratch.Has("other"));
  EXPECT_TRUE(m_File.Entries.empty());
  EXPECT_EQ(m_File.TotalSize, 0);
  EXPECT_EQ(m_File.GetSizeOnDisk(), 0);
  EXPECT_EQ(Logged(), "");
}

TEST_F(CfmFileDisk, a_page_that_cannot_be_removed_makes_it_false_and_the_others_go) {
  m_Scratch.Write("job.cfm/p2/data", "x");
  m_File.AddEntry(m_Scratch.Wide("job.cfm") + L"\\", L"missing");
  m_File.AddEntry(m_Scratch.Wide("job.cfm") + L"\\", L"p2");
  EXPECT_FALSE(m_File.DeletePages());
  EXPECT_FALSE(m_Scratch.Has("job.cfm"));
  EXPECT_TRUE(m_File.Entries.empty());
}

TEST_F(CfmFileDisk, deleting_nothing_is_true_and_forgets_the_size) {
  m_File.TotalSize = 9;
  EXPECT_TRUE(m_File.DeletePages());
  EXPECT_EQ(m_File.TotalSize, 0);
}

TEST_F(CfmFileDisk, deleting_pages_of_default_removes_a_relative_directory_of_that_name) {
  const PresentDirectory present(m_Scratch.Path());
  m_Scratch.Write("default/stray", "x");
  m_Library.Directory().Write(OutputName("page/data"), "123");
  m_Library.Directory().Write(OutputName("other/data"), "123");
  m_File.AddEntry(L"default", L"page");
  EXPECT_TRUE(m_File.DeletePages());
  EXPECT_FALSE(m_Library.Directory().Has(OutputName("page")));
  EXPECT_TRUE(m_Library.Directory().Has(OutputName("other/data")));
  EXPECT_FALSE(m_Scratch.Has("default"));
}

TEST_F(CfmFileDisk, deleting_pages_of_default_is_false_if_there_is_no_such_directory) {
  const PresentDirectory present(m_Scratch.Path());
  m_Library.Directory().Write(OutputName("page/data"), "123");
  m_File.AddEntry(L"default", L"page");
  EXPECT_FALSE(m_File.DeletePages());
  EXPECT_FALSE(m_Library.Directory().Has(OutputName("page")));
  EXPECT_TRUE(m_Library.Directory().Has("Queue/rip/System/c-out"));
}

TEST_F(CfmFileDisk, moving_nothing_is_true) { EXPECT_TRUE(m_File.MovePages(L"C:\\nowhere")); }

TEST_F(CfmFileDisk, moved_pages_lie_below_the_destination_whose_text_the_entries_take) {
  m_Scratch.Write("from/p1/data", "one");
  m_Library.Directory().Write(OutputName("p2/sub/data"), "two");
  m_File.AddEntry(m_Scratch.Wide("from"), L"p1");
  m_File.AddEntry(L"default", L"p2");
  m_File.TotalSize = 6;
  const std::wstring destination = m_Scratch.Wide("spool") + L"/job.cfm";
  EXPECT_TRUE(m_File.MovePages(destination));
  EXPECT_EQ(m_Scratch.Read("spool/job.cfm/p1/data"), "one");
  EXPECT_EQ(m_Scratch.Read("spool/job.cfm/p2/sub/data"), "two");
  EXPECT_FALSE(m_Scratch.Has("from/p1"));
  EXPECT_TRUE(m_Scratch.Has("from"));
  EXPECT_FALSE(m_Library.Directory().Has(OutputName("p2")));
  for (const CCFMFileEntry& entry : m_File.Entries) EXPECT_EQ(destination, entry.Directory);
  EXPECT_EQ(m_File.TotalSize, 6);
  EXPECT_EQ(Logged(), "");
}

TEST_F(CfmFileDisk, an_existing_target_is_named_and_removed) {
  m_Scratch.Write("from/p/new", "new");
  m_Scratch.Write("to/p/old", "old");
  m_File.AddEntry(m_Scratch.Wide("from"), L"p");
  EXPECT_TRUE(m_File.MovePages(m_Scratch.Wide("to") + L"\\"));
  EXPECT_TRUE(m_Scratch.Has("to/p/new"));
  EXPECT_FALSE(m_Scratch.Has("to/p/old"));
  EXPECT_EQ("Warning: Spool: Destination directory already exists: '" + m_Scratch.Path("to") +
                "\\p'. Overwriting.\r\n",
            Logged());
}

TEST_F(CfmFileDisk, a_page_that_is_missing_stops_the_move) {
  m_Scratch.Write("from/p1/data", "x");
  m_Scratch.Write("from/p3/data", "x");
  for (const wchar_t* const title : {L"p1", L"p2", L"p3"})
    m_File.AddEntry(m_Scratch.Wide("from"), title);
  const std::wstring destination = m_Scratch.Wide("to");
  EXPECT_FALSE(m_File.MovePages(destination));
  EXPECT_EQ("Move dir '" + m_Scratch.Path("from") + "\\p2' to '" + m_Scratch.Path("to") +
                "\\p2' failed.\r\n",
            Logged());
  EXPECT_EQ(destination, m_File.Entries[0].Directory);
  EXPECT_EQ(m_Scratch.Wide("from"), m_File.Entries[1].Directory);
  EXPECT_EQ(m_Scratch.Wide("from"), m_File.Entries[2].Directory);
  EXPECT_TRUE(m_Scratch.Has("to/p1/data"));
  EXPECT_FALSE(m_Scratch.Has("to/p2"));
  EXPECT_TRUE(m_Scratch.Has("from/p3/data"));
}

TEST_F(CfmFileDisk, a_destination_that_cannot_be_made_stops_the_move) {
  m_Scratch.Write("from/p/data", "x");
  m_Scratch.Write("file", "x");
  m_File.AddEntry(m_Scratch.Wide("from"), L"p");
  EXPECT_FALSE(m_File.MovePages(m_Scratch.Wide("file")));
  EXPECT_TRUE(m_Scratch.Has("from/p/data"));
  EXPECT_EQ("Move dir '" + m_Scratch.Path("from") + "\\p' to '" + m_Scratch.Path("file") +
                "\\p' failed.\r\n",
            Logged());
}

TEST_F(CfmFileDisk, a_single_entry_that_cannot_be_copied_is_lost_without_a_word) {
  m_Scratch.Write("from/p/data", "x");
  ASSERT_EQ(::mkfifo(m_Scratch.Path("from/p/pipe").c_str(), 0600), 0);
  m_File.AddEntry(m_Scratch.Wide("from"), L"p");
  EXPECT_TRUE(m_File.MovePages(m_Scratch.Wide("to")));
  EXPECT_TRUE(m_Scratch.Has("to/p/data"));
  EXPECT_FALSE(m_Scratch.Has("to/p/pipe"));
  EXPECT_FALSE(m_Scratch.Has("from/p"));
  EXPECT_EQ(Logged(), "");
}

TEST_F(CfmFileDisk, a_source_that_cannot_be_removed_leaves_the_copy_and_fails) {
  // A path of three characters is never removed.
  const PresentDirectory present(m_Scratch.Path());
  m_Scratch.Write("a/b/data", "x");
  m_File.AddEntry(L"a", L"b");
  EXPECT_FALSE(m_File.MovePages(m_Scratch.Wide("to")));
  EXPECT_TRUE(m_Scratch.Has("to/b/data"));
  EXPECT_TRUE(m_Scratch.Has("a/b/data"));
  EXPECT_EQ(m_File.Entries[0].Directory, L"a");
  EXPECT_EQ("Move dir 'a\\b' to '" + m_Scratch.Path("to") + "\\b' failed.\r\n", Logged());
}

TEST_F(CfmFileDisk, a_second_move_to_the_same_place_finds_no_source) {
  m_Scratch.Write("from/p/data", "x");
  m_File.AddEntry(m_Scratch.Wide("from"), L"p");
  const std::wstring destination = m_Scratch.Wide("to");
  ASSERT_TRUE(m_File.MovePages(destination));
  EXPECT_EQ(Logged(), "");
  EXPECT_FALSE(m_File.MovePages(destination));
  const std::string page = m_Scratch.Path("to") + "\\p";
  EXPECT_EQ("Warning: Spool: Destination directory already exists: '" + page +
                "'. Overwriting.\r\nMove dir '" + page + "' to '" + page + "' failed.\r\n",
            Logged());
  EXPECT_FALSE(m_Scratch.Has("to/p"));
}

// The move as documented: copy, then delete, as far as a move of pages needs it.
class LiteralMove {
 public:
  static bool Delete(const fs::path& path) {
    std::error_code error;
    if (!fs::is_directory(fs::symlink_status(path))) return false;
    for (const auto& entry : fs::directory_iterator(path)) {
      const bool directory = fs::is_directory(entry.symlink_status());
      if (directory ? !Delete(entry.path()) : !fs::remove(entry.path(), error)) return false;
    }
    return fs::remove(path, error);
  }

  static bool Copy(const fs::path& source, const fs::path& target) {
    std::error_code error;
    if (!fs::exists(target) && !fs::create_directories(target, error)) return false;
    if (!fs::is_directory(source)) return false;
    for (const auto& entry : fs::directory_iterator(source)) {
      const fs::path to = target / entry.path().filename();
      if (fs::is_directory(entry.symlink_status())) Copy(entry.path(), to);
      if (!fs::is_regular_file(entry.symlink_status())) continue;
      fs::copy_file(entry.path(), to, fs::copy_options::overwrite_existing, error);
      if (!error) fs::last_write_time(to, fs::last_write_time(entry.path()));
    }
    return true;
  }

  static bool Move(const fs::path& source, const fs::path& target) {
    if (fs::exists(target)) Delete(target);
    const bool hasSource = fs::exists(source);
    if (!Copy(source, target) || !hasSource) {
      Delete(target);
      return false;
    }
    return Delete(source);
  }
};

// Fills a directory by chance; the same chance makes the same tree.
void Grow(std::mt19937& random, const fs::path& root, int depth) {
  fs::create_directories(root);
  for (auto entry = random() % 5; entry > 0; --entry) {
    const fs::path path = root / ("e" + std::to_string(random() % 6));
    if (fs::exists(fs::symlink_status(path))) continue;
    const auto kind = random() % 16;
    if (kind < 4 && depth < 3) {
      Grow(random, path, depth + 1);
    } else if (kind == 4) {
      fs::create_symlink("nowhere", path);
    } else if (kind == 5) {
      fs::create_symlink(".", path);
    } else if (kind == 6) {
      ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    } else {
      std::ofstream(path) << std::string(random() % 3000, static_cast<char>('a' + random() % 26));
      if (kind == 7) fs::permissions(path, fs::perms::owner_read);
      if (kind == 8) fs::permissions(path, fs::perms::owner_all);
      if (kind == 9) fs::create_hard_link(path, path.string() + "-again");
      fs::last_write_time(path, fs::file_time_type(std::chrono::hours(random() % 100'000)));
    }
  }
}

TEST_F(CfmFileDisk, a_move_looks_like_copy_and_delete) {
  // Hundreds of small trees: in memory where the machine has such a place.
  const fs::path place =
      fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path();
  for (unsigned seed = 0; seed < 200; ++seed) {
    const ScratchDirectory ours(place);
    const ScratchDirectory theirs(place);
    for (const ScratchDirectory* side : {&ours, &theirs}) {
      std::mt19937 random(seed);
      if (random() % 8 != 0) Grow(random, side->Path("from/p"), 0);
      if (random() % 3 == 0) Grow(random, side->Path("to/p"), 1);
      if (random() % 3 == 0) fs::create_directories(side->Path("to"));
    }
    CCFMFile file;
    file.AddEntry(ours.Wide("from"), L"p");
    const bool moved = file.MovePages(ours.Wide("to"));
    ASSERT_EQ(LiteralMove::Move(theirs.Path("from/p"), theirs.Path("to/p")), moved) << seed;
    ASSERT_EQ(TreeSnapshot(theirs.Path()), TreeSnapshot(ours.Path())) << seed;
    ASSERT_EQ(moved ? ours.Wide("to") : ours.Wide("from"), file.Entries[0].Directory);
  }
}

}  // namespace
