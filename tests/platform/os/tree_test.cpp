#include "rastrel/platform/os/tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <string>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/support/environment_guard.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/scratch_directory.h"

namespace fs = std::filesystem;
namespace os = rastrel::os;
using rastrel::test::EnvironmentGuard;
using rastrel::test::OpenDescriptors;
using rastrel::test::OrdinaryUser;
using ScratchDirectory = rastrel::test::MemoryScratchDirectory;

namespace {

const std::string BadName = "bad\xFFname";

// Every file below a directory with its content, every directory with "/", for comparing trees.
std::map<std::string, std::string> Content(const std::string& root) {
  std::map<std::string, std::string> content;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    const std::string name = fs::relative(entry.path(), root).string();
    if (entry.is_symlink()) {
      content[name] = "->" + fs::read_symlink(entry.path()).string();
    } else if (entry.is_directory()) {
      content[name] = "/";
    } else if (entry.is_regular_file()) {
      std::ifstream file(entry.path(), std::ios::binary);
      content[name] = {std::istreambuf_iterator<char>(file), {}};
    } else {
      content[name] = "?";
    }
  }
  return content;
}

void MakeTree(const rastrel::test::ScratchDirectory& scratch, const std::string& root) {
  scratch.Write(root + "/one", "1");
  scratch.Write(root + "/empty", "");
  scratch.Write(root + "/sub/two", std::string(300'000, '2'));
  scratch.Write(root + "/sub/deeper/three", "3");
  scratch.Write(root + "/" + BadName + "/" + BadName, "bytes");
  fs::create_directories(scratch.Path(root + "/hollow"));
}

// A chain of directories. Their path is longer than one call can take.
void MakeDeepTree(const std::string& root, int levels) {
  const int start = ::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  int present = start;
  for (int level = 0; level < levels; ++level) {
    ASSERT_EQ(::mkdirat(present, "deep", 0777), 0);
    const int next = ::openat(present, "deep", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ::close(present);
    present = next;
  }
  ::close(present);
}

}  // namespace

TEST(ListDirectory, gives_every_name_but_the_two_dots) {
  const ScratchDirectory scratch;
  scratch.Write("a", "");
  scratch.Write(".hidden", "");
  scratch.Write("\xC3\xA9", "");
  auto names = os::ListDirectory(scratch.Wide());
  ASSERT_TRUE(names);
  std::sort(names->begin(), names->end());
  EXPECT_EQ(*names, (std::vector<std::wstring>{L".hidden", L"a", L"\xE9"}));
}

TEST(ListDirectory, a_file_is_a_failure_and_an_empty_directory_is_none) {
  const ScratchDirectory scratch;
  scratch.Write("file", "");
  const auto empty =
      os::ListDirectory(os::FromNative(fs::path(scratch.Path()).parent_path().string()) + L"/none");
  ASSERT_FALSE(empty);
  EXPECT_EQ(empty.Error().error, ENOENT);
  const auto file = os::ListDirectory(scratch.Wide("file"));
  ASSERT_FALSE(file);
  EXPECT_EQ(file.Error().error, ENOTDIR);
  fs::create_directory(scratch.Path("dir"));
  const auto none = os::ListDirectory(scratch.Wide("dir"));
  ASSERT_TRUE(none);
  EXPECT_TRUE(none->empty());
}

TEST(RemoveTree, removes_all_below_and_the_directory_itself) {
  const ScratchDirectory scratch;
  MakeTree(scratch, "tree");
  const std::size_t before = OpenDescriptors();
  EXPECT_TRUE(os::RemoveTree(scratch.Wide("tree")));
  EXPECT_FALSE(scratch.Has("tree"));
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST(RemoveTree, a_closing_separator_changes_nothing) {
  const ScratchDirectory scratch;
  MakeTree(scratch, "tree");
  EXPECT_TRUE(os::RemoveTree(scratch.Wide("tree") + L"\\"));
  EXPECT_FALSE(scratch.Has("tree"));
}

TEST(RemoveTree, links_are_removed_and_never_followed) {
  const ScratchDirectory scratch;
  scratch.Write("kept/file", "x");
  MakeTree(scratch, "tree");
  ASSERT_EQ(::symlink(scratch.Path("kept").c_str(), scratch.Path("tree/sub/link").c_str()), 0);
  EXPECT_TRUE(os::RemoveTree(scratch.Wide("tree")));
  EXPECT_EQ(scratch.Read("kept/file"), "x");
}

// However the link is written: a closing separator would make the system follow it.
TEST(RemoveTree, a_link_is_no_directory_and_the_directory_it_leads_to_stays_whole) {
  const ScratchDirectory scratch;
  MakeTree(scratch, "tree");
  const auto before = Content(scratch.Path("tree"));
  ASSERT_EQ(::symlink("tree", scratch.Path("link").c_str()), 0);
  for (const wchar_t* end : {L"", L"/", L"\\", L"//", L"/.", L"/./"}) {
    EXPECT_FALSE(os::RemoveTree(scratch.Wide("link") + end)) << end;
    EXPECT_TRUE(fs::is_symlink(scratch.Path("link"))) << end;
    EXPECT_EQ(Content(scratch.Path("tree")), before) << end;
  }
}

TEST(RemoveTree, the_way_to_the_directory_may_lead_through_links) {
  const ScratchDirectory scratch;
  MakeTree(scratch, "place/tree");
  ASSERT_EQ(::symlink("place", scratch.Path("way").c_str()), 0);
  EXPECT_TRUE(os::RemoveTree(scratch.Wide("way/tree")));
  EXPECT_TRUE(fs::is_empty(scratch.Path("place")));
}

TEST(RemoveTree, a_path_without_a_last_element_is_refused) {
  const ScratchDirectory scratch;
  MakeTree(scratch, "tree");
  const auto before = Content(scratch.Path("tree"));
  for (const char* name : {"tree/.", "tree/sub/..", "tree/./"}) {
    const auto removed = os::RemoveTree(scratch.Wide(name));
    ASSERT_FALSE(removed) << name;
    EXPECT_EQ(removed.Error().error, EINVAL) << name;
  }
  EXPECT_EQ(Content(scratch.Path("tree")), before);
}

TEST(MeasureTree, counts_files_and_bytes_and_fails_at_what_it_can_not_read) {
  const ScratchDirectory scratch;
  scratch.Write("tree/a", "123");
  scratch.Write("tree/sub/b", "4567");
  ASSERT_EQ(::symlink("a", scratch.Path("tree/link").c_str()), 0);
  const auto measure = os::MeasureTree(scratch.Path("tree"));
  ASSERT_TRUE(measure);
  EXPECT_EQ(measure->files, 3U);
  EXPECT_EQ(measure->bytes, 7U);
  EXPECT_TRUE(os::FlushTree(scratch.Path("tree")));
  fs::permissions(scratch.Path("tree/sub"), fs::perms::none);
  {
    const OrdinaryUser user;
    EXPECT_FALSE(os::MeasureTree(scratch.Path("tree")));
    EXPECT_FALSE(os::FlushTree(scratch.Path("tree")));
  }
  fs::permissions(scratch.Path("tree/sub"), fs::perms::owner_all);
  EXPECT_FALSE(os::MeasureTree(scratch.Path("tree/a")));
  EXPECT_FALSE(os::MeasureTree(scratch.Path("missing")));
}

TEST(RemoveEmptyDirectory, takes_neither_a_link_nor_a_directory_that_holds_anything) {
  const ScratchDirectory scratch;
  scratch.Write("full/file", "x");
  fs::create_directory(scratch.Path("empty"));
  ASSERT_EQ(::symlink("empty", scratch.Path("link").c_str()), 0);
  for (const char* name : {"full", "link", "link/", "full/file", "missing"})
    EXPECT_FALSE(os::RemoveEmptyDirectory(scratch.Wide(name))) << name;
  EXPECT_TRUE(fs::is_symlink(scratch.Path("link")) && scratch.Has("empty") && scratch.Has("full"));
  EXPECT_TRUE(os::RemoveEmptyDirectory(scratch.Wide("empty")));
  EXPECT_FALSE(scratch.Has("empty"));
}

TEST(RemoveNativeTree, takes_any_bytes_and_names_the_path_that_fails) {
  const ScratchDirectory scratch;
  scratch.Write(BadName + "/back\\slash/file", "x");
  EXPECT_TRUE(os::RemoveNativeTree(scratch.Path(BadName)));
  EXPECT_FALSE(scratch.Has(BadName));
  const auto missing = os::RemoveNativeTree(scratch.Path(BadName));
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.Error().error, ENOENT);
  EXPECT_EQ(missing.Error().where, scratch.Path(BadName));
}

TEST(RemoveTree, a_file_is_left_alone) {
  const ScratchDirectory scratch;
  scratch.Write("file", "x");
  EXPECT_FALSE(os::RemoveTree(scratch.Wide("file")));
  EXPECT_FALSE(os::RemoveTree(scratch.Wide("none")));
  EXPECT_FALSE(os::RemoveTree(L""));
  EXPECT_EQ(scratch.Read("file"), "x");
}

TEST(RemoveTree, read_only_files_pipes_and_sockets_go_too) {
  const ScratchDirectory scratch;
  scratch.Write("tree/file", "x");
  ASSERT_EQ(::chmod(scratch.Path("tree/file").c_str(), 0), 0);
  ASSERT_EQ(::mkfifo(scratch.Path("tree/pipe").c_str(), 0600), 0);
  EXPECT_TRUE(os::RemoveTree(scratch.Wide("tree")));
}

TEST(RemoveTree, large_directories_are_removed_whole_by_several_threads_or_one) {
  for (const bool threads : {true, false}) {
    const ScratchDirectory scratch;
    for (int index = 0; index < 1500; ++index) {
      scratch.Write("tree/" + std::to_string(index), "x");
      if (index < 600) scratch.Write("tree/d" + std::to_string(index) + "/sub/f", "y");
    }
    const os::SystemCallsGuard guard;
    if (!threads)
      os::Calls().thread_create = [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) {
        return EAGAIN;
      };
    EXPECT_TRUE(os::RemoveTree(scratch.Wide("tree")));
    EXPECT_FALSE(scratch.Has("tree"));
  }
}

TEST(RemoveTree, a_directory_that_may_not_be_emptied_stays_and_the_result_is_false) {
  const OrdinaryUser user;
  const ScratchDirectory scratch;
  scratch.Write("tree/locked/file", "x");
  fs::permissions(scratch.Path("tree/locked"), fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_FALSE(os::RemoveTree(scratch.Wide("tree")));
  EXPECT_EQ(scratch.Read("tree/locked/file"), "x");
  fs::permissions(scratch.Path("tree/locked"), fs::perms::owner_all);
}

TEST(RemoveTree, an_entry_that_the_file_system_keeps_fails_the_removal) {
  // /proc can be listed, and nothing in it can be removed.
  EXPECT_FALSE(os::RemoveTree(L"/proc/self/fdinfo"));
}

TEST(RemoveTree, nesting_without_measure_fails_cleanly) {
  const ScratchDirectory scratch;
  fs::create_directory(scratch.Path("tree"));
  MakeDeepTree(scratch.Path("tree"), 1200);
  const std::size_t before = OpenDescriptors();
  EXPECT_FALSE(os::RemoveTree(scratch.Wide("tree")));
  EXPECT_EQ(OpenDescriptors(), before);
  EXPECT_EQ(std::system(("rm -rf '" + scratch.Path("tree") + "'").c_str()), 0);
}

TEST(RemoveTree, nesting_of_many_levels_is_removed) {
  const ScratchDirectory scratch;
  fs::create_directory(scratch.Path("tree"));
  MakeDeepTree(scratch.Path("tree"), 250);
  EXPECT_TRUE(os::RemoveTree(scratch.Wide("tree")));
  EXPECT_FALSE(scratch.Has("tree"));
}

TEST(CopyTreeInto, copies_content_names_permissions_and_times) {
  const ScratchDirectory scratch;
  MakeTree(scratch, "source");
  ASSERT_EQ(::chmod(scratch.Path("source/sub/two").c_str(), 0741), 0);
  const timespec times[2] = {{1, 0}, {123, 456}};
  ASSERT_EQ(::utimensat(AT_FDCWD, scratch.Path("source/one").c_str(), times, 0), 0);
  const std::size_t before = OpenDescriptors();
  EXPECT_TRUE(os::CopyTreeInto(scratch.Wide("source"), scratch.Wide("new/parent/copy")));
  EXPECT_EQ(OpenDescriptors(), before);
  EXPECT_EQ(Content(scratch.Path("new/parent/copy")), Content(scratch.Path("source")));
  EXPECT_EQ(os::StampOf(scratch.Wide("new/parent/copy/one"))->modified, 123'000'000'456);
  EXPECT_EQ(fs::status(scratch.Path("new/parent/copy/sub/two")).permissions(), fs::perms(0741));
}

TEST(CopyTreeInto, existing_files_are_replaced_and_others_stay) {
  const ScratchDirectory scratch;
  scratch.Write("source/a", "new");
  scratch.Write("source/sub/b", "new");
  scratch.Write("target/a", "much older");
  scratch.Write("target/sub/c", "other");
  EXPECT_TRUE(os::CopyTreeInto(scratch.Wide("source") + L"\\", scratch.Wide("target") + L"/"));
  EXPECT_EQ(Content(scratch.Path("target")),
            (std::map<std::string, std::string>{
                {"a", "new"}, {"sub", "/"}, {"sub/b", "new"}, {"sub/c", "other"}}));
}

TEST(CopyTreeInto, links_pipes_and_sockets_are_passed_over) {
  const ScratchDirectory scratch;
  scratch.Write("source/file", "x");
  ASSERT_EQ(::symlink("file", scratch.Path("source/link").c_str()), 0);
  ASSERT_EQ(::symlink("..", scratch.Path("source/up").c_str()), 0);
  ASSERT_EQ(::mkfifo(scratch.Path("source/pipe").c_str(), 0600), 0);
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  scratch.Path("source/socket").copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_TRUE(os::CopyTreeInto(scratch.Wide("source"), scratch.Wide("target")));
  ::close(socket);
  EXPECT_EQ(Content(scratch.Path("target")), (std::map<std::string, std::string>{{"file", "x"}}));
}

TEST(CopyTreeInto, an_entry_that_can_not_be_copied_is_passed_over_and_the_result_is_true) {
  const ScratchDirectory scratch;
  scratch.Write("source/a", "x");
  scratch.Write("source/b", "y");
  scratch.Write("source/sub/c", "z");
  fs::create_directories(scratch.Path("target/a"));  // a directory where a file belongs
  scratch.Write("target/sub", "a file where a directory belongs");
  EXPECT_TRUE(os::CopyTreeInto(scratch.Wide("source"), scratch.Wide("target")));
  EXPECT_EQ(scratch.Read("target/b"), "y");
  EXPECT_TRUE(fs::is_directory(scratch.Path("target/a")));
  EXPECT_TRUE(fs::is_regular_file(scratch.Path("target/sub")));
}

TEST(CopyTreeInto, an_unreadable_entry_is_passed_over) {
  const OrdinaryUser user;
  const ScratchDirectory scratch;
  scratch.Write("source/a", "x");
  scratch.Write("source/locked", "y");
  scratch.Write("source/sub/c", "z");
  fs::permissions(scratch.Path("source/locked"), fs::perms(0));
  fs::permissions(scratch.Path("source/sub"), fs::perms(0));
  EXPECT_TRUE(os::CopyTreeInto(scratch.Wide("source"), scratch.Wide("target")));
  EXPECT_EQ(os::TreeSize(scratch.Wide("source")), 2U);
  fs::permissions(scratch.Path("source/sub"), fs::perms(0700));
  EXPECT_EQ(Content(scratch.Path("target")), (std::map<std::string, std::string>{{"a", "x"}}));
}

TEST(CopyTreeInto, a_file_whose_copy_fails_leaves_no_half_file) {
  const ScratchDirectory scratch;
  scratch.Write("source/a", "x");
  const os::SystemCallsGuard guard;
  os::Calls().copy_range = [](int, off64_t*, int, off64_t*, size_t, unsigned) -> ssize_t {
    errno = EIO;
    return -1;
  };
  os::Calls().write = [](int, const void*, size_t) -> ssize_t {
    errno = ENOSPC;
    return -1;
  };
  EXPECT_TRUE(os::CopyTreeInto(scratch.Wide("source"), scratch.Wide("target")));
  EXPECT_FALSE(scratch.Has("target/a"));
}

TEST(CopyTreeInto, without_a_source_the_destination_is_made_and_the_result_is_false) {
  const ScratchDirectory scratch;
  scratch.Write("file", "x");
  EXPECT_FALSE(os::CopyTreeInto(scratch.Wide("none"), scratch.Wide("target")));
  EXPECT_TRUE(scratch.Has("target"));
  EXPECT_FALSE(os::CopyTreeInto(scratch.Wide("file"), scratch.Wide("target")));
  EXPECT_FALSE(os::CopyTreeInto(scratch.Wide(), scratch.Wide("file/below")));
}

TEST(CopyTreeInto, a_file_in_the_place_of_the_destination_takes_nothing) {
  const ScratchDirectory scratch;
  scratch.Write("source/a", "x");
  scratch.Write("file", "old");
  EXPECT_TRUE(os::CopyTreeInto(scratch.Wide("source"), scratch.Wide("file")));
  EXPECT_EQ(scratch.Read("file"), "old");
}

TEST(CopyTreeInto, a_directory_is_copied_into_itself_once_and_onto_itself_not_at_all) {
  const ScratchDirectory scratch;
  MakeTree(scratch, "source");
  const auto before = Content(scratch.Path("source"));
  EXPECT_TRUE(os::CopyTreeInto(scratch.Wide("source"), scratch.Wide("source")));
  EXPECT_EQ(Content(scratch.Path("source")), before);
  EXPECT_TRUE(os::CopyTreeInto(scratch.Wide("source"), scratch.Wide("source/inner/copy")));
  const auto copy = Content(scratch.Path("source/inner/copy"));
  for (const auto& [name, content] : before) EXPECT_EQ(copy.at(name), content);
  EXPECT_EQ(copy.size(),
            before.size() + 1);  // "inner" itself, without the copy that is being made in it
}

TEST(CopyTreeInto, large_directories_are_copied_whole_by_several_threads_or_one) {
  const ScratchDirectory scratch;
  for (int index = 0; index < 300; ++index) {
    scratch.Write("source/" + std::to_string(index),
                  std::string(static_cast<std::size_t>(index) * 100, 'q'));
    scratch.Write("source/d" + std::to_string(index % 40) + "/" + std::to_string(index), "y");
  }
  EXPECT_TRUE(os::CopyTreeInto(scratch.Wide("source"), scratch.Wide("many")));
  EXPECT_EQ(Content(scratch.Path("many")), Content(scratch.Path("source")));
  const os::SystemCallsGuard guard;
  os::Calls().thread_create = [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) {
    return EAGAIN;
  };
  EXPECT_TRUE(os::CopyTreeInto(scratch.Wide("source"), scratch.Wide("one")));
  EXPECT_EQ(Content(scratch.Path("one")), Content(scratch.Path("source")));
}

TEST(CopyTreeInto, nesting_without_measure_ends_cleanly) {
  const ScratchDirectory scratch;
  fs::create_directory(scratch.Path("tree"));
  MakeDeepTree(scratch.Path("tree"), 1200);
  scratch.Write("tree/file", "x");
  const std::size_t before = OpenDescriptors();
  EXPECT_TRUE(os::CopyTreeInto(scratch.Wide("tree"), scratch.Wide("copy")));
  EXPECT_EQ(OpenDescriptors(), before);
  EXPECT_EQ(scratch.Read("copy/file"), "x");
  EXPECT_EQ(os::TreeSize(scratch.Wide("tree")), 1U);
  EXPECT_FALSE(os::TryRenameTree(scratch.Wide("tree"), scratch.Wide("moved")));
  EXPECT_EQ(std::system(("rm -rf '" + scratch.Path() + "'/*").c_str()), 0);
}

TEST(MakePath, makes_every_missing_element_between_any_separators) {
  const ScratchDirectory scratch;
  EXPECT_TRUE(os::MakePath(scratch.Wide() + L"/a\\b//c\\\\d/"));
  EXPECT_TRUE(fs::is_directory(scratch.Path("a/b/c/d")));
  EXPECT_TRUE(os::MakePath(scratch.Wide() + L"/a\\b//c\\\\d/"));
}

TEST(MakePath, an_empty_path_fails_and_an_existing_one_of_any_kind_succeeds) {
  const ScratchDirectory scratch;
  scratch.Write("file", "x");
  EXPECT_FALSE(os::MakePath(L""));
  EXPECT_TRUE(os::MakePath(scratch.Wide()));
  EXPECT_TRUE(os::MakePath(scratch.Wide("file")));
  EXPECT_TRUE(os::MakePath(L"/"));
}

TEST(MakePath, a_file_in_the_way_fails_and_the_directories_before_it_stay) {
  const ScratchDirectory scratch;
  scratch.Write("new/file", "x");
  EXPECT_FALSE(os::MakePath(scratch.Wide("new/file/sub")));
  EXPECT_FALSE(os::MakePath(L"/proc/none/x"));
}

TEST(MakePath, fails_with_the_reason_for_which_the_directory_could_not_be_made) {
  const ScratchDirectory scratch;
  scratch.Write("file", "x");
  EXPECT_EQ(os::MakePath(scratch.Wide("file/sub")).Error().error, ENOTDIR);
  const std::wstring tooLong(300, L'n');
  EXPECT_EQ(os::MakePath(scratch.Wide() + L"/" + tooLong).Error().error, ENAMETOOLONG);
  // The system takes no directory there, whoever asks.
  EXPECT_NE(os::MakePath(L"/sys/rastrel").Error().error, ENOENT);
}

TEST(MakePath, a_relative_path_starts_in_the_present_directory) {
  const ScratchDirectory scratch;
  const fs::path old = fs::current_path();
  fs::current_path(scratch.Path());
  EXPECT_TRUE(os::MakePath(L"one\\two"));
  fs::current_path(old);
  EXPECT_TRUE(scratch.Has("one/two"));
}

TEST(MakePath, a_drives_root_is_never_made) {
  const ScratchDirectory scratch;
  const EnvironmentGuard home("RASTREL_HOME", scratch.Path());
  EXPECT_FALSE(os::MakePath(L"C:\\"));
  EXPECT_FALSE(os::MakePath(L"C:/"));
  EXPECT_FALSE(os::MakePath(L"C:\\\\\\"));
  EXPECT_FALSE(os::MakePath(L"C:\\a"));  // no such drive
  fs::create_directory(scratch.Path("drive_c"));
  EXPECT_TRUE(os::MakePath(L"C:\\"));
  EXPECT_TRUE(os::MakePath(L"C:\\\\a\\b"));
  EXPECT_TRUE(scratch.Has("drive_c/a/b"));
}

TEST(MakePath, the_server_of_a_network_path_is_never_made) {
  const ScratchDirectory scratch;
  const std::wstring root = L"\\\\" + scratch.Wide("server").substr(1);
  EXPECT_FALSE(os::MakePath(L"\\\\server"));
  EXPECT_FALSE(os::MakePath(L"\\\\server\\"));
  EXPECT_FALSE(os::MakePath(L"\\\\server\\\\"));
  EXPECT_FALSE(os::MakePath(L"\\\\no-such-server-here\\share\\dir"));
  // Below an existing start every element is made.
  EXPECT_TRUE(os::MakePath(root + L"\\share\\dir"));
  EXPECT_TRUE(scratch.Has("server/share/dir"));
}

TEST(TreeSize, adds_up_regular_files_and_nothing_else) {
  const ScratchDirectory scratch;
  scratch.Write("tree/a", std::string(10, 'x'));
  scratch.Write("tree/sub/b", std::string(100, 'x'));
  scratch.Write("outside", std::string(1000, 'x'));
  ASSERT_EQ(::symlink("../outside", scratch.Path("tree/link").c_str()), 0);
  ASSERT_EQ(::symlink("..", scratch.Path("tree/up").c_str()), 0);
  EXPECT_EQ(os::TreeSize(scratch.Wide("tree")), 110U);
  EXPECT_EQ(os::TreeSize(scratch.Wide("tree") + L"\\"), 110U);
  EXPECT_EQ(os::TreeSize(scratch.Wide("none")), 0U);
  EXPECT_EQ(os::TreeSize(scratch.Wide("outside")), 0U);
}

TEST(TryRenameTree, moves_a_plain_tree_as_copy_and_delete_would) {
  const ScratchDirectory scratch;
  MakeTree(scratch, "source");
  const auto content = Content(scratch.Path("source"));
  struct stat before {};
  ASSERT_EQ(::stat(scratch.Path("source/one").c_str(), &before), 0);
  EXPECT_TRUE(os::TryRenameTree(scratch.Wide("source") + L"\\", scratch.Wide("target")));
  EXPECT_FALSE(scratch.Has("source"));
  EXPECT_EQ(Content(scratch.Path("target")), content);
  struct stat after {};
  ASSERT_EQ(::stat(scratch.Path("target/one").c_str(), &after), 0);
  EXPECT_EQ(after.st_ino, before.st_ino);  // no byte was copied
}

TEST(TryRenameTree, refuses_whatever_copy_and_delete_would_treat_differently) {
  const auto refuses = [](const auto& change) {
    const ScratchDirectory scratch;
    MakeTree(scratch, "source");
    change(scratch);
    const auto before = Content(scratch.Path());
    const bool moved = os::TryRenameTree(scratch.Wide("source"), scratch.Wide("target"));
    EXPECT_EQ(Content(scratch.Path()), before);
    return !moved;
  };
  EXPECT_TRUE(refuses([](const ScratchDirectory& scratch) { scratch.Write("target/x", ""); }));
  EXPECT_TRUE(refuses([](const ScratchDirectory& scratch) { scratch.Write("TARGET", ""); }));
  EXPECT_TRUE(refuses([](const ScratchDirectory& scratch) {
    ASSERT_EQ(::symlink("/no/where", scratch.Path("target").c_str()), 0);
  }));
  EXPECT_TRUE(refuses([](const ScratchDirectory& scratch) {
    ASSERT_EQ(::symlink("one", scratch.Path("source/sub/link").c_str()), 0);
  }));
  EXPECT_TRUE(refuses([](const ScratchDirectory& scratch) {
    ASSERT_EQ(::link(scratch.Path("source/one").c_str(), scratch.Path("second").c_str()), 0);
  }));
  EXPECT_TRUE(refuses([](const ScratchDirectory& scratch) {
    ASSERT_EQ(::mkfifo(scratch.Path("source/pipe").c_str(), 0600), 0);
  }));
  EXPECT_TRUE(refuses([](const ScratchDirectory& scratch) {
    ASSERT_EQ(::chmod(scratch.Path("source/one").c_str(), 04755), 0);
  }));
}

TEST(TryRenameTree, refuses_trees_that_this_user_could_not_copy_or_remove) {
  const OrdinaryUser user;
  for (const bool directory : {true, false}) {
    const ScratchDirectory scratch;
    MakeTree(scratch, "source");
    const std::string locked = scratch.Path(directory ? "source/sub" : "source/sub/two");
    fs::permissions(locked, directory ? fs::perms(0500) : fs::perms(0200));
    EXPECT_FALSE(os::TryRenameTree(scratch.Wide("source"), scratch.Wide("target")));
    EXPECT_TRUE(scratch.Has("source/sub/two"));
    fs::permissions(locked, fs::perms(0700));
    EXPECT_TRUE(os::TryRenameTree(scratch.Wide("source"), scratch.Wide("target")));
  }
}

TEST(TryRenameTree, refuses_trees_of_somebody_else) {
  const ScratchDirectory scratch;
  fs::permissions(scratch.Path(), fs::perms(0777));
  scratch.Write("source/file", "x");
  fs::permissions(scratch.Path("source"), fs::perms(0777));
  const bool superuser = ::geteuid() == 0;
  const OrdinaryUser user;
  EXPECT_EQ(os::TryRenameTree(scratch.Wide("source"), scratch.Wide("target")), !superuser);
}

TEST(TryRenameTree, refuses_a_source_that_is_no_directory_or_a_target_without_a_parent) {
  const ScratchDirectory scratch;
  scratch.Write("file", "x");
  MakeTree(scratch, "source");
  ASSERT_EQ(::symlink("source", scratch.Path("link").c_str()), 0);
  EXPECT_FALSE(os::TryRenameTree(scratch.Wide("file"), scratch.Wide("target")));
  EXPECT_FALSE(os::TryRenameTree(scratch.Wide("link"), scratch.Wide("target")));
  EXPECT_FALSE(os::TryRenameTree(scratch.Wide("none"), scratch.Wide("target")));
  EXPECT_FALSE(os::TryRenameTree(scratch.Wide("source"), scratch.Wide("no/target")));
  EXPECT_FALSE(os::TryRenameTree(scratch.Wide("source"), scratch.Wide("source/sub/target")));
  EXPECT_FALSE(os::TryRenameTree(L"", scratch.Wide("target")));
  EXPECT_FALSE(os::TryRenameTree(scratch.Wide("source"), L""));
}

TEST(TryRenameTree, refuses_another_file_system) {
  struct stat memory {};
  struct stat temporary {};
  if (::stat("/dev/shm", &memory) != 0 || ::stat("/tmp", &temporary) != 0 ||
      memory.st_dev == temporary.st_dev)
    GTEST_SKIP() << "/tmp and /dev/shm are one file system";
  const rastrel::test::ScratchDirectory scratch("/tmp");
  const rastrel::test::ScratchDirectory other("/dev/shm");
  MakeTree(scratch, "source");
  EXPECT_FALSE(os::TryRenameTree(scratch.Wide("source"), other.Wide("target")));
  EXPECT_TRUE(os::CopyTreeInto(scratch.Wide("source"), other.Wide("target")));
  EXPECT_EQ(Content(other.Path("target")), Content(scratch.Path("source")));
}
