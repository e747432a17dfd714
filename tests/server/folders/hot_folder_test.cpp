#include "server/folders/hot_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "rastrel/platform/os/private_directory.h"

namespace rastrel::server {
namespace {

constexpr std::int64_t Second = 1000000000;

class HotFolderTest : public testing::Test {
 protected:
  HotFolderTest() : m_Place(*os::PrivateDirectory::Make("rastrel-folders-")) {
    auto opened = JobQueue::Open(m_Place.Path() + "/root");
    EXPECT_TRUE(opened) << (opened ? "" : Describe(opened.Error()));
    queue = *std::move(opened);
    std::filesystem::create_directory(Path());
    Settings("");
  }
  std::string Path() const { return m_Place.Path() + "/hot"; }
  void Settings(const std::string& more) {
    Write(".rastrel-folder.toml", "device = \"Plotter\"\n" + more);
  }
  void Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(Path() + "/" + name, std::ios::binary) << bytes;
  }
  static std::string Content(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
  }
  std::vector<std::string> NamesIn(const std::string& directory = "") const {
    std::vector<std::string> names;
    if (!std::filesystem::exists(Path() + "/" + directory)) return names;
    for (const auto& entry : std::filesystem::directory_iterator(Path() + "/" + directory)) {
      const std::string name = entry.path().filename();
      if (!name.starts_with('.')) names.push_back(name);
    }
    std::ranges::sort(names);
    return names;
  }
  HotFolder Folder() {
    return HotFolder(Path(), *queue, [this](const std::string& line) { lines.push_back(line); });
  }
  std::vector<Job> Jobs() {
    JobFilter filter;
    filter.descending = false;
    auto jobs = queue->List(filter);
    EXPECT_TRUE(jobs);
    return jobs ? *jobs : std::vector<Job>{};
  }
  std::vector<std::string> Titles() {
    std::vector<std::string> titles;
    for (const Job& job : Jobs()) titles.push_back(job.title);
    std::ranges::sort(titles);
    return titles;
  }
  void EndNext(bool isDone) {
    const auto job = queue->ClaimToInterpret();
    ASSERT_TRUE(job && *job);
    const JobId id = (*job)->id;
    if (!isDone) {
      ASSERT_TRUE(queue->SetFailed(id, 3, "the page is \x1b[2J broken"));
      return;
    }
    ASSERT_TRUE(queue->SetReady(id, "", 2, "{}"));
    const auto delivered = queue->ClaimToDeliver("Plotter");
    ASSERT_TRUE(delivered && *delivered);
    ASSERT_TRUE(queue->SetDone(id));
  }
  using Names = std::vector<std::string>;

  os::PrivateDirectory m_Place;
  std::unique_ptr<JobQueue> queue;
  std::vector<std::string> lines;
};

TEST_F(HotFolderTest, a_file_that_was_closed_becomes_a_job_with_the_folders_settings) {
  Settings(
      "mode = \"RGB/300 dpi\"\nscale = \"A4\"\nlevels = \"10,1.2,250\"\ncopies = 3\n"
      "owner = \"anna\"\npriority = 70\nhold = true\nwork = \"cut\"\nrules = \"shop-words\"\n");
  HotFolder folder = Folder();
  Write("sign.pdf", "%PDF");
  folder.NoteWhole("sign.pdf");
  static_cast<void>(folder.Look(0));
  ASSERT_EQ(Jobs().size(), 1u);
  const Job job = Jobs()[0];
  EXPECT_EQ(job.title, "sign.pdf");
  EXPECT_EQ(job.owner, "anna");
  EXPECT_EQ(job.source, "folder hot");
  EXPECT_EQ(job.device, "Plotter");
  EXPECT_EQ(job.work, JobWork::Cut);
  EXPECT_EQ(job.priority, 70);
  EXPECT_EQ(job.state, JobState::Held);
  EXPECT_EQ(job.options, (JobOptions{{"mode", "RGB/300 dpi"},
                                     {"scale", "A4"},
                                     {"levels", "10,1.2,250"},
                                     {"copies", "3"},
                                     {"rules", "shop-words"}}));
  EXPECT_EQ(Content(job.file), "%PDF");
  EXPECT_EQ(NamesIn(), Names{});
}

TEST_F(HotFolderTest, a_file_that_stays_unchanged_for_its_time_is_whole) {
  Settings("settle = 5\n");
  HotFolder folder = Folder();
  Write("a.ps", "%!");
  static_cast<void>(folder.Look(0));
  static_cast<void>(folder.Look(5 * Second - 1));
  EXPECT_EQ(Titles(), Names{});
  static_cast<void>(folder.Look(5 * Second));
  EXPECT_EQ(Titles(), Names{"a.ps"});
}

TEST_F(HotFolderTest, a_file_that_grows_begins_its_time_again) {
  Settings("settle = 5\n");
  HotFolder folder = Folder();
  Write("a.ps", "%!");
  static_cast<void>(folder.Look(0));
  Write("a.ps", "%!PS");
  static_cast<void>(folder.Look(5 * Second));
  static_cast<void>(folder.Look(10 * Second - 1));
  EXPECT_EQ(Titles(), Names{});
  static_cast<void>(folder.Look(10 * Second));
  EXPECT_EQ(Titles(), Names{"a.ps"});
}

TEST_F(HotFolderTest, a_closed_file_that_is_written_again_is_not_whole) {
  HotFolder folder = Folder();
  Write("a.ps", "%!");
  folder.NoteWhole("a.ps");
  folder.NoteChange("a.ps");
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Titles(), Names{});
}

