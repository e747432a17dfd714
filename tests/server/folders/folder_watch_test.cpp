#include "server/folders/folder_watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>

#include "rastrel/platform/os/private_directory.h"
#include "tests/support/wait_until.h"

namespace rastrel::server {
namespace {

TEST(FolderWatch, files_that_are_dropped_while_it_runs_become_jobs) {
  const auto place = *os::PrivateDirectory::Make("rastrel-watch-");
  const std::string root = place.Path() + "/root";
  auto opened = JobQueue::Open(root);
  ASSERT_TRUE(opened);
  JobQueue& queue = **opened;
  const std::string hot = place.Path() + "/hot";
  std::filesystem::create_directory(hot);
  std::ofstream(hot + "/.rastrel-folder.toml") << "device = \"Plotter\"\nsettle = 3600\n";
  std::ofstream(root + "/server/folders.toml") << "[[folder]]\npath = \"" + hot + "\"\n";
  std::atomic<int> messages{0};
  FolderWatch watch(root, queue, [&](const std::string&) { ++messages; });
  ASSERT_TRUE(watch.Start());
  const auto count = [&] { return queue.Count({}).ValueOr(-1); };
  // Which of the two comes first, the first look or the first file, is open: repeated until the
  // watch reports it.
  std::filesystem::create_directory(place.Path() + "/made");
  int made = 0;
  const auto drop = [&] {
    const std::string name = "moved-" + std::to_string(made++) + ".ps";
    std::ofstream(place.Path() + "/made/" + name) << "%!";
    std::filesystem::rename(place.Path() + "/made/" + name, hot + "/" + name);
    return count() > 0;
  };
  EXPECT_TRUE(test::WaitUntil(drop));
  const int before = made;
  std::ofstream(hot + "/closed.ps") << "%!";
  EXPECT_TRUE(test::WaitUntil([&] {
    const auto jobs = queue.List({});
    return jobs &&
           std::ranges::any_of(*jobs, [](const Job& job) { return job.title == "closed.ps"; });
  }));
  EXPECT_EQ(made, before);
  watch.Stop();
  EXPECT_EQ(messages, 0);
}

// Ten lists, each of which has to be read before the next is written: the looks that come by
// themselves, every half minute, would take longer than the test waits.
TEST(FolderWatch, a_list_that_changes_is_read_at_once) {
  const auto place = *os::PrivateDirectory::Make("rastrel-watch-");
  auto queue = JobQueue::Open(place.Path());
  ASSERT_TRUE(queue);
  std::atomic<int> messages{0};
  FolderWatch watch(place.Path(), **queue, [&](const std::string&) { ++messages; });
  ASSERT_TRUE(watch.Start());
  const std::string list = place.Path() + "/server/folders.toml";
  constexpr int Lists = 10;
  int written = 0;
  EXPECT_TRUE(test::WaitUntil([&] {
    if (messages < written) return false;
    if (written == Lists) return true;
    // Each has another fault, in place and under its name by turns.
    const std::string path = written % 2 == 0 ? list : list + ".new";
    std::ofstream(path) << "fault" << written++ << " = 1\n";
    if (path != list) std::filesystem::rename(path, list);
    return false;
  })) << written;
  watch.Stop();
}

}  // namespace
}  // namespace rastrel::server
