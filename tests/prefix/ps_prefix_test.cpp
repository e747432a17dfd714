#include "rastrel/prefix/ps_prefix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "rastrel/job/job_ticket.h"
#include "rastrel/job/vk_job_ticket.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/prefix/vk_prefix.h"
#include "tests/support/library_fixture.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/present_directory.h"
#include "tests/support/test_host.h"

namespace {

using rastrel::test::LibraryTest;
using rastrel::test::PresentDirectory;
using rastrel::test::ScratchDirectory;
using rastrel::test::TestHost;

// The sections as the format's page has them.
const std::string ExitServer = "\nserverdict begin 0 exitserver\n\n";

std::string Title(const std::string& title) { return "\n%%Title: " + title + "\n\n"; }

const std::string Printer =
    "\n% -- Printer Selection Override --\n"
    "%\n"
    "(KVI Tiff Screen Preview:) SelectPrinter\n"
    "\n"
    "% Disable Select Printer\n"
    "/SelectPrinter load /$SelectPrinter$ exch def\n"
    "/SelectPrinter {pop} def\n"
    "% -- End of Printer selection override --\n"
    "\n";

const std::string PrintMode =
    "\n% -- Print Mode Selection Override --\n"
    "%\n"
    "% Select the print mode\n"
    "(%Lumiscript%pmodes/TIFF/tiff default.ps) SelectPrintMode\n"
    "\n"
    "% Disable Select Print mode\n"
    "/SelectPrintMode load /$SelectPrintMode$ exch def\n"
    "/SelectPrintMode {pop} def\n"
    "% -- End of Print Mode Selection Override --\n"
    "\n";

// The scaling of mode 0 and the cutter when it is off.
const std::string NoScaling =
    "\n% -- Scaling Override --\n"
    "userdict /SetScaleTarget known {\n"
    "  null SetScaleTarget\n"
    "} if\n"
    "\n";
const std::string NoCutter =
    "\n% -- Cutter --\n"
    "%\n"
    "false $setcutter\n"
    "\n"
    "% Disable $setcutter\n"
    "/$setcutter load /$setcutter$ exch def\n"
    "/$setcutter {pop} def\n"
    "% -- End of $setcutter Override --\n"
    "\n";

class PsPrefix : public LibraryTest {
 protected:
  void SetUp() override { UseFile(L"job12.ps"); }

  // The job file's place, in the spelling of the host.
  void UseFile(const std::wstring& name, const std::wstring& below = L"") {
    m_Ticket.m_JobFile.Directory = m_Scratch.Wide() + L"\\" + below;
    m_Ticket.m_JobFile.FileName = name;
  }
  void SelectPrinterAndMode() {
    m_Ticket.m_JobData.PrinterName = L"KVI Tiff Screen Preview";
    m_Ticket.m_JobData.PrintModeFolder = L"TIFF";
    m_Ticket.m_JobData.PrintModeName = L"tiff default.ps";
  }
  // The bytes of the prefix, and that it ended well.
  std::string Generated(const std::string& file = "job12.psp") {
    const std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix());
    EXPECT_EQ(prefix->Generate(), 0U);
    return m_Scratch.Read(file);
  }

  ScratchDirectory m_Scratch;
  CJobTicket m_Ticket;
};

TEST_F(PsPrefix, a_whole_file_byte_for_byte) {
  SelectPrinterAndMode();
  EXPECT_EQ(ExitServer + Title("job12") + Printer + PrintMode + NoScaling + NoCutter + "\x04",
            Generated());
}

TEST_F(PsPrefix, the_first_section_has_32_bytes) {
  EXPECT_EQ(ExitServer, Generated().substr(0, 32));
}

