#include "children/corerast/page_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "rastrel/cfm/cfm2.h"
#include "rastrel/cfm/cfm_page.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/printing/pipe_reader.h"
#include "tests/support/environment_guard.h"
#include "tests/support/library_fixture.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::corerast {
namespace {

const std::vector<ListedPage> TwoPages{{"run-1", "/srv/pages/run/", "p0001"},
                                       {"run-2", "R:\\run\\", "p0002"}};

// By hand, after the format's worked example: exactly two blanks and the line feed after "<<".
TEST(PageList, is_written_to_the_byte) {
  EXPECT_EQ(FormatPageList(TwoPages),
            ">> -- C-Format 2.0 -- <<  \n"
            "begin := once\n\tid := run-1\n\tdir := /srv/pages/run/\n\ttitle := p0001\n"
            "\tcopies := 1\nend\n"
            "begin := once\n\tid := run-2\n\tdir := R:\\run\\\n\ttitle := p0002\n"
            "\tcopies := 1\nend\n");
}

TEST(PageList, of_no_page_is_its_heading) {
  EXPECT_EQ(FormatPageList({}), ">> -- C-Format 2.0 -- <<  \n");
}

TEST(PageList, reaches_the_library_page_by_page) {
  const test::LibraryRoot root;
  CCFM2 document;
  document.m_Text = os::WideFromUtf8(FormatPageList(TwoPages));
  ASSERT_TRUE(document.Parse());
  ASSERT_EQ(document.m_Pages.size(), 2U);
}

// The directories of a list's pages as the library takes them: the text comes in pieces of the
// pipe reader's size, each of which is decoded alone.
std::vector<std::wstring> DirectoriesInPieces(const std::string& list) {
  HANDLE none = INVALID_HANDLE_VALUE;
  CRipOutReader reader(&none);
  for (std::size_t at = 0; at < list.size(); at += CPipeReader::BufferSize) {
    const std::size_t count = std::min<std::size_t>(CPipeReader::BufferSize, list.size() - at);
    reader.OnData(list.data() + at, static_cast<unsigned>(count));
  }
  CCFM2 document;
  document.m_Text = reader.m_Text;
  std::vector<std::wstring> directories;
  if (!document.Parse()) return directories;
  for (const auto& page : document.m_Pages) directories.push_back(page->m_Directory);
  return directories;
}

// Names of folders with letters of one to four bytes in UTF-8, at each offset of a letter.
const std::vector<std::string> RootNames{"plain",
                                         "gr\xC3\xBC\xC3\x9F"
                                         "e",
                                         "\xE5\xB0\x8F\xE7\xAC\xA0\xE5\x8E\x9F",
                                         "a\xE2\x82\xAC\xE2\x82\xAC",
                                         "\xF0\x9F\x96\xA8\xF0\x9F\x96\xA8",
                                         "ab\xF0\x9F\x96\xA8"};

TEST(PageList, of_any_length_in_a_root_of_any_letters_reaches_the_library_in_pieces) {
  const std::string name = "0123456789abcdef0123456789abcdef";
  for (const std::string& rootName : RootNames) {
    const test::ScratchDirectory scratch;
    const std::string root = scratch.Path(rootName);
    const test::EnvironmentGuard home("RASTREL_HOME", root);
    const std::string parent = root + "/Queue/rip/System/c-out";
    std::filesystem::create_directories(parent + "/" + name);
    const auto listed = ListedPath(parent, name);
    ASSERT_TRUE(listed) << Describe(listed.Error());
    std::vector<ListedPage> pages;
    for (unsigned count = 1; count <= 300; ++count) {
      pages.push_back({name + "-" + std::to_string(count), *listed, "p0001"});
      const auto directories = DirectoriesInPieces(FormatPageList(pages));
      ASSERT_EQ(directories.size(), count) << rootName;
      for (const std::wstring& directory : directories) {
        ASSERT_EQ(directory, os::WideFromUtf8(*listed)) << rootName << " of " << count;
      }
    }
    EXPECT_TRUE(
        std::filesystem::equivalent(os::ToNative(os::WideFromUtf8(*listed)), parent + "/" + name));
  }
}

TEST(PlainValue, is_one_that_the_reader_gives_back) {
  for (const char* const value :
       {"p0001", "/srv/pages/", "R:\\a b\\", "a := b", "/Begin/End/", "/a<<b/"}) {
    EXPECT_TRUE(IsPlainValue(value)) << value;
  }
}

TEST(PlainValue, holds_no_keyword_comment_or_byte_beyond_printable_ascii) {
  for (const char* const value :
       {"", " a", "a ", "/weekend/", "/beginners/", "/a>b/", "/a>>b<</", "/a\nb/", "/a\rb/",
        "/a\tb/", "/a\x07/", "/a\x7F/", "/\xFF/", "/\xC3", "/gr\xC3\xBCn/"}) {
    EXPECT_FALSE(IsPlainValue(value)) << value;
  }
}

}  // namespace
}  // namespace rastrel::corerast
