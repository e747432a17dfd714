#include "rastrel/conversion/planes/find_plane_info.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/platform/os/tree_walk.h"
#include "tests/support/scratch_directory.h"

namespace os = rastrel::os;
using rastrel::conversion::FindPlaneInfo;
using rastrel::test::ScratchDirectory;

namespace {

// The native path of the file that was found, or empty.
std::string Found(const ScratchDirectory& root, std::string_view name = "job.cfm") {
  return os::ToNative(FindPlaneInfo(root.Wide(name)));
}

TEST(FindPlaneInfo, takes_the_file_of_the_directory_itself_before_any_below_it) {
  const ScratchDirectory root;
  root.Write("job.cfm/a/.info", "");
  root.Write("job.cfm/.info", "");
  root.Write("job.cfm/z/.info", "");
  EXPECT_EQ(Found(root), root.Path("job.cfm/.info"));
}

TEST(FindPlaneInfo, takes_a_path_with_a_closing_separator_of_either_kind) {
  const ScratchDirectory root;
  root.Write("job.cfm/.info", "");
  for (const wchar_t* const end : {L"/", L"\\"}) {
    EXPECT_EQ(os::ToNative(FindPlaneInfo(root.Wide("job.cfm") + end)), root.Path("job.cfm/.info"));
  }
}

TEST(FindPlaneInfo, searches_a_directory_with_all_below_it_before_its_neighbors) {
  const ScratchDirectory root;
  for (const char* const name : {"job.cfm/one/deep/.info", "job.cfm/two/deep/.info",
                                 "job.cfm/three/.info", "job.cfm/four/deep/deeper/.info"})
    root.Write(name, "");
  // Every directory has one, so the first one of the system's order wins.
  const auto order = os::ListDirectory(root.Wide("job.cfm"));
  ASSERT_TRUE(order);
  const std::string first = os::ToNative(root.Wide("job.cfm") + L"/" + order->front());
  EXPECT_TRUE(Found(root).starts_with(first + "/")) << Found(root) << " and not in " << first;
}

TEST(FindPlaneInfo, tests_a_subdirectory_before_it_descends_into_it) {
  const ScratchDirectory root;
  root.Write("job.cfm/p/below/.info", "");
  root.Write("job.cfm/p/.info", "");
  EXPECT_EQ(Found(root), root.Path("job.cfm/p/.info"));
}

TEST(FindPlaneInfo, goes_on_where_a_subdirectory_has_none) {
  const ScratchDirectory root;
  for (const char* const name :
       {"job.cfm/a/x", "job.cfm/b/c/x", "job.cfm/d/e/f/.info", "job.cfm/g/x"})
    root.Write(name, "");
  EXPECT_EQ(Found(root), root.Path("job.cfm/d/e/f/.info"));
}

TEST(FindPlaneInfo, finds_nothing_in_directories_without_one) {
  const ScratchDirectory root;
  root.Write("job.cfm/a/info", "");
  root.Write(".info", "");
  EXPECT_EQ(Found(root), "");
  EXPECT_EQ(Found(root, "missing.cfm"), "");
  EXPECT_EQ(Found(root, "job.cfm/a/info"), "") << "a file is no directory";
  EXPECT_EQ(FindPlaneInfo(L""), L"");
}

TEST(FindPlaneInfo, takes_no_directory_of_that_name) {
  const ScratchDirectory root;
  root.Write("job.cfm/.info/x", "");
  EXPECT_EQ(Found(root), "");
  root.Write("job.cfm/.info/.info", "");
  EXPECT_EQ(Found(root), root.Path("job.cfm/.info/.info"));
}

TEST(FindPlaneInfo, ends_where_links_lead_in_a_circle_and_leaves_the_directory_by_none) {
  const ScratchDirectory root;
  root.Write("elsewhere/.info", "");
  root.Write("job.cfm/a/x", "");
  std::filesystem::create_directory_symlink("..", root.Path("job.cfm/a/up"));
  std::filesystem::create_directory_symlink(root.Path("elsewhere"), root.Path("job.cfm/out"));
  EXPECT_EQ(Found(root), "");
}

TEST(FindPlaneInfo, descends_as_many_levels_as_trees_have_and_no_more) {
  for (const unsigned levels :
       {os::TreeDepthLimit - 1, os::TreeDepthLimit, os::TreeDepthLimit + 1}) {
    const ScratchDirectory root;
    std::string name = "job.cfm";
    for (unsigned i = 0; i < levels; ++i) name += "/d";
    root.Write(name + "/.info", "");
    EXPECT_EQ(Found(root), levels <= os::TreeDepthLimit ? root.Path(name + "/.info") : "")
        << levels;
  }
}

}  // namespace