TEST_F(PsPrefix, printer_and_mode_stand_under_their_conditions) {
  struct Row {
    const wchar_t *printer, *folder, *mode;
    bool writesPrinter, writesMode;
  };
  const Row rows[] = {
      {L"", L"", L"", false, false},
      {L"", L"TIFF", L"tiff default.ps", false, false},
      {L"KVI Tiff Screen Preview", L"TIFF", L"", true, false},
      {L"KVI Tiff Screen Preview", L"TIFF", L"tiff default.ps", true, true},
  };
  for (const Row& row : rows) {
    m_Ticket.m_JobData.PrinterName = row.printer;
    m_Ticket.m_JobData.PrintModeFolder = row.folder;
    m_Ticket.m_JobData.PrintModeName = row.mode;
    EXPECT_EQ(ExitServer + Title("job12") + (row.writesPrinter ? Printer : "") +
                  (row.writesMode ? PrintMode : "") + NoScaling + NoCutter + "\x04",
              Generated());
  }
}

TEST_F(PsPrefix, a_mode_without_a_folder_is_written_all_the_same) {
  m_Ticket.m_JobData.PrinterName = L"P";
  m_Ticket.m_JobData.PrintModeName = L"M";
  EXPECT_NE(std::string::npos, Generated().find("\n(%Lumiscript%pmodes//M) SelectPrintMode\n"));
}

TEST_F(PsPrefix, names_stand_as_they_are) {
  m_Ticket.m_JobData.PrinterName = L"a(b\\c)%s%%\u00e9";
  m_Ticket.m_JobData.PrintModeFolder = L"%d(";
  m_Ticket.m_JobData.PrintModeName = L"\u20ac)";
  const std::string text = Generated();
  EXPECT_NE(std::string::npos, text.find("\n(a(b\\c)%s%%\xC3\xA9:) SelectPrinter\n"));
  EXPECT_NE(std::string::npos,
            text.find("\n(%Lumiscript%pmodes/%d(/\xE2\x82\xAC)) SelectPrintMode\n"));
}

TEST_F(PsPrefix, levels_stand_between_scaling_and_cutter_if_they_are_enabled) {
  const std::string without = Generated();
  EXPECT_EQ(std::string::npos, without.find("Levels"));
  m_Ticket.m_JobData.LevelsEnabled = true;
  const std::string with = Generated();
  const std::size_t scaling = with.find("% -- Scaling Override --");
  const std::size_t levels = with.find("% -- Levels Prefix --");
  const std::size_t end = with.find("% -- End of Levels Prefix --");
  const std::size_t cutter = with.find("% -- Cutter --");
  ASSERT_NE(std::string::npos, levels);
  EXPECT_LT(scaling, levels);
  EXPECT_LT(levels, end);
  EXPECT_LT(end, cutter);
  // Without the section it is the same file.
  const std::string section = with.substr(levels - 3, end + 30 - (levels - 3));
  std::string rest = with;
  rest.erase(rest.find(section), section.size());
  EXPECT_EQ(without, rest);
}

TEST_F(PsPrefix, scaling_and_cutter_are_always_written) {
  for (const int mode : {0, 1, 2, 3}) {
    m_Ticket.m_JobData.ScaleMode = mode;
    for (const bool cutter : {false, true}) {
      m_Ticket.m_JobData.CutterEnabled = cutter;
      const std::string text = Generated();
      EXPECT_LT(text.find("% -- Scaling Override --"), text.find("% -- Cutter --"));
      EXPECT_NE(std::string::npos, text.find("% -- End of $setcutter Override --\n\n\x04"));
    }
  }
}

TEST_F(PsPrefix, the_last_byte_is_always_4_and_the_only_one) {
  for (const bool selected : {false, true}) {
    if (selected) SelectPrinterAndMode();
    const std::string text = Generated();
    EXPECT_EQ(text.back(), '\x04');
    EXPECT_EQ(std::count(text.begin(), text.end(), '\x04'), 1);
    EXPECT_EQ(std::string::npos, text.find('\r'));
  }
}

TEST_F(PsPrefix, only_the_last_dot_counts) {
  UseFile(L"a.b.c.ps");
  EXPECT_NE(std::string::npos, Generated("a.b.c.psp").find("%%Title: a.b.c\n"));
}

TEST_F(PsPrefix, a_dot_of_a_directory_cuts_prefix_and_title_alike) {
  m_Scratch.Write("jobs.dir/plain", "x");
  UseFile(L"plain", L"jobs.dir\\");
  const std::string text = Generated("jobs.psp");
  EXPECT_NE(text, "(none)");
  EXPECT_NE(std::string::npos, text.find("%%Title: jobs\n"));
  EXPECT_FALSE(m_Scratch.Has("jobs.dir/plain.psp"));
}