TEST_F(HotFolderTest, hidden_and_unfinished_names_links_pipes_and_folders_are_left) {
  Settings("settle = 0\n");
  Write(".hidden", "x");
  Write("a.pdf~", "x");
  Write("a.part", "x");
  Write("a.tmp", "x");
  Write("empty.ps", "");
  std::filesystem::create_symlink("/etc/passwd", Path() + "/link.ps");
  std::filesystem::create_directory(Path() + "/sub");
  Write("sub/inner.ps", "x");
  ASSERT_EQ(::mkfifo((Path() + "/pipe.ps").c_str(), 0600), 0);
  HotFolder folder = Folder();
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Titles(), Names{});
  EXPECT_EQ(NamesIn(),
            (Names{"a.part", "a.pdf~", "a.tmp", "empty.ps", "link.ps", "pipe.ps", "sub"}));
}

TEST_F(HotFolderTest, a_file_with_another_name_elsewhere_waits_until_it_has_one) {
  Settings("settle = 0\n");
  const std::string elsewhere = m_Place.Path() + "/private";
  std::ofstream(elsewhere) << "%!mine";
  std::filesystem::create_hard_link(elsewhere, Path() + "/a.ps");
  HotFolder folder = Folder();
  EXPECT_EQ(folder.Look(0), 5 * Second);
  EXPECT_EQ(Titles(), Names{});
  EXPECT_EQ(NamesIn(), Names{"a.ps"});
  std::filesystem::remove(elsewhere);
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Titles(), Names{"a.ps"});
}

TEST_F(HotFolderTest, a_link_in_the_folders_place_is_not_followed) {
  Settings("settle = 0\n");
  HotFolder folder = Folder();
  const std::string other = m_Place.Path() + "/other";
  std::filesystem::rename(Path(), other);
  std::filesystem::create_directory_symlink(other, Path());
  std::ofstream(other + "/a.ps") << "%!a";
  static_cast<void>(folder.Look(0));
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(lines, Names{"'" + Path() + "' is a link; a hot folder is a directory itself"});
  EXPECT_EQ(Titles(), Names{});
  EXPECT_TRUE(std::filesystem::exists(other + "/a.ps"));
  // Nor is a note of missing settings put there.
  std::filesystem::remove(other + "/.rastrel-folder.toml");
  static_cast<void>(folder.Look(0));
  EXPECT_FALSE(std::filesystem::exists(other + "/rastrel-folder-error.txt"));
  std::filesystem::remove(Path());
  std::filesystem::rename(other, Path());
  Settings("settle = 0\n");
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Titles(), Names{"a.ps"});
}

TEST_F(HotFolderTest, only_names_of_the_patterns_are_taken_whatever_their_case) {
  Settings("settle = 0\nnames = [\"*.pdf\", \"job?.ps\"]\n");
  for (const char* name : {"a.PDF", "job1.ps", "job12.ps", "a.txt"}) Write(name, "x");
  HotFolder folder = Folder();
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Titles(), (Names{"a.PDF", "job1.ps"}));
}

TEST_F(HotFolderTest, files_of_an_owner_that_is_not_named_are_left) {
  Settings("settle = 0\nowners = [\"nobody-at-all\"]\n");
  Write("a.ps", "x");
  HotFolder folder = Folder();
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Titles(), Names{});
  Settings("settle = 0\nowners = [\"" + std::to_string(::geteuid()) + "\"]\n");
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Titles(), Names{"a.ps"});
}

