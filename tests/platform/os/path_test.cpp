#include "rastrel/platform/os/path.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "rastrel/platform/os/shared_library.h"
#include "rastrel/platform/os/text.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace os = rastrel::os;
using rastrel::test::EnvironmentGuard;
using ScratchDirectory = rastrel::test::MemoryScratchDirectory;

namespace {

class InDirectory {
 public:
  explicit InDirectory(const std::string& path) : m_Old(std::filesystem::current_path()) {
    std::filesystem::current_path(path);
  }
  ~InDirectory() { std::filesystem::current_path(m_Old); }
  InDirectory(const InDirectory&) = delete;
  InDirectory& operator=(const InDirectory&) = delete;

 private:
  std::filesystem::path m_Old;
};

}  // namespace

TEST(ToNative, an_empty_path_stays_empty) { EXPECT_EQ(os::ToNative(L""), ""); }

TEST(ToNative, backslashes_become_slashes) {
  EXPECT_EQ(os::ToNative(L"/no\\such\\place"), "/no/such/place");
  EXPECT_EQ(os::ToNative(L"\\"), "/");
}

TEST(ToNative, a_drive_letter_becomes_a_folder_of_the_data_root) {
  const EnvironmentGuard home("RASTREL_HOME", "/no/root");
  EXPECT_EQ(os::ToNative(L"C:\\a\\b.ps"), "/no/root/drive_c/a/b.ps");
  EXPECT_EQ(os::ToNative(L"z:/a"), "/no/root/drive_z/a");
  EXPECT_EQ(os::ToNative(L"C:"), "/no/root/drive_c");
  EXPECT_EQ(os::ToNative(L"C:\\"), "/no/root/drive_c/");
  EXPECT_EQ(os::ToNative(L"C:rel\\x"), "/no/root/drive_c/rel/x");
}

TEST(ToNative, only_a_letter_before_the_colon_is_a_drive) {
  EXPECT_EQ(os::ToNative(L"1:\\a"), "1:/a");
  EXPECT_EQ(os::ToNative(L"\xC4:\\a"), "\xC3\x84:/a");
  EXPECT_EQ(os::ToNative(L"ab:c"), "ab:c");
}

TEST(ToNative, network_paths_and_doubled_and_closing_separators_stay) {
  EXPECT_EQ(os::ToNative(L"\\\\server\\share\\x"), "//server/share/x");
  EXPECT_EQ(os::ToNative(L"//"), "//");
  EXPECT_EQ(os::ToNative(L"/no//such\\\\place\\"), "/no//such//place/");
}

TEST(ToNative, a_component_is_found_ignoring_case_where_it_is_missing_as_spelled) {
  const ScratchDirectory scratch;
  scratch.Write("Queue/Rip/CoreRast.exe", "");
  EXPECT_EQ(os::ToNative(scratch.Wide() + L"\\QUEUE\\rip\\corerast.EXE"),
            scratch.Path("Queue/Rip/CoreRast.exe"));
  EXPECT_EQ(os::ToNative(scratch.Wide() + L"\\QUEUE\\\\rip\\"), scratch.Path("Queue//Rip/"));
}

TEST(ToNative, the_spelling_that_exists_is_taken_before_any_other) {
  const ScratchDirectory scratch;
  scratch.Write("a/one", "");
  scratch.Write("A/two", "");
  EXPECT_EQ(os::ToNative(scratch.Wide("a/one")), scratch.Path("a/one"));
  // "a" exists as spelled, so nothing is looked for in "A".
  EXPECT_EQ(os::ToNative(scratch.Wide("a/two")), scratch.Path("a/two"));
}

TEST(ToNative, of_several_matches_the_first_in_byte_order_is_taken) {
  const ScratchDirectory scratch;
  for (const char* name : {"file", "FILE", "File", "fILE"}) scratch.Write(name, "");
  EXPECT_EQ(os::ToNative(scratch.Wide("filE")), scratch.Path("FILE"));
}