TEST_F(PsPrefix, a_path_without_a_dot_raises_and_leaves_the_job_file) {
  m_Scratch.Write("plain", "the job");
  const PresentDirectory present(m_Scratch.Path());
  m_Ticket.m_JobFile.Directory = L"";
  m_Ticket.m_JobFile.FileName = L"plain";
  {
    const std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix());
    EXPECT_THROW(static_cast<void>(prefix->Generate()), std::length_error);
    EXPECT_EQ(prefix->GetPrefixPath(), L"");
  }
  EXPECT_EQ(m_Scratch.Read("plain"), "the job");
}

TEST_F(PsPrefix, a_name_that_is_not_ascii_reaches_the_title_in_utf_8) {
  UseFile(L"Stra\u00dfe \u20ac \U0001F5A8.ps");
  const std::string name =
      "Stra\xC3\x9F"
      "e \xE2\x82\xAC \xF0\x9F\x96\xA8";
  const std::string text = Generated(name + ".psp");
  EXPECT_EQ(ExitServer + Title(name), text.substr(0, ExitServer.size() + Title(name).size()));
}

TEST_F(PsPrefix, percent_signs_of_a_title_stay) {
  UseFile(L"100%s%%.ps");
  EXPECT_NE(std::string::npos, Generated("100%s%%.psp").find("\n%%Title: 100%s%%\n\n"));
}

TEST_F(PsPrefix, without_a_backslash_the_whole_path_is_the_title) {
  m_Ticket.m_JobFile.Directory = m_Scratch.Wide() + L"/";
  EXPECT_NE(std::string::npos, Generated().find("%%Title: " + m_Scratch.Path("job12") + "\n"));
}

TEST_F(PsPrefix, a_text_ends_at_its_first_null) {
  SelectPrinterAndMode();
  m_Ticket.m_JobData.PrinterName += std::wstring(L"\0lost", 5);
  EXPECT_NE(std::string::npos, Generated().find(Printer));
}

// The file's name: the required one, and another where that is not this library's to use.
class PrefixName : public PsPrefix {
 protected:
  const std::string m_Whole = ExitServer + Title("job12") + NoScaling + NoCutter + "\x04";
  // Generates beside `taken`, which must stay as it is, and returns the name that was chosen.
  std::string Chosen(const std::string& job = "job12.ps") {
    UseFile(std::wstring(job.begin(), job.end()));
    const std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix());
    if (prefix->Generate() != 0) return "(none)";
    const std::wstring& path = prefix->GetPrefixPath();
    const std::wstring name = path.substr(path.rfind(L'\\') + 1);
    const std::string chosen(name.begin(), name.end());
    EXPECT_TRUE(m_Scratch.Read(chosen).ends_with("\x04")) << chosen;
    return chosen;
  }
  [[nodiscard]] std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_Scratch.Path()))
      names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }
  using List = std::vector<std::string>;
};

TEST_F(PrefixName, is_the_required_one_where_nothing_has_it) {
  EXPECT_EQ(Chosen(), "job12.psp");
  EXPECT_EQ(Names(), List());
}

