#include "rastrel/platform/host/settings.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "rastrel/platform/host/host.h"
#include "rastrel/platform/standalone/standalone_host.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace host = rastrel::host;
using rastrel::test::EnvironmentGuard;
using rastrel::test::ScratchDirectory;

namespace {

class Korvane : public testing::Test {
 protected:
  ScratchDirectory m_Root;
  EnvironmentGuard m_Home{"RASTREL_HOME", m_Root.Path()};
  EnvironmentGuard m_Resources{"RASTREL_RESOURCES", "/no/resources"};
};

}  // namespace

TEST_F(Korvane, a_whole_number_is_read_and_anything_else_gives_the_default) {
  m_Root.Write("settings.ini",
               "[s]\nzero = 0\nplain = 65001\nsigned = -7\nplus = +7\nhex = 0x10\nwords = seven\n"
               "blank = 1 2\nempty =\nfraction = 1.5\nsign = -\n"
               "most = 2147483647\nmore = 2147483648\nleast = -2147483648\nless = -2147483649\n"
               "huge = 99999999999999999999999\n");
  const struct {
    const wchar_t* key;
    int value;
  } rows[] = {{L"zero", 0},      {L"plain", 65001}, {L"signed", -7},       {L"plus", 7},
              {L"hex", 42},      {L"words", 42},    {L"blank", 42},        {L"empty", 42},
              {L"fraction", 42}, {L"sign", 42},     {L"most", 2147483647}, {L"more", 42},
              {L"less", 42},     {L"huge", 42},     {L"missing", 42}};
  for (const auto& row : rows)
    EXPECT_EQ(GetIntKorvane(L"S", row.key, 42, DS_USER, nullptr), row.value) << row.key;
  EXPECT_EQ(GetIntKorvane(L"s", L"least", 42, DS_USER, nullptr), -2147483647 - 1);
}

TEST_F(Korvane, a_text_is_cut_to_the_buffer_and_a_missing_one_leaves_it) {
  m_Root.Write("settings.ini", "[s]\nk = 12345\n");
  wchar_t buffer[8] = L"before";
  EXPECT_NE(GetStringKorvane(L"s", L"k", buffer, 6, DS_USER, nullptr), 0);
  EXPECT_EQ(std::wstring(buffer), L"12345");
  EXPECT_NE(GetStringKorvane(L"s", L"k", buffer, 5, DS_USER, nullptr), 0);
  EXPECT_EQ(std::wstring(buffer), L"1234");
  EXPECT_NE(GetStringKorvane(L"s", L"k", buffer, 1, DS_USER, nullptr), 0);
  EXPECT_EQ(std::wstring(buffer), L"");
  buffer[0] = L'x';
  EXPECT_NE(GetStringKorvane(L"s", L"k", buffer, 0, DS_USER, nullptr), 0);
  EXPECT_EQ(GetStringKorvane(L"s", L"none", buffer, 8, DS_USER, nullptr), 0);
  EXPECT_EQ(buffer[0], L'x');
}

TEST_F(Korvane, the_other_form_empties_the_buffer_for_a_missing_text) {
  wchar_t buffer[8] = L"before";
  EXPECT_EQ(GetStringKorvaneNull(L"s", L"none", buffer, 8, DS_USER, nullptr), 0);
  EXPECT_EQ(std::wstring(buffer), L"");
  EXPECT_NE(WriteStringKorvane(L"s", L"k", L"v", DS_USER, nullptr), 0);
  EXPECT_NE(GetStringKorvaneNull(L"s", L"k", buffer, 8, DS_USER, nullptr), 0);
  EXPECT_EQ(std::wstring(buffer), L"v");
}

TEST_F(Korvane, a_written_value_is_read_back_and_is_in_the_file) {
  EXPECT_NE(WriteIntKorvane(L"Debug", L"level", -5, DS_USER, nullptr), 0);
  EXPECT_NE(WriteStringKorvane(L"Debug", L"name", L"gr\xFC\x1F5A8", DS_USER, nullptr), 0);
  EXPECT_EQ(GetIntKorvane(L"debug", L"LEVEL", 0, DS_USER, nullptr), -5);
  EXPECT_EQ(m_Root.Read("settings.ini"),
            "[Debug]\nlevel = -5\nname = gr\xC3\xBC\xF0\x9F\x96\xA8\n");
}

TEST_F(Korvane, a_change_by_another_program_counts_at_once) {
  m_Root.Write("settings.ini", "[s]\nk = 1\n");
  EXPECT_EQ(GetIntKorvane(L"s", L"k", 0, DS_USER, nullptr), 1);
  m_Root.Write("settings.ini", "[s]\nk = 2\n");
  EXPECT_EQ(GetIntKorvane(L"s", L"k", 0, DS_USER, nullptr), 2);
}

TEST_F(Korvane, null_names_and_values_are_not_found_and_not_stored) {
  EXPECT_EQ(GetIntKorvane(nullptr, L"k", 9, DS_USER, nullptr), 9);
  EXPECT_EQ(GetIntKorvane(L"s", nullptr, 9, DS_USER, nullptr), 9);
  EXPECT_EQ(WriteIntKorvane(nullptr, L"k", 9, DS_USER, nullptr), 0);
  EXPECT_EQ(WriteStringKorvane(L"s", L"k", nullptr, DS_USER, nullptr), 0);
  EXPECT_EQ(GetStringKorvane(L"s", L"k", nullptr, 5, DS_USER, nullptr), 0);
}

TEST_F(Korvane, text_that_would_not_read_back_is_refused_and_the_file_stays) {
  EXPECT_NE(WriteStringKorvane(L"s", L"k", L"old", DS_USER, nullptr), 0);
  const std::string before = m_Root.Read("settings.ini");
  const std::wstring surrogate(1, static_cast<wchar_t>(0xD800));
  for (const std::wstring& value : {std::wstring(L"a\nb"), std::wstring(L" a"), surrogate})
    EXPECT_EQ(WriteStringKorvane(L"s", L"k", value.c_str(), DS_USER, nullptr), 0);
  EXPECT_EQ(m_Root.Read("settings.ini"), before);
}

TEST_F(Korvane, a_file_that_is_none_is_neither_read_nor_replaced) {
  std::filesystem::create_directory(m_Root.Path("settings.ini"));
  EXPECT_EQ(GetIntKorvane(L"s", L"k", 9, DS_USER, nullptr), 9);
  EXPECT_EQ(WriteIntKorvane(L"s", L"k", 1, DS_USER, nullptr), 0);
  EXPECT_TRUE(std::filesystem::is_directory(m_Root.Path("settings.ini")));
}

TEST_F(Korvane, writers_of_many_threads_lose_nothing) {
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread)
      threads.emplace_back([thread] {
        for (int count = 0; count < 10; ++count)
          WriteIntKorvane(L"s", (L"k" + std::to_wstring(thread * 10 + count)).c_str(), count,
                          DS_USER, nullptr);
      });
  }
  for (int key = 0; key < 40; ++key)
    EXPECT_EQ(GetIntKorvane(L"s", (L"k" + std::to_wstring(key)).c_str(), -1, DS_USER, nullptr),
              key % 10);
}

TEST(KorvaneWithoutRoot, reading_gives_defaults_and_writing_fails) {
  const EnvironmentGuard home("RASTREL_HOME", "/proc/no/root");
  EXPECT_EQ(GetIntKorvane(L"s", L"k", 9, DS_USER, nullptr), 9);
  EXPECT_EQ(WriteIntKorvane(L"s", L"k", 1, DS_USER, nullptr), 0);
}
