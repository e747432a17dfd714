#include "server/folders/folder_list.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "rastrel/platform/os/private_directory.h"
#include "server/folders/folder_settings.h"

namespace rastrel::server {
namespace {

const char* const List =
    "# The shop's folders.\n"
    "\n"
    "[[folder]]\n"
    "path = \"/srv/plotter\"   # by the door\n"
    "\n"
    "# Ada's\n"
    "[[ folder ]]\n"
    "  # on the share\n"
    "  path = '/srv/two words'\n"
    "# the end\n";

std::string With(const std::string& text, const std::string& path) {
  return WithFolder(text, path, "list").ValueOr("failed");
}
std::string Without(const std::string& text, const std::string& path) {
  return WithoutFolder(text, path, "list").ValueOr("failed");
}

TEST(FolderList, a_folder_is_added_at_the_end_and_all_else_stays) {
  EXPECT_EQ(With("", "/a"), "[[folder]]\npath = \"/a\"\n");
  EXPECT_EQ(With("# none yet", "/a"), "# none yet\n\n[[folder]]\npath = \"/a\"\n");
  EXPECT_EQ(With(List, "/a"), std::string(List) + "\n[[folder]]\npath = \"/a\"\n");
}

TEST(FolderList, any_path_is_read_as_it_was_added) {
  const std::string path = "/srv/\"quoted\"\\back #1 'x' \t\x01\x7f\xc3\xa4";
  const std::string text = With(List, path);
  const auto paths = ReadFolderList(text, "list");
  ASSERT_TRUE(paths) << text;
  EXPECT_EQ(*paths, (std::vector<std::string>{"/srv/plotter", "/srv/two words", path}));
  EXPECT_EQ(Without(text, path), List);
}

TEST(FolderList, a_folder_goes_with_its_table_and_comments_stay) {
  EXPECT_EQ(Without(List, "/srv/two words"),
            "# The shop's folders.\n"
            "\n"
            "[[folder]]\n"
            "path = \"/srv/plotter\"   # by the door\n"
            "\n"
            "# Ada's\n"
            "  # on the share\n"
            "# the end\n");
  EXPECT_EQ(Without(With("", "/a"), "/a"), "");
}

TEST(FolderList, a_folder_that_is_listed_twice_goes_whole) {
  const std::string one = "[[folder]]\npath = \"/a\"\n";
  EXPECT_EQ(Without(one + one + "[[folder]]\npath = \"/b\"\n", "/a"),
            "[[folder]]\npath = \"/b\"\n");
}

TEST(FolderList, a_folder_that_is_there_is_not_added_and_one_that_is_not_does_not_go) {
  const auto again = WithFolder(List, "/srv/plotter", "list");
  ASSERT_FALSE(again);
  EXPECT_EQ(Describe(again.Error()), "'/srv/plotter' is a hot folder already");
  const auto gone = WithoutFolder(List, "/srv/plot", "list");
  ASSERT_FALSE(gone);
  EXPECT_EQ(Describe(gone.Error()), "there is no hot folder '/srv/plot'");
}

TEST(FolderList, a_list_of_another_form_is_left_to_hands) {
  const std::string row = "folder = [{path = \"/a\"}, {path = \"/b\"}]\n";
  for (const auto& changed : {WithFolder(row, "/c", "list"), WithoutFolder(row, "/a", "list")}) {
    ASSERT_FALSE(changed);
    EXPECT_NE(Describe(changed.Error()).find("by hand"), std::string::npos);
  }
  const std::string lines = "[[folder]]\npath = \"\"\"/a\n[[folder]]\"\"\"\n";
  EXPECT_FALSE(WithoutFolder(lines, "/a\n[[folder]]", "list"));
}

TEST(FolderList, a_faulty_list_is_not_changed) {
  const auto added = WithFolder("[[folder]]\nway = 1\npath = \"/a\"\n", "/b", "list");
  ASSERT_FALSE(added);
  EXPECT_NE(Describe(added.Error()).find("list:2:1"), std::string::npos) << Describe(added.Error());
}

TEST(FolderList, the_thousandth_folder_is_the_last) {
  std::string text;
  for (int count = 1; count < 1000; ++count)
    text += "[[folder]]\npath = \"/" + std::to_string(count) + "\"\n";
  text = With(text, "/1000");
  EXPECT_TRUE(text.ends_with("path = \"/1000\"\n")) << text.size();
  EXPECT_FALSE(WithFolder(text, "/1001", "list"));
}

class FolderPlaces : public testing::Test {
 protected:
  FolderPlaces() : m_Place(*os::PrivateDirectory::Make("rastrel-list-")) {
    for (const char* name : {"root/server", "hot/below", "hotter", "other"})
      std::filesystem::create_directories(Path(name));
  }
  [[nodiscard]] std::string Path(const std::string& name) const {
    return std::filesystem::canonical(m_Place.Path()).string() + "/" + name;
  }
  [[nodiscard]] std::string Why(const std::string& name) const {
    const auto apart = CheckApart(Path(name), Path("root"), {Path("hot"), "/gone"});
    return apart ? "" : Describe(apart.Error());
  }
  os::PrivateDirectory m_Place;
};

TEST_F(FolderPlaces, a_folder_lies_neither_in_the_data_root_nor_in_a_hot_folder_nor_holds_one) {
  for (const char* name : {"root", "root/server"})
    EXPECT_NE(Why(name).find("is in the data root"), std::string::npos) << Why(name);
  const auto above = CheckApart(std::filesystem::canonical(m_Place.Path()), Path("root"), {});
  ASSERT_FALSE(above);
  EXPECT_NE(Describe(above.Error()).find("holds the data root"), std::string::npos);
  EXPECT_EQ(Why("hot"), "'" + Path("hot") + "' is a hot folder already");
  EXPECT_EQ(Why("hot/below"),
            "'" + Path("hot/below") + "' is in the hot folder '" + Path("hot") + "'");
  const auto holds = CheckApart(Path("hot"), Path("root"), {Path("hot/below")});
  ASSERT_FALSE(holds);
  EXPECT_NE(Describe(holds.Error()).find("holds the hot folder"), std::string::npos);
  EXPECT_EQ(Why("hotter"), "");
  EXPECT_EQ(Why("other"), "");
}

TEST_F(FolderPlaces, a_path_is_made_full_and_plain) {
  std::filesystem::create_directory_symlink(Path("hot"), Path("way"));
  EXPECT_EQ(PathForList(Path("other/../hot/")).ValueOr("failed"), Path("hot"));
  EXPECT_EQ(PathForList(Path("way/below")).ValueOr("failed"), Path("hot/below"));
}

TEST_F(FolderPlaces, no_link_no_file_and_nothing_missing_becomes_a_hot_folder) {
  std::filesystem::create_directory_symlink(Path("hot"), Path("way"));
  std::ofstream(Path("file")) << "x";
  std::filesystem::create_directory(Path("no\xff"));
  for (const auto& [name, why] :
       std::vector<std::pair<const char*, const char*>>{{"way", "is a link"},
                                                        {"way/", "is a link"},
                                                        {"file", "is no folder"},
                                                        {"missing", "there is no folder"},
                                                        {"no\xff", "no UTF-8"}}) {
    const auto path = PathForList(Path(name));
    ASSERT_FALSE(path) << name;
    EXPECT_NE(Describe(path.Error()).find(why), std::string::npos) << Describe(path.Error());
  }
  EXPECT_FALSE(PathForList(""));
}

TEST_F(FolderPlaces, the_list_is_written_for_this_user_alone_and_read_again) {
  EXPECT_EQ(FolderListText(Path("root")).ValueOr("failed"), "");
  EXPECT_TRUE(FoldersOf(Path("root"))->empty());
  ASSERT_TRUE(WriteFolderList(Path("root"), List));
  EXPECT_EQ(FoldersOf(Path("root"))->size(), 2U);
  EXPECT_EQ(std::filesystem::status(FolderListPath(Path("root"))).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  EXPECT_FALSE(WriteFolderList(Path("none"), List));
}

}  // namespace
}  // namespace rastrel::server