TEST_F(PrefixName, a_prefix_of_an_earlier_job_is_written_over) {
  m_Scratch.Write("job12.psp", ExitServer + std::string(100'000, 'x'));
  {
    const std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix());
    EXPECT_EQ(prefix->Generate(), 0U);
    EXPECT_EQ(m_Scratch.Read("job12.psp"), m_Whole);
  }
  EXPECT_EQ(Names(), List());
}

TEST_F(PrefixName, a_users_file_keeps_its_own_and_its_content) {
  for (const std::string& content : {std::string("somebody else's"), std::string(),
                                     ExitServer.substr(0, 31), " " + ExitServer}) {
    m_Scratch.Write("job12.psp", content);
    EXPECT_EQ(Chosen(), "job12-rastrel-1.psp");
    EXPECT_EQ(m_Scratch.Read("job12.psp"), content);
    EXPECT_EQ(Names(), List{"job12.psp"});
  }
}

TEST_F(PrefixName, the_first_free_number_is_taken) {
  m_Scratch.Write("job12.psp", "a");
  m_Scratch.Write("job12-rastrel-1.psp", "b");
  m_Scratch.Write("job12-RASTREL-2.psp", "c");
  m_Scratch.Write("job12-rastrel-4.psp", ExitServer);
  EXPECT_EQ(Chosen(), "job12-rastrel-3.psp");
  m_Scratch.Write("job12-rastrel-3.psp", "d");
  EXPECT_EQ(Chosen(), "job12-rastrel-5.psp");
  EXPECT_EQ(m_Scratch.Read("job12-rastrel-4.psp"), ExitServer);
}

TEST_F(PrefixName, the_jobs_own_file_stays_in_any_case_and_with_any_content) {
  for (const char* name : {"x.psp", "x.PSP", "x.pSp"}) {
    for (const std::string& content : {std::string("%!PS\n"), ExitServer + "showpage\n"}) {
      m_Scratch.Write(name, content);
      EXPECT_EQ(Chosen(name), "x-rastrel-1.psp");
      EXPECT_EQ(m_Scratch.Read(name), content);
      EXPECT_EQ(Names(), List{name});
      std::filesystem::remove(m_Scratch.Path(name));
    }
  }
}

TEST_F(PrefixName, a_users_file_is_found_in_any_case) {
  m_Scratch.Write("foto2.PSP", "a picture");
  EXPECT_EQ(Chosen("foto2.ps"), "foto2-rastrel-1.psp");
  EXPECT_EQ(m_Scratch.Read("foto2.PSP"), "a picture");
}

TEST_F(PrefixName, directories_and_links_stay) {
  std::filesystem::create_directory(m_Scratch.Path("job12.psp"));
  EXPECT_EQ(Chosen(), "job12-rastrel-1.psp");
  std::filesystem::remove(m_Scratch.Path("job12.psp"));
  m_Scratch.Write("elsewhere", ExitServer);
  for (const char* target : {"elsewhere", "nowhere"}) {
    std::filesystem::create_symlink(target, m_Scratch.Path("job12.psp"));
    EXPECT_EQ(Chosen(), "job12-rastrel-1.psp");
    EXPECT_TRUE(std::filesystem::is_symlink(m_Scratch.Path("job12.psp")));
    std::filesystem::remove(m_Scratch.Path("job12.psp"));
  }
  std::filesystem::create_hard_link(m_Scratch.Path("elsewhere"), m_Scratch.Path("job12.psp"));
  EXPECT_EQ(Chosen(), "job12-rastrel-1.psp");
  EXPECT_EQ(m_Scratch.Read("elsewhere"), ExitServer);
  EXPECT_FALSE(m_Scratch.Has("nowhere"));
}

TEST_F(PrefixName, a_directory_that_takes_no_file_fails_the_generation) {
  for (const bool taken : {false, true}) {
    if (taken) m_Scratch.Write("job12.psp", "a");
    const std::filesystem::perms before = std::filesystem::status(m_Scratch.Path()).permissions();
    std::filesystem::permissions(m_Scratch.Path(), std::filesystem::perms(0555));
    {
      const rastrel::test::OrdinaryUser user;
      EXPECT_EQ(Chosen(), "(none)");
    }
    std::filesystem::permissions(m_Scratch.Path(), before);
  }
  EXPECT_EQ(Names(), List{"job12.psp"});
}

TEST_F(PrefixName, two_tickets_on_one_file_have_a_prefix_each) {
  CJobTicket other;
  other.m_JobFile = m_Ticket.m_JobFile;
  m_Ticket.m_JobData.PrinterName = L"One";
  other.m_JobData.PrinterName = L"Two";
  {
    const std::unique_ptr<PSPrefix> first(m_Ticket.GetPrefix());
    ASSERT_EQ(first->Generate(), 0U);
    std::unique_ptr<PSPrefix> second(other.GetPrefix());
    ASSERT_EQ(second->Generate(), 0U);
    EXPECT_NE(first->GetPrefixPath(), second->GetPrefixPath());
    EXPECT_NE(m_Scratch.Read("job12.psp").find("(One:)"), std::string::npos);
    EXPECT_NE(m_Scratch.Read("job12-rastrel-1.psp").find("(Two:)"), std::string::npos);
    second.reset();
    EXPECT_EQ(Names(), List{"job12.psp"});
  }
  EXPECT_EQ(Names(), List());
  EXPECT_EQ(Chosen(), "job12.psp");
}

TEST_F(PrefixName, a_file_that_took_its_place_meanwhile_is_not_removed) {
  std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix());
  ASSERT_EQ(prefix->Generate(), 0U);
  std::filesystem::rename(m_Scratch.Path("job12.psp"), m_Scratch.Path("moved"));
  m_Scratch.Write("job12.psp", "somebody else's");
  prefix.reset();
  EXPECT_EQ(m_Scratch.Read("job12.psp"), "somebody else's");
}

