// Putting a text in front of a file, and the files that each failing call leaves.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "rastrel/conversion/prepend.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/scratch_directory.h"

namespace os = rastrel::os;
using rastrel::conversion::PrependToFile;
using rastrel::test::OpenDescriptors;
using rastrel::test::OrdinaryUser;
using rastrel::test::ScratchDirectory;

namespace {

os::SystemCalls machine;
int countdown = 0;  // how many calls of the failing kind still go through

class Prepend : public ::testing::Test {
 protected:
  Prepend() : m_Descriptors(OpenDescriptors()) {
    m_Directory.Write("sign.ps", "content");
    machine = os::Calls();
    countdown = 0;
  }
  ~Prepend() override { EXPECT_EQ(OpenDescriptors(), m_Descriptors); }

  bool Run(const wchar_t* text = L"head\r\n") {
    return PrependToFile(m_Directory.Wide("sign.ps").c_str(), text);
  }
  [[nodiscard]] std::string Content() const { return m_Directory.Read("sign.ps"); }
  /// The contents of the other files in the directory; each must have a temporary name.
  [[nodiscard]] std::vector<std::string> LeftBehind() const {
    std::vector<std::string> contents;
    for (const auto& entry : std::filesystem::directory_iterator(m_Directory.Path())) {
      const std::string name = entry.path().filename();
      if (name == "sign.ps") continue;
      EXPECT_TRUE(name.starts_with("vktmp") && name.size() == 11) << name;
      contents.push_back(m_Directory.Read(name));
    }
    return contents;
  }

  ScratchDirectory m_Directory;
  os::SystemCallsGuard m_Guard;
  std::size_t m_Descriptors;
};

using Contents = std::vector<std::string>;

TEST_F(Prepend, puts_the_text_in_front_and_leaves_nothing_else) {
  EXPECT_TRUE(Run());
  EXPECT_EQ(Content(), "head\r\ncontent");
  EXPECT_EQ(LeftBehind(), Contents());
}

TEST_F(Prepend, writes_windows_1252_and_question_marks_for_other_characters) {
  EXPECT_TRUE(Run(L"\u00e4\u20ac\u5207\n"));
  EXPECT_EQ(Content(), "\xE4\x80?\ncontent");
}

TEST_F(Prepend, of_no_text_or_to_an_empty_file_joins_all_the_same) {
  EXPECT_TRUE(Run(L""));
  EXPECT_EQ(Content(), "content");
  m_Directory.Write("sign.ps", "");
  EXPECT_TRUE(Run());
  EXPECT_EQ(Content(), "head\r\n");
}

TEST_F(Prepend, joins_files_of_one_piece_less_one_byte_a_piece_and_one_byte_more) {
  const std::size_t piece = std::size_t{512} << 10;
  for (const std::size_t size : {piece - 1, piece, piece + 1, 3 * piece + 7}) {
    std::string content(size, 'c');
    for (std::size_t at = 0; at < size; at += 997) content[at] = static_cast<char>('a' + at % 23);
    m_Directory.Write("sign.ps", content);
    EXPECT_TRUE(Run());
    EXPECT_EQ(Content(), "head\r\n" + content) << size;
  }
}

TEST_F(Prepend, keeps_the_permission_bits) {
  std::filesystem::permissions(m_Directory.Path("sign.ps"), std::filesystem::perms::owner_read);
  EXPECT_TRUE(Run());
  struct stat state {};
  ASSERT_EQ(::stat(m_Directory.Path("sign.ps").c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 0777, 0400U);
}

TEST_F(Prepend, goes_on_after_short_reads_and_writes_and_interruptions) {
  os::Calls().read = [](int descriptor, void* bytes, std::size_t count) -> ssize_t {
    if (++countdown % 2 == 0) return errno = EINTR, -1;
    return machine.read(descriptor, bytes, std::min<std::size_t>(count, 3));
  };
  os::Calls().write = [](int descriptor, const void* bytes, std::size_t count) -> ssize_t {
    if (++countdown % 3 == 0) return errno = EINTR, -1;
    return machine.write(descriptor, bytes, std::min<std::size_t>(count, 2));
  };
  EXPECT_TRUE(Run());
  EXPECT_EQ(Content(), "head\r\ncontent");
}

TEST_F(Prepend, without_room_to_reserve_fills_the_file_all_the_same) {
  os::Calls().reserve = [](int, off64_t) { return errno = EOPNOTSUPP, -1; };
  EXPECT_TRUE(Run());
  EXPECT_EQ(Content(), "head\r\ncontent");
}

TEST_F(Prepend, reserves_room_beyond_the_end_only) {
  os::Calls().reserve = [](int descriptor, off64_t bytes) {
    EXPECT_EQ(bytes, 13);
    return machine.reserve(descriptor, off64_t{1} << 20);
  };
  EXPECT_TRUE(Run());
  EXPECT_EQ(Content(), "head\r\ncontent");
}

TEST_F(Prepend, without_a_name_leaves_all_as_it_was) {
  os::Calls().random = [](void*, std::size_t) -> ssize_t { return errno = ENOSYS, -1; };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Content(), "content");
  EXPECT_EQ(LeftBehind(), Contents());
}

TEST_F(Prepend, that_can_make_no_file_leaves_all_as_it_was) {
  os::Calls().open = [](const char*, int, mode_t) { return errno = EACCES, -1; };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Content(), "content");
  EXPECT_EQ(LeftBehind(), Contents());
}