TEST(ToNative, missing_names_keep_their_spelling_below_the_existing_part) {
  const ScratchDirectory scratch;
  scratch.Write("Dir/x", "");
  EXPECT_EQ(os::ToNative(scratch.Wide("DIR") + L"\\New\\Name.TXT"),
            scratch.Path("Dir/New/Name.TXT"));
}

TEST(ToNative, only_ascii_letters_are_compared_without_case) {
  const ScratchDirectory scratch;
  scratch.Write("\xC3\x84.txt", "");
  EXPECT_EQ(os::ToNative(scratch.Wide() + L"/\xC4.TXT"), scratch.Path("\xC3\x84.txt"));
  EXPECT_EQ(os::ToNative(scratch.Wide() + L"/\xE4.txt"), scratch.Path("\xC3\xA4.txt"));
}

TEST(ToNative, a_relative_path_is_looked_up_in_the_present_directory) {
  const ScratchDirectory scratch;
  scratch.Write("Sub/File", "");
  const InDirectory there(scratch.Path());
  EXPECT_EQ(os::ToNative(L"sub\\FILE"), "Sub/File");
  EXPECT_EQ(os::ToNative(L".\\sub"), "./Sub");
}

TEST(ToNative, a_link_to_nowhere_exists_as_it_is_spelled) {
  const ScratchDirectory scratch;
  scratch.Write("LINK", "");
  ASSERT_EQ(::symlink("/no/such/target", scratch.Path("link").c_str()), 0);
  EXPECT_EQ(os::ToNative(scratch.Wide("link")), scratch.Path("link"));
  EXPECT_EQ(os::ToNative(scratch.Wide("link/x")), scratch.Path("link/x"));
}

TEST(ToNative, a_file_in_the_middle_leaves_the_rest_as_spelled) {
  const ScratchDirectory scratch;
  scratch.Write("file", "");
  EXPECT_EQ(os::ToNative(scratch.Wide("file") + L"\\x\\Y"), scratch.Path("file/x/Y"));
}

TEST(ToNative, the_drives_root_is_looked_up_too) {
  const ScratchDirectory scratch;
  const EnvironmentGuard home("RASTREL_HOME", scratch.Path());
  scratch.Write("drive_c/tmp/testpage.ps", "");
  EXPECT_EQ(os::ToNative(L"C:\\TMP\\TestPage.PS"), scratch.Path("drive_c/tmp/testpage.ps"));
}

TEST(ToNative, a_path_beyond_every_limit_is_no_trouble) {
  const std::wstring longName(5000, L'n');
  EXPECT_EQ(os::ToNative(L"/" + longName), "/" + std::string(5000, 'n'));
}

TEST(FromNative, slashes_stay_and_letters_are_decoded) {
  EXPECT_EQ(os::FromNative("/a/\xC3\xA9"), L"/a/\xE9");
  EXPECT_EQ(os::FromNative(""), L"");
}

TEST(FromNative, bytes_that_text_can_not_spell_are_kept_and_shown_as_the_replacement) {
  EXPECT_EQ(os::FromNative("/\xC3\xA9\xFF/\xC3"), L"/\xE9\xDCFF/\xDCC3");
  EXPECT_EQ(os::FromNative("a\\b"),
            L"a\xDC5C"
            L"b");
  EXPECT_EQ(os::Utf8FromWide(os::FromNative("\xFFx")), "\xEF\xBF\xBDx");
}

TEST(FromNative, a_relative_name_that_begins_like_a_drive_stays_a_name) {
  EXPECT_EQ(os::FromNative("c:job.ps"), L"./c:job.ps");
  EXPECT_EQ(os::FromNative("ab:c"), L"ab:c");
}

// Every byte but zero at the front, in the middle and at the end of a name.
TEST(FromNative, every_name_comes_back_as_it_was) {
  for (int value = 1; value < 256; ++value) {
    const char byte = static_cast<char>(value);
    for (const std::string& path :
         {std::string("/no/such/") + byte, std::string("/no/such/") + byte + "b",
          std::string("/no/such/\xC3\xA9") + byte + "\xF0\x9F\x96\xA8"}) {
      EXPECT_EQ(os::ToNative(os::FromNative(path)), path) << value;
    }
  }
}