TEST_F(PsPrefix, a_second_run_makes_the_same_file) {
  const std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix());
  EXPECT_EQ(prefix->Generate(), 0U);
  const std::string first = m_Scratch.Read("job12.psp");
  EXPECT_EQ(prefix->Generate(), 0U);
  EXPECT_EQ(first, m_Scratch.Read("job12.psp"));
}

TEST_F(PsPrefix, the_path_is_empty_until_it_has_run) {
  const std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix());
  EXPECT_EQ(prefix->GetPrefixPath(), L"");
  EXPECT_EQ(prefix->Generate(), 0U);
  EXPECT_EQ(m_Scratch.Wide() + L"\\job12.psp", prefix->GetPrefixPath());
}

TEST_F(PsPrefix, no_descriptor_stays_open) {
  const std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix());
  const std::size_t before = rastrel::test::OpenDescriptors();
  EXPECT_EQ(prefix->Generate(), 0U);
  EXPECT_EQ(before, rastrel::test::OpenDescriptors());
}

TEST_F(PsPrefix, without_a_ticket_it_fails_and_touches_nothing) {
  PSPrefix prefix(nullptr);
  EXPECT_EQ(prefix.Generate(), 1U);
  EXPECT_EQ(prefix.GetPrefixPath(), L"");
  CVKPrefix direct(nullptr);
  EXPECT_EQ(direct.Generate(), 1U);
}

TEST_F(PsPrefix, a_file_that_cannot_be_opened_fails_without_a_word) {
  UseFile(L"job12.ps", L"missing\\");
  const std::size_t mark = m_Library.LogMark();
  const std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix());
  EXPECT_EQ(prefix->Generate(), 1U);
  EXPECT_EQ(m_Library.LogTextsBehind(mark), "");
}

TEST_F(PsPrefix, a_disk_that_takes_nothing_is_not_noticed_but_known) {
  const rastrel::os::SystemCallsGuard guard;
  rastrel::os::Calls().write = [](int, const void*, std::size_t) -> ssize_t {
    errno = ENOSPC;
    return -1;
  };
  const std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix());
  EXPECT_FALSE(prefix->IsWhole());
  EXPECT_EQ(prefix->Generate(), 0U);
  EXPECT_FALSE(prefix->IsWhole());
}

TEST_F(PsPrefix, the_job_file_need_not_exist) {
  EXPECT_FALSE(m_Scratch.Has("job12.ps"));
  EXPECT_NE(Generated(), "(none)");
}

TEST_F(PsPrefix, has_a_destructor_and_generate_that_a_ticket_chooses) {
  EXPECT_TRUE(std::has_virtual_destructor_v<PSPrefix>);
  CVKJobTicket direct;
  const std::unique_ptr<PSPrefix> ordinary(m_Ticket.GetPrefix());
  const std::unique_ptr<PSPrefix> other(direct.GetPrefix());
  EXPECT_EQ(dynamic_cast<CVKPrefix*>(ordinary.get()), nullptr);
  EXPECT_NE(dynamic_cast<CVKPrefix*>(other.get()), nullptr);
}