TEST_F(HotFolderTest, a_done_job_moves_its_file_with_both_reports) {
  Settings("settle = 0\n");
  Write("a.ps", "%!a");
  HotFolder folder = Folder();
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(NamesIn("done"), Names{});
  EndNext(true);
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(NamesIn("done"), (Names{"a.ps", "a.ps.report.json", "a.ps.report.txt"}));
  EXPECT_EQ(Content(Path() + "/done/a.ps"), "%!a");
  EXPECT_EQ(Content(Path() + "/done/a.ps.report.txt"),
            "a.ps: done\nJob 1\nDevice Plotter\nPages 2\n");
  const std::string report = Content(Path() + "/done/a.ps.report.json");
  EXPECT_NE(report.find("\"state\": \"done\""), std::string::npos) << report;
  EXPECT_TRUE(std::filesystem::is_empty(Path() + "/.rastrel-taken"));
}

TEST_F(HotFolderTest, a_failed_jobs_report_is_clean_for_a_terminal) {
  Settings("settle = 0\n");
  Write("a.ps", "%!a");
  HotFolder folder = Folder();
  static_cast<void>(folder.Look(0));
  EndNext(false);
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Content(Path() + "/failed/a.ps.report.txt"),
            "a.ps: failed\nthe page is \\x1b[2J broken\nJob 1\nDevice Plotter\nPages 0\n");
}

TEST_F(HotFolderTest, the_same_file_dropped_again_is_a_new_job_and_replaces_nothing) {
  Settings("settle = 0\n");
  HotFolder folder = Folder();
  for (int round = 0; round < 2; ++round) {
    Write("a.ps", "%!a");
    static_cast<void>(folder.Look(0));
    EndNext(true);
    static_cast<void>(folder.Look(0));
  }
  // Moved back, it is the same file to the last attribute.
  std::filesystem::rename(Path() + "/done/a-2.ps", Path() + "/a.ps");
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Jobs().size(), 3u);
  EndNext(true);
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(NamesIn("done"),
            (Names{"a-2.ps.report.json", "a-2.ps.report.txt", "a-3.ps", "a-3.ps.report.json",
                   "a-3.ps.report.txt", "a.ps", "a.ps.report.json", "a.ps.report.txt"}));
}

TEST_F(HotFolderTest, a_folder_that_deletes_leaves_nothing_of_a_done_job) {
  Settings("settle = 0\nafter = \"delete\"\n");
  Write("a.ps", "%!a");
  HotFolder folder = Folder();
  static_cast<void>(folder.Look(0));
  EndNext(true);
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(NamesIn(), Names{});
  EXPECT_TRUE(std::filesystem::is_empty(Path() + "/.rastrel-taken"));
}

TEST_F(HotFolderTest, bad_settings_are_told_beside_them_and_files_wait) {
  Write(".rastrel-folder.toml", "device = \"Plotter\"\nspeed = 3\n");
  Write("a.ps", "%!a");
  HotFolder folder = Folder();
  folder.NoteWhole("a.ps");
  static_cast<void>(folder.Look(0));
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Titles(), Names{});
  const std::string told = Content(Path() + "/rastrel-folder-error.txt");
  EXPECT_NE(told.find(".rastrel-folder.toml:2:"), std::string::npos) << told;
  EXPECT_EQ(lines.size(), 1u);
  Settings("settle = 0\n");
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Titles(), Names{"a.ps"});
  EXPECT_EQ(NamesIn(), Names{});
}

TEST_F(HotFolderTest, settings_that_others_may_change_are_refused) {
  ASSERT_EQ(::chmod((Path() + "/.rastrel-folder.toml").c_str(), 0666), 0);
  Write("a.ps", "%!a");
  HotFolder folder = Folder();
  folder.NoteWhole("a.ps");
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Titles(), Names{});
}