TEST(ToNative, only_bytes_that_FromNative_keeps_come_back) {
  // No way to spell a separator, a dot or a zero byte that a check of the text would not see.
  EXPECT_EQ(os::ToNative(L"/a\xDC2F\xDC2E\xDC00"), "/a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(CommandLinePath, is_one_without_quotes_backslashes_control_characters_and_bad_bytes) {
  EXPECT_TRUE(os::CheckForCommandLine("/home/J\xC3\xB6rg O'Neil/>&$(x)/\xF0\x9F\x96\xA8"));
  const auto failureOf = [](const std::string& path) {
    const auto checked = os::CheckForCommandLine(path);
    return checked ? std::string() : rastrel::Describe(checked.Error());
  };
  const std::string end = ", which can't be passed to the programs of a job";
  EXPECT_EQ(failureOf("/a\"b"), "the path '/a\"b' holds a double quote" + end);
  EXPECT_EQ(failureOf("/a\\b"), "the path '/a\\b' holds a backslash" + end);
  EXPECT_EQ(failureOf("/a\nb"), "the path '/a?b' holds a control character" + end);
  EXPECT_EQ(failureOf("/a\xFF"), "the path '/a\xEF\xBF\xBD' holds bytes that are no UTF-8" + end);
}

TEST(DataRoot, the_environment_decides_at_every_call) {
  const EnvironmentGuard home("HOME", "/home/someone/");
  const EnvironmentGuard data("XDG_DATA_HOME", "/data/");
  {
    const EnvironmentGuard own("RASTREL_HOME", "/own//");
    EXPECT_EQ(os::DataRoot(), "/own");
  }
  const EnvironmentGuard own("RASTREL_HOME", nullptr);
  EXPECT_EQ(os::DataRoot(), "/data/rastrel");
  const EnvironmentGuard relative("XDG_DATA_HOME", "not/absolute");
  EXPECT_EQ(os::DataRoot(), "/home/someone/.local/share/rastrel");
  const EnvironmentGuard none("XDG_DATA_HOME", nullptr);
  EXPECT_EQ(os::DataRoot(), "/home/someone/.local/share/rastrel");
}

TEST(DataRoot, without_a_home_variable_the_user_database_has_the_home) {
  const EnvironmentGuard own("RASTREL_HOME", nullptr);
  const EnvironmentGuard data("XDG_DATA_HOME", nullptr);
  const EnvironmentGuard home("HOME", nullptr);
  EXPECT_TRUE(os::DataRoot().starts_with('/'));
  EXPECT_TRUE(os::DataRoot().ends_with("/.local/share/rastrel"));
}

TEST(DataRoot, a_relative_root_is_taken_from_the_present_directory) {
  const ScratchDirectory scratch;
  const InDirectory there(scratch.Path());
  const EnvironmentGuard own("RASTREL_HOME", "here/root");
  EXPECT_EQ(os::DataRoot(), std::filesystem::canonical(scratch.Path()).string() + "/here/root");
}

TEST(DataRoot, a_relative_root_stays_where_it_was_at_the_first_look) {
  const ScratchDirectory scratch;
  const ScratchDirectory other;
  const EnvironmentGuard own("RASTREL_HOME", "first/look");
  const InDirectory there(scratch.Path());
  const std::string first = os::DataRoot();
  EXPECT_EQ(first, std::filesystem::canonical(scratch.Path()).string() + "/first/look");
  const InDirectory elsewhere(other.Path());
  EXPECT_EQ(os::DataRoot(), first);
}

TEST(SplitPath, parts_are_as_the_path_writes_them) {
  struct Row {
    std::wstring path, drive, directory, name, extension;
  };
  const Row rows[] = {
      {L"", L"", L"", L"", L""},
      {L"C:\\a\\b.ps", L"C:", L"\\a\\", L"b", L".ps"},
      {L"c:b", L"c:", L"", L"b", L""},
      {L"C:", L"C:", L"", L"", L""},
      {L"/a/b.c/d", L"", L"/a/b.c/", L"d", L""},
      {L"a\\b/c.tar.gz", L"", L"a\\b/", L"c.tar", L".gz"},
      {L"dir/", L"", L"dir/", L"", L""},
      {L".profile", L"", L"", L"", L".profile"},
      {L"a/..", L"", L"a/", L".", L"."},
      {L"name.", L"", L"", L"name", L"."},
      {L"\\\\server\\share\\x.y", L"", L"\\\\server\\share\\", L"x", L".y"},
  };
  for (const Row& row : rows) {
    const os::PathParts parts = os::SplitPath(row.path);
    EXPECT_EQ(parts.drive, row.drive);
    EXPECT_EQ(parts.directory, row.directory);
    EXPECT_EQ(parts.name, row.name);
    EXPECT_EQ(parts.extension, row.extension);
    EXPECT_EQ(parts.drive + parts.directory + parts.name + parts.extension, row.path);
  }
}

TEST(EndsInSeparator, both_separators_count) {
  EXPECT_TRUE(os::EndsInSeparator(L"a/"));
  EXPECT_TRUE(os::EndsInSeparator(L"a\\"));
  EXPECT_FALSE(os::EndsInSeparator(L"a"));
  EXPECT_FALSE(os::EndsInSeparator(L""));
}

TEST(WithClosingBackslash, one_is_added_only_where_no_separator_stands) {
  EXPECT_EQ(os::WithClosingBackslash(L"a"), L"a\\");
  EXPECT_EQ(os::WithClosingBackslash(L"a/"), L"a/");
  EXPECT_EQ(os::WithClosingBackslash(L"a\\"), L"a\\");
  EXPECT_EQ(os::WithClosingBackslash(L""), L"\\");
}

TEST(ExecutablePath, is_the_file_of_this_program_and_holds_this_code) {
  EXPECT_EQ(os::ExecutablePath(), std::filesystem::read_symlink("/proc/self/exe").string());
  // The tests hold the library's objects themselves.
  EXPECT_EQ(os::ModulePath(), os::ExecutablePath());
}

// The library's code as a host has it that loads a shared object with the library in it.
TEST(ModulePath, is_the_shared_object_that_holds_the_code) {
  const auto module = os::SharedLibrary::Open(RASTREL_TEST_MODULE);
  ASSERT_TRUE(static_cast<bool>(module)) << module.Error().why;
  const char* (*path)() = nullptr;
  ASSERT_TRUE(module->Bind(path, "PathOfThisModule"));
  EXPECT_EQ(std::string(path()), std::filesystem::canonical(RASTREL_TEST_MODULE).string());
}

TEST(CurrentDirectory, follows_the_process) {
  const ScratchDirectory scratch;
  const InDirectory there(scratch.Path());
  EXPECT_EQ(os::CurrentDirectory(), std::filesystem::current_path().string());
}

TEST(CurrentDirectory, one_that_was_removed_is_empty) {
  const ScratchDirectory scratch;
  std::filesystem::create_directory(scratch.Path("gone"));
  const InDirectory there(scratch.Path("gone"));
  ASSERT_EQ(::rmdir(scratch.Path("gone").c_str()), 0);
  EXPECT_EQ(os::CurrentDirectory(), "");
}

TEST(EnvironmentValue, a_variable_that_is_not_set_is_empty) {
  const EnvironmentGuard unset("RASTREL_TEST_VARIABLE", nullptr);
  EXPECT_EQ(os::EnvironmentValue("RASTREL_TEST_VARIABLE"), "");
  const EnvironmentGuard set("RASTREL_TEST_VARIABLE", "value");
  EXPECT_EQ(os::EnvironmentValue("RASTREL_TEST_VARIABLE"), "value");
}