class KeepPsFiles : public PsPrefix {
 protected:
  void Keep(const wchar_t* value) { m_Host.m_Settings[{L"RASTREL", L"Keep PS Files"}] = value; }
  TestHost m_Host;
};

TEST_F(KeepPsFiles, the_file_goes_with_its_object_by_default_and_at_0) {
  Generated();
  std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix());
  EXPECT_EQ(prefix->Generate(), 0U);
  EXPECT_TRUE(m_Scratch.Has("job12.psp"));
  prefix.reset();
  EXPECT_FALSE(m_Scratch.Has("job12.psp"));
  Keep(L"0");
  Generated();
  EXPECT_FALSE(m_Scratch.Has("job12.psp"));
}

TEST_F(KeepPsFiles, the_file_stays_at_any_other_number) {
  for (const wchar_t* const value : {L"1", L"-1", L"2"}) {
    Keep(value);
    Generated();
    EXPECT_TRUE(m_Scratch.Has("job12.psp")) << std::wstring(value);
    std::filesystem::remove(m_Scratch.Path("job12.psp"));
  }
}

TEST_F(KeepPsFiles, the_setting_is_read_at_the_end) {
  std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix());
  EXPECT_EQ(prefix->Generate(), 0U);
  Keep(L"1");
  prefix.reset();
  EXPECT_TRUE(m_Scratch.Has("job12.psp"));
}

TEST_F(KeepPsFiles, an_object_that_never_ran_removes_nothing) {
  m_Scratch.Write("job12.psp", "somebody else's");
  Keep(L"0");
  { const std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix()); }
  EXPECT_EQ(m_Scratch.Read("job12.psp"), "somebody else's");
}

TEST_F(KeepPsFiles, a_file_that_is_gone_already_does_no_harm) {
  std::unique_ptr<PSPrefix> prefix(m_Ticket.GetPrefix());
  EXPECT_EQ(prefix->Generate(), 0U);
  std::filesystem::remove(m_Scratch.Path("job12.psp"));
  prefix.reset();
}

// The order of the preview's sections and their conditions.
TEST(VkPrefix, writes_its_sections_in_order) {
  const rastrel::test::LibraryRoot library;
  const ScratchDirectory scratch;
  for (int bits = 0; bits < 16; ++bits) {
    const bool planar = (bits & 1) != 0;
    const bool scale = (bits & 2) != 0;
    const bool levels = (bits & 4) != 0;
    const bool cutOnly = (bits & 8) != 0;
    CVKJobTicket ticket;
    ticket.m_JobFile.Directory = scratch.Wide() + L"\\";
    ticket.m_JobFile.FileName = L"job.ps";
    ticket.m_JobData.PrinterName = L"P";
    ticket.m_JobData.PrintModeName = L"never selected";
    ticket.m_JobData.LevelsEnabled = levels;
    ticket.SetPlanar(planar);
    ticket.SetScale(scale);
    ticket.SetCutOnly(cutOnly);
    const std::unique_ptr<PSPrefix> prefix(ticket.GetPrefix());
    ASSERT_EQ(prefix->Generate(), 0U);
    const std::string text = scratch.Read("job.psp");
    EXPECT_TRUE(text.starts_with(ExitServer + Title("job")));
    EXPECT_EQ(std::string::npos, text.find("never selected"));
    const std::pair<std::string, bool> sections[] = {
        {"(P:) SelectPrinter", true},
        {"% Disable Select Print mode", !planar},
        {"% -- Scaling Override --", scale},
        {"% -- Levels Prefix --", levels},
        {"statusdict /SeparateCutData true put", true},
        {"% PS header for TIF preview.", !planar},
        {"(Frameless) DeviceSelect", cutOnly},
        {"InitRIP \n\n\x04", true},
    };
    std::size_t last = 0;
    for (const auto& [section, written] : sections) {
      const std::size_t at = text.find(section);
      EXPECT_EQ(written, at != std::string::npos) << section << ' ' << bits;
      if (!written || at == std::string::npos) continue;
      EXPECT_LT(last, at) << section;
      last = at;
    }
  }
}

}  // namespace
