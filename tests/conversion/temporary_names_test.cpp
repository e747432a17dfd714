#include "rastrel/conversion/temporary_names.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/text.h"
#include "tests/support/library_fixture.h"

namespace os = rastrel::os;
using rastrel::conversion::MakeRipTempName;

namespace {

using RipTempName = rastrel::test::LibraryTest;

TEST_F(RipTempName, is_vk_and_six_characters_in_the_rip_directory) {
  std::wstring name;
  ASSERT_TRUE(MakeRipTempName(name, L".ps"));
  const std::wstring directory = CExePaths::Instance().m_RipDir;
  ASSERT_EQ(name.size(), directory.size() + 2 + 6 + 3);
  EXPECT_TRUE(name.starts_with(directory + L"vk"));
  EXPECT_TRUE(name.ends_with(L".ps"));
  const std::wstring own = name.substr(directory.size());
  EXPECT_EQ(os::LowerAscii(own), own) << "a name whose case is lowered stays the same";
}

TEST_F(RipTempName, differs_from_one_call_to_the_next) {
  std::wstring one;
  std::wstring other;
  ASSERT_TRUE(MakeRipTempName(one, L""));
  ASSERT_TRUE(MakeRipTempName(other, L""));
  EXPECT_NE(one, other);
}

TEST_F(RipTempName, may_have_259_characters_before_its_suffix_and_no_more) {
  std::wstring& directory = CExePaths::Instance().m_RipDir;
  const std::wstring suffix = L".suffix";
  for (const std::size_t length : {258U, 259U, 260U}) {
    directory = L"/nowhere/" + std::wstring(length - 8 - 9, L'd');
    std::wstring name = L"old";
    EXPECT_EQ(MakeRipTempName(name, suffix.c_str()), length < 260) << length;
    EXPECT_EQ(name.size(), length < 260 ? length + suffix.size() : 3);
  }
}

TEST_F(RipTempName, fails_without_random_bytes) {
  const os::SystemCallsGuard guard;
  os::Calls().random = [](void*, std::size_t) -> ssize_t { return errno = ENOSYS, -1; };
  std::wstring name = L"old";
  EXPECT_FALSE(MakeRipTempName(name, L".ps"));
  EXPECT_EQ(name, L"old");
}

TEST_F(RipTempName, passes_over_names_that_are_taken_and_fails_if_all_are) {
  static int rounds;
  rounds = 0;
  const os::SystemCallsGuard guard;
  os::Calls().random = [](void* bytes, std::size_t count) -> ssize_t {
    // The same letter until the third round.
    std::fill_n(static_cast<unsigned char*>(bytes), count,
                static_cast<unsigned char>(++rounds < 3 ? 0 : 1));
    return static_cast<ssize_t>(count);
  };
  m_Library.Directory().Write("Queue/rip/vkaaaaaa", "");
  std::wstring name;
  ASSERT_TRUE(MakeRipTempName(name, L""));
  EXPECT_TRUE(name.ends_with(L"vkbbbbbb"));
  EXPECT_EQ(rounds, 3);
  m_Library.Directory().Write("Queue/rip/vkbbbbbb", "");
  rounds = 3;
  EXPECT_FALSE(MakeRipTempName(name, L""));
  EXPECT_EQ(rounds - 3, 100) << "attempts";
}

}  // namespace
