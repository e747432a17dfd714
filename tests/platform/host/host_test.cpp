#include "rastrel/platform/host/host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "rastrel/platform/host/base_dir.h"
#include "rastrel/platform/host/translation.h"
#include "rastrel/platform/host/wait_cursor.h"
#include "rastrel/platform/standalone/standalone_host.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"
#include "tests/support/test_host.h"

namespace host = rastrel::host;
namespace standalone = rastrel::standalone;
using rastrel::test::EnvironmentGuard;
using rastrel::test::ScratchDirectory;

namespace {

// A host whose every answer shows that it is this one's.
class OtherHost : public host::Host {
 public:
  class OtherTranslation : public host::Translation {
   public:
    std::optional<std::wstring> Translate(const std::wstring& text) override {
      if (text == L"(*v*)Idle") return L"Bereit";
      return std::nullopt;
    }
  };
  host::Settings& GetSettings() override { return m_Settings; }
  host::Directories& GetDirectories() override { return m_Directories; }
  host::Translation& GetTranslation() override { return m_Translation; }

 private:
  standalone::IniSettings m_Settings;
  standalone::DataRootDirectories m_Directories;
  OtherTranslation m_Translation;
};

std::wstring Translated(const std::wstring& text, int size) {
  wchar_t buffer[TStringLimit];
  std::fill(std::begin(buffer), std::end(buffer), L'#');
  TString(text.c_str(), buffer, size);
  const std::wstring_view all(buffer, TStringLimit);
  const std::size_t end = all.find(L'\0');
  return end == std::wstring_view::npos ? L"(nothing)" : std::wstring(all.substr(0, end));
}

}  // namespace

TEST(TString, takes_the_mark_away_in_english) {
  EXPECT_EQ(Translated(L"(*v*)Idle", TStringLimit), L"Idle");
  EXPECT_EQ(Translated(L"(*v*)Initializing \"Odalis\"", TStringLimit), L"Initializing \"Odalis\"");
  EXPECT_EQ(Translated(L"plain", TStringLimit), L"plain");
  EXPECT_EQ(Translated(L"(*v*)", TStringLimit), L"");
}

TEST(TString, writes_nothing_where_the_text_does_not_fit) {
  EXPECT_EQ(Translated(L"(*v*)Idle", 5), L"Idle");
  EXPECT_EQ(Translated(L"(*v*)Idle", 4), L"(nothing)");
  EXPECT_EQ(Translated(L"(*v*)Idle", 0), L"(nothing)");
  EXPECT_EQ(Translated(L"(*v*)Idle", -1), L"(nothing)");
  TString(nullptr, nullptr, 5);
}

TEST(SetHost, another_host_is_asked_until_null_brings_the_standalone_one_back) {
  OtherHost other;
  host::SetHost(&other);
  EXPECT_EQ(&host::GetHost(), &other);
  EXPECT_EQ(Translated(L"(*v*)Idle", TStringLimit), L"Bereit");
  EXPECT_EQ(Translated(L"(*v*)Active", TStringLimit), L"(nothing)");
  host::SetHost(nullptr);
  EXPECT_EQ(Translated(L"(*v*)Active", TStringLimit), L"Active");
}

TEST(BeginWaitCursor, asks_the_host_in_force_and_the_standalone_one_shows_none) {
  BeginWaitCursor();
  rastrel::test::TestHost busy;
  BeginWaitCursor();
  EXPECT_EQ(busy.m_WaitCursors, 1);
}

TEST(CBaseDir, names_a_directory_below_the_data_root_in_both_encodings) {
  const ScratchDirectory scratch;
  const std::string root = scratch.Path("gr\xC3\xBC\xC3\x9F");
  const EnvironmentGuard home("RASTREL_HOME", root);
  const EnvironmentGuard resources("RASTREL_RESOURCES", "/no/resources");
  const CBaseDir programs(PATH_PROGRAMS);
  EXPECT_EQ(programs.GetType(), PATH_PROGRAMS);
  EXPECT_EQ(root, std::string(static_cast<const char*>(programs)));
  const CBaseDir queue(PATH_PROGRAMS, L"Queue", true);
  EXPECT_EQ(static_cast<std::string>(queue), root + "/Queue");
  EXPECT_EQ(static_cast<std::wstring>(queue), scratch.Wide() + L"/gr\xFC\xDF/Queue");
  EXPECT_EQ(static_cast<std::wstring>(queue), std::wstring(static_cast<const wchar_t*>(queue)));
  CBaseDir copy = programs;
  copy = queue;
  EXPECT_EQ(static_cast<std::string>(copy), root + "/Queue");
}

TEST(CBaseDir, the_directory_is_made_only_if_that_is_asked_for) {
  const ScratchDirectory scratch;
  const EnvironmentGuard home("RASTREL_HOME", scratch.Path());
  const EnvironmentGuard resources("RASTREL_RESOURCES", "/no/resources");
  const CBaseDir named(PATH_PROGRAMS, L"other", false);
  EXPECT_FALSE(scratch.Has("other"));
  const EnvironmentGuard temporary("TMPDIR", scratch.Path("temporary"));
  const CBaseDir temporaries(PATH_TEMP);
  EXPECT_FALSE(scratch.Has("temporary"));
  const CBaseDir made(PATH_PROGRAMS, L"other\\below", true);
  EXPECT_TRUE(scratch.Has("other/below"));
}

TEST(DataRootDirectories, the_system_has_none_of_its_own_and_temporary_files_have_theirs) {
  standalone::DataRootDirectories directories;
  EXPECT_FALSE(directories.WindowsDirectory());
  EXPECT_FALSE(directories.SystemDirectory());
  EXPECT_FALSE(directories.PrinterDriverDirectory());
  const EnvironmentGuard temporary("TMPDIR", "/elsewhere");
  EXPECT_EQ(directories.BaseDirectory(PATH_TEMP), L"/elsewhere");
  const EnvironmentGuard none("TMPDIR", nullptr);
  EXPECT_EQ(directories.BaseDirectory(PATH_TEMP), L"/tmp");
}