TEST_F(HotFolderTest, a_kill_after_each_step_neither_loses_a_file_nor_prints_it_twice) {
  const std::string key = Path() + "/.rastrel-taken/0123456789abcdef";
  Settings("settle = 0\n");
  // Killed before the file was moved into its place.
  std::filesystem::create_directories(key);
  static_cast<void>(Folder().Look(0));
  EXPECT_FALSE(std::filesystem::exists(key));
  // Killed before it was submitted.
  std::filesystem::create_directories(key);
  Write(".rastrel-taken/0123456789abcdef/a.ps", "%!a");
  static_cast<void>(Folder().Look(0));
  EXPECT_EQ(Jobs().size(), 1u);
  // Killed before the number was noted.
  std::filesystem::remove(key + "/.job");
  static_cast<void>(Folder().Look(0));
  EXPECT_EQ(Jobs().size(), 1u);
  EXPECT_EQ(Content(key + "/.job"), "1");
  // Killed after the last place was chosen, and then after the move.
  EndNext(true);
  Write(".rastrel-taken/0123456789abcdef/.target", "done/a.ps");
  std::filesystem::create_directory(Path() + "/done");
  std::filesystem::rename(key + "/a.ps", Path() + "/done/a.ps");
  static_cast<void>(Folder().Look(0));
  EXPECT_EQ(NamesIn("done"), (Names{"a.ps", "a.ps.report.json", "a.ps.report.txt"}));
  EXPECT_FALSE(std::filesystem::exists(key));
  EXPECT_EQ(Jobs().size(), 1u);
}

TEST_F(HotFolderTest, a_place_that_was_taken_meanwhile_is_chosen_anew) {
  Settings("settle = 0\n");
  Write("a.ps", "%!a");
  HotFolder folder = Folder();
  static_cast<void>(folder.Look(0));
  EndNext(true);
  const std::string key = std::filesystem::directory_iterator(Path() + "/.rastrel-taken")->path();
  std::ofstream(key + "/.target") << "done/a.ps";
  std::filesystem::create_directory(Path() + "/done");
  Write("done/a.ps", "foreign");
  static_cast<void>(folder.Look(0));
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Content(Path() + "/done/a.ps"), "foreign");
  EXPECT_EQ(Content(Path() + "/done/a-2.ps"), "%!a");
}

TEST_F(HotFolderTest, a_done_that_is_a_link_is_not_followed) {
  Settings("settle = 0\n");
  Write("a.ps", "%!a");
  HotFolder folder = Folder();
  static_cast<void>(folder.Look(0));
  EndNext(true);
  const std::string elsewhere = m_Place.Path() + "/elsewhere";
  std::filesystem::create_directory(elsewhere);
  std::filesystem::create_symlink(elsewhere, Path() + "/done");
  static_cast<void>(folder.Look(0));
  EXPECT_TRUE(std::filesystem::is_empty(elsewhere));
  std::filesystem::remove(Path() + "/done");
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Content(Path() + "/done/a.ps"), "%!a");
}

TEST_F(HotFolderTest, a_taken_file_that_became_a_link_is_refused) {
  Settings("settle = 0\n");
  const std::string key = Path() + "/.rastrel-taken/0123456789abcdef";
  std::filesystem::create_directories(key);
  std::filesystem::create_symlink("/etc/passwd", key + "/a.ps");
  static_cast<void>(Folder().Look(0));
  EXPECT_EQ(Jobs().size(), 0u);
  EXPECT_NE(Content(Path() + "/failed/a.ps.report.txt").find("no regular file"), std::string::npos);
}

TEST_F(HotFolderTest, names_in_any_bytes_and_of_any_length_come_through) {
  Settings("settle = 0\n");
  const std::string odd = "\xff\n\x1b[2J \"'.ps";
  const std::string longest = std::string(252, 'n') + ".ps";
  Write(odd, "%!a");
  Write(longest, "%!b");
  HotFolder folder = Folder();
  static_cast<void>(folder.Look(0));
  ASSERT_EQ(Jobs().size(), 2u);
  EndNext(true);
  EndNext(true);
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Content(Path() + "/done/" + odd), "%!a");
  EXPECT_EQ(NamesIn("done").size(), 6u);
}

// A report adds 12 bytes to a name, and a number up to 7.
TEST_F(HotFolderTest, a_name_without_room_for_its_report_becomes_that_of_its_job) {
  Settings("settle = 0\n");
  const std::string fits = std::string(232, 'a') + ".ps";
  const std::string isLong = std::string(233, 'b') + ".ps";
  Write(fits, "%!a");
  Write(isLong, "%!b");
  HotFolder folder = Folder();
  static_cast<void>(folder.Look(0));
  const std::vector<Job> jobs = Jobs();
  ASSERT_EQ(jobs.size(), 2u);
  const Job& renamed = jobs[jobs[0].title.starts_with('b') ? 0 : 1];
  const std::string name = "job-" + std::to_string(renamed.id);
  EndNext(true);
  EndNext(true);
  static_cast<void>(folder.Look(0));
  Names expected{fits, fits + ".report.json", fits + ".report.txt",
                 name, name + ".report.json", name + ".report.txt"};
  std::ranges::sort(expected);
  EXPECT_EQ(NamesIn("done"), expected);
}