TEST_F(Prepend, that_can_not_open_the_file_deletes_the_new_one) {
  os::Calls().open = [](const char* path, int flags, mode_t mode) {
    if (std::strstr(path, "sign.ps") != nullptr) return errno = EACCES, -1;
    return machine.open(path, flags, mode);
  };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Content(), "content");
  EXPECT_EQ(LeftBehind(), Contents());
}

TEST_F(Prepend, to_a_missing_file_leaves_nothing) {
  std::filesystem::remove(m_Directory.Path("sign.ps"));
  EXPECT_FALSE(Run());
  EXPECT_EQ(LeftBehind(), Contents());
  EXPECT_FALSE(m_Directory.Has("sign.ps"));
}

TEST_F(Prepend, to_a_pipe_or_a_directory_does_not_wait) {
  std::filesystem::remove(m_Directory.Path("sign.ps"));
  ASSERT_EQ(::mkfifo(m_Directory.Path("sign.ps").c_str(), 0600), 0);
  EXPECT_FALSE(Run());
  EXPECT_EQ(LeftBehind(), Contents());
  std::filesystem::remove(m_Directory.Path("sign.ps"));
  std::filesystem::create_directory(m_Directory.Path("sign.ps"));
  EXPECT_FALSE(Run());
  EXPECT_EQ(LeftBehind(), Contents());
}

TEST_F(Prepend, that_can_not_write_the_text_copies_nothing_and_leaves_the_new_file) {
  os::Calls().write = [](int, const void*, std::size_t) -> ssize_t { return errno = ENOSPC, -1; };
  os::Calls().read = [](int descriptor, void* bytes, std::size_t count) -> ssize_t {
    ++countdown;
    return machine.read(descriptor, bytes, count);
  };
  EXPECT_FALSE(Run());
  EXPECT_EQ(countdown, 0) << "the file is not even read";
  EXPECT_EQ(Content(), "content");
  EXPECT_EQ(LeftBehind(), Contents{""});
}

TEST_F(Prepend, that_can_not_read_leaves_the_file_and_the_new_one_with_its_text) {
  os::Calls().read = [](int, void*, std::size_t) -> ssize_t { return errno = EIO, -1; };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Content(), "content");
  EXPECT_EQ(LeftBehind(), Contents{"head\r\n"});
}

TEST_F(Prepend, whose_disk_gets_full_leaves_the_file_and_the_incomplete_copy) {
  countdown = 2;
  os::Calls().write = [](int descriptor, const void* bytes, std::size_t count) -> ssize_t {
    if (countdown-- > 0) return machine.write(descriptor, bytes, std::min<std::size_t>(count, 6));
    return errno = ENOSPC, -1;
  };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Content(), "content");
  EXPECT_EQ(LeftBehind(), Contents{"head\r\nconten"});
}

TEST_F(Prepend, takes_a_write_of_nothing_as_a_failure) {
  os::Calls().write = [](int, const void*, std::size_t) -> ssize_t { return 0; };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Content(), "content");
  EXPECT_EQ(LeftBehind(), Contents{""});
}

TEST_F(Prepend, that_can_not_delete_the_file_leaves_both_and_says_so) {
  os::Calls().unlink = [](const char*) { return errno = EPERM, -1; };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Content(), "content");
  EXPECT_EQ(LeftBehind(), Contents{"head\r\ncontent"});
}

TEST_F(Prepend, renames_even_after_a_failed_delete_and_still_fails) {
  os::Calls().unlink = [](const char* path) {
    machine.unlink(path);  // somebody else deleted it meanwhile
    return errno = ENOENT, -1;
  };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Content(), "head\r\ncontent");
  EXPECT_EQ(LeftBehind(), Contents());
}

TEST_F(Prepend, that_can_not_rename_keeps_the_data_in_the_new_file) {
  os::Calls().rename_new = [](const char*, const char*) { return errno = EIO, -1; };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Content(), "(none)");
  EXPECT_EQ(LeftBehind(), Contents{"head\r\ncontent"});
}

TEST_F(Prepend, works_where_the_file_system_can_not_refuse_to_replace) {
  os::Calls().rename_new = [](const char*, const char*) { return errno = EINVAL, -1; };
  EXPECT_TRUE(Run());
  EXPECT_EQ(Content(), "head\r\ncontent");
  os::Calls().unlink = [](const char*) { return errno = EPERM, -1; };
  EXPECT_FALSE(Run());
  EXPECT_EQ(Content(), "head\r\ncontent") << "replaced by nothing";
}

TEST_F(Prepend, in_a_directory_without_write_access_leaves_the_file_untouched) {
  std::filesystem::permissions(m_Directory.Path(), static_cast<std::filesystem::perms>(0555));
  {
    const OrdinaryUser user;
    EXPECT_FALSE(Run());
  }
  std::filesystem::permissions(m_Directory.Path(), std::filesystem::perms::owner_all);
  EXPECT_EQ(Content(), "content");
  EXPECT_EQ(LeftBehind(), Contents());
}

}  // namespace