TEST_F(HotFolderTest, a_folder_that_vanishes_and_comes_back_goes_on) {
  HotFolder folder = Folder();
  std::filesystem::remove_all(Path());
  static_cast<void>(folder.Look(0));
  EXPECT_FALSE(lines.empty());
  std::filesystem::create_directory(Path());
  Settings("settle = 0\n");
  Write("a.ps", "%!a");
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Titles(), Names{"a.ps"});
}

TEST_F(HotFolderTest, a_job_that_left_the_queue_ends_as_failed) {
  Settings("settle = 0\nhold = true\n");
  Write("a.ps", "%!a");
  HotFolder folder = Folder();
  static_cast<void>(folder.Look(0));
  ASSERT_TRUE(queue->Remove(1));
  static_cast<void>(folder.Look(0));
  EXPECT_EQ(Jobs().size(), 0u);
  EXPECT_EQ(NamesIn("failed"), (Names{"a.ps", "a.ps.report.json", "a.ps.report.txt"}));
}

TEST(FolderList, paths_are_full_and_each_is_there_once) {
  const auto list = ReadFolderList(
      "[[folder]]\npath = \"/a\"\n[[folder]]\npath = \"/b\"\n[[folder]]\npath = \"/a\"\n", "f");
  ASSERT_TRUE(list);
  EXPECT_EQ(*list, (std::vector<std::string>{"/a", "/b"}));
  EXPECT_FALSE(ReadFolderList("[[folder]]\npath = \"a\"\n", "f"));
  EXPECT_FALSE(ReadFolderList("[[folder]]\n", "f"));
  EXPECT_FALSE(ReadFolderList("folders = 1\n", "f"));
}

TEST(FolderSettings, limits_are_held_at_both_ends) {
  const auto reads = [](const std::string& line) {
    return static_cast<bool>(ReadFolderSettings("device = \"x\"\n" + line, "f"));
  };
  EXPECT_FALSE(ReadFolderSettings("", "f"));
  for (const char* good : {"copies = 1", "copies = 9999", "priority = 1", "priority = 100",
                           "settle = 0", "settle = 3600", "poll = 1", "poll = 3600"}) {
    EXPECT_TRUE(reads(good)) << good;
  }
  for (const char* bad : {"copies = 0", "copies = 10000", "priority = 0", "priority = 101",
                          "settle = -1", "settle = 3601", "poll = 0", "poll = 3601",
                          "work = \"fold\"", "after = \"burn\"", "hold = 1"}) {
    EXPECT_FALSE(reads(bad)) << bad;
  }
}
TEST(FolderSettings, a_merge_names_its_template_or_its_table_and_not_both) {
  const auto read = [](const std::string& lines) {
    return ReadFolderSettings("device = \"x\"\n" + lines, "f");
  };
  const std::string merge = "work = \"merge\"\n";
  const auto tables = read(merge + "template = \"/shop/badge.xml\"\nsheet = \"2\"\n");
  ASSERT_TRUE(tables) << Describe(tables.Error());
  EXPECT_EQ(tables->work, JobWork::Merge);
  EXPECT_EQ(tables->options, (JobOptions{{"template", "/shop/badge.xml"}, {"sheet", "2"}}));
  EXPECT_TRUE(read(merge + "data = \"/shop/names.csv\"\nblank = \"8x3cm\"\n"));

  const auto both = read(merge + "template = \"/a\"\ndata = \"/b\"\n");
  ASSERT_FALSE(both);
  EXPECT_NE(Describe(both.Error()).find("f:4"), std::string::npos) << Describe(both.Error());
  const auto neither = read(merge);
  ASSERT_FALSE(neither);
  EXPECT_NE(Describe(neither.Error()).find("needs 'template'"), std::string::npos);
  EXPECT_FALSE(read(merge + "template = \"badge.xml\"\n"));
  EXPECT_FALSE(read(merge + "data = \"\"\n"));
}

TEST(FolderSettings, the_keys_of_a_merge_are_refused_where_none_is_made) {
  for (const char* key : {"template", "data", "sheet", "blank"})
    for (const char* work : {"print", "cut"})
      EXPECT_FALSE(ReadFolderSettings(
          "device = \"x\"\nwork = \"" + std::string(work) + "\"\n" + key + " = \"/a\"\n", "f"))
          << work << " " << key;
}

}  // namespace
}  // namespace rastrel::server
