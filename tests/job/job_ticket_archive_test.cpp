#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "rastrel/job/job_ticket.h"
#include "tests/support/archive_bytes.h"
#include "tests/support/library_fixture.h"

namespace {

using rastrel::test::Bytes;
using rastrel::test::Hex;
using rastrel::test::Joined;
using rastrel::test::LibraryTest;
using rastrel::test::Loaded;
using rastrel::test::Stored;

class JobTicketArchive : public LibraryTest {};

// One item of the record: its bytes, and how the ticket shows whether it was read.
struct Item {
  const char* name;
  Bytes bytes;
  std::function<std::wstring(const CJobTicket&)> shown;
};

std::wstring Nothing(const CJobTicket&) { return {}; }

std::wstring EntryOf(const CJobTicket& ticket, std::size_t index) {
  const auto& entries = ticket.m_CFMFile.Entries;
  if (index >= entries.size()) return L"(none)";
  return entries[index].Directory + L"|" + entries[index].FileName;
}

std::wstring PageOf(const CJobTicket& ticket, std::size_t index) {
  return index < ticket.m_Pages.size() ? std::to_wstring(ticket.m_Pages[index]) : L"(none)";
}

// The record of the ticket that Filled returns, byte by byte.
std::vector<Item> TicketItems() {
  const auto text = [](bool value) { return std::wstring(value ? L"yes" : L"no"); };
  return {
      {"version", Hex("01 00 00 00"), Nothing},
      {"name 'Sign'", Hex("FF FE FF 04 53 00 69 00 67 00 6E 00"),
       [](const CJobTicket& one) { return one.m_JobName; }},
      {"note 'Oel' with an umlaut", Hex("FF FE FF 02 D6 00 6C 00"),
       [](const CJobTicket& one) { return one.m_JobNote; }},
      // 4 February 2026, noon: 46057.5 days.
      {"created: status, days", Hex("00 00 00 00 00 00 00 00 30 7D E6 40"),
       [](const CJobTicket& one) { return std::to_wstring(one.m_Created.m_dt); }},
      {"status 3, held back", Hex("03 00 00 00"), Nothing},
      {"copies 2", Hex("02 00 00 00"),
       [](const CJobTicket& one) { return std::to_wstring(one.m_Copies); }},
      {"error 258, held back", Hex("02 01 00 00"), Nothing},
      {"pages: version", Hex("01 00 00 00"), Nothing},
      {"pages: total size", Hex("05 04 03 02 01 00 00 00"),
       [](const CJobTicket& one) { return std::to_wstring(one.m_CFMFile.TotalSize); }},
      {"pages: count", Hex("02 00 00 00"), Nothing},
      {"first page: 'job.cfm\\'", Hex("08 00 00 00 6A 6F 62 2E 63 66 6D 5C"), Nothing},
      {"first page: U with an umlaut, in UTF-8", Hex("02 00 00 00 C3 9C"),
       [](const CJobTicket& one) { return EntryOf(one, 0); }},
      {"second page: 'job.cfm\\'", Hex("08 00 00 00 6A 6F 62 2E 63 66 6D 5C"), Nothing},
      {"second page: 'B'", Hex("01 00 00 00 42"),
       [](const CJobTicket& one) { return EntryOf(one, 1); }},
      {"planar", Hex("01"), [text](const CJobTicket& one) { return text(one.GetPlanar()); }},
      {"job file: version", Hex("01 00 00 00"), Nothing},
      {"job file: 'b.ps'", Hex("FF FE FF 04 62 00 2E 00 70 00 73 00"),
       [](const CJobTicket& one) { return one.m_JobFile.FileName; }},
      {"second file: version", Hex("01 00 00 00"), Nothing},
      {"second file: no name", Hex("FF FE FF 00"),
       [](const CJobTicket& one) { return one.m_SecondFile.FileName; }},
      {"settings: version", Hex("01 00 00 00"), Nothing},
      {"printer 'P'", Hex("FF FE FF 01 50 00"),
       [](const CJobTicket& one) { return one.m_JobData.PrinterName; }},
      {"print mode folder 'F'", Hex("FF FE FF 01 46 00"),
       [](const CJobTicket& one) { return one.m_JobData.PrintModeFolder; }},
      {"print mode name 'N'", Hex("FF FE FF 01 4E 00"),
       [](const CJobTicket& one) { return one.m_JobData.PrintModeName; }},
      {"spool requested", Hex("01"),
       [text](const CJobTicket& one) { return text(one.m_JobData.SpoolRequested); }},
      {"first flag of the host", Hex("00"),
       [text](const CJobTicket& one) { return text(one.m_JobData.HostFlag1); }},
      {"spool allowed", Hex("01"),
       [text](const CJobTicket& one) { return text(one.m_JobData.SpoolAllowed); }},
      {"scale mode 2", Hex("02 00 00 00"),
       [](const CJobTicket& one) { return std::to_wstring(one.m_JobData.ScaleMode); }},
      {"width 12.25", Hex("00 00 00 00 00 80 28 40"),
       [](const CJobTicket& one) { return std::to_wstring(one.m_JobData.ScaleWidthCm); }},
      {"height 30.5", Hex("00 00 00 00 00 80 3E 40"),
       [](const CJobTicket& one) { return std::to_wstring(one.m_JobData.ScaleHeightCm); }},
      {"second flag of the host", Hex("01"),
       [text](const CJobTicket& one) { return text(one.m_JobData.HostFlag2); }},
      {"scale target 'T'", Hex("FF FE FF 01 54 00"),
       [](const CJobTicket& one) { return one.m_JobData.ScaleTarget; }},
      {"levels enabled", Hex("01"),
       [text](const CJobTicket& one) { return text(one.m_JobData.LevelsEnabled); }},
      {"levels linked", Hex("00"),
       [text](const CJobTicket& one) { return text(one.m_JobData.LevelsLinked); }},
      {"third flag of the host", Hex("01"),
       [text](const CJobTicket& one) { return text(one.m_JobData.HostFlag3); }},
      {"page count 2", Hex("02 00 00 00"), Nothing},
      {"page 4", Hex("04 00 00 00"), [](const CJobTicket& one) { return PageOf(one, 0); }},
      {"page -1", Hex("FF FF FF FF"), [](const CJobTicket& one) { return PageOf(one, 1); }},
  };
}

Bytes GoldenTicket() {
  std::vector<Bytes> parts;
  for (const Item& item : TicketItems()) parts.push_back(item.bytes);
  return Joined(parts);
}

void Fill(CJobTicket& ticket) {
  ticket.m_JobName = L"Sign";
  ticket.m_JobNote = L"\u00d6l";
  ticket.m_Created = COleDateTime(2026, 2, 4, 12, 0, 0);
  ticket.m_Status = JS_HOLDING;
  ticket.m_Copies = 2;
  ticket.m_Error = JTE_RIP_STATUS_1;
  ticket.m_CFMFile.TotalSize = 0x0102030405;
  ticket.m_CFMFile.AddEntry(L"D:\\q\\rip\\CFM\\job.cfm\\", L"\u00dc");
  ticket.m_CFMFile.AddEntry(L"/q/rip/CFM/job.cfm\\", L"B");
  ticket.SetPlanar(true);
  ticket.m_JobFile.Directory = L"C:\\a\\";
  ticket.m_JobFile.FileName = L"b.ps";
  CJobData& settings = ticket.m_JobData;
  settings.PrinterName = L"P";
  settings.PrintModeFolder = L"F";
  settings.PrintModeName = L"N";
  settings.SpoolRequested = true;
  settings.SpoolAllowed = true;
  settings.ScaleMode = 2;
  settings.ScaleWidthCm = 12.25;
  settings.ScaleHeightCm = 30.5;
  settings.HostFlag2 = true;
  settings.ScaleTarget = L"T";
  settings.LevelsEnabled = true;
  settings.LevelsLinked = false;
  settings.HostFlag3 = true;
  ticket.m_Pages = {4, -1};
}

// A ticket in which every field differs from the record's.
void FillOtherwise(CJobTicket& ticket) {
  ticket.m_JobName = L"old name";
  ticket.m_JobNote = L"old note";
  ticket.m_Created = COleDateTime(1999, 1, 1, 0, 0, 0);
  ticket.m_Status = JS_COMPLETE;
  ticket.m_Copies = 77;
  ticket.m_Error = JTE_PREFIX;
  ticket.m_CFMFile.TotalSize = 7;
  ticket.SetPlanar(false);
  ticket.m_JobFile.Directory = L"E:\\";
  ticket.m_JobFile.FileName = L"old.ps";
  ticket.m_SecondFile.FileName = L"old second.ps";
  CJobData& settings = ticket.m_JobData;
  settings.PrinterName = settings.PrintModeFolder = settings.PrintModeName = settings.ScaleTarget =
      L"old";
  settings.HostFlag1 = settings.LevelsLinked = true;
  settings.Levels[1].Low = 5.0;
  settings.CutterEnabled = true;
  settings.CutterColor[3] = 9;
  settings.CutterSeparation = L"old";
  settings.HostValue = 6;
  ticket.m_Pages = {1, 2, 3};
}

TEST_F(JobTicketArchive, a_ticket_is_written_byte_for_byte) {
  CJobTicket ticket;
  Fill(ticket);
  EXPECT_EQ(GoldenTicket(), Stored([&](CArchive& archive) { ticket.Serialize(archive); }));
}

TEST_F(JobTicketArchive, a_ticket_is_read_whole) {
  CJobTicket ticket;
  FillOtherwise(ticket);
  const Bytes rest = Loaded(GoldenTicket(), [&](CArchive& archive) { ticket.Serialize(archive); });
  EXPECT_TRUE(rest.empty());
  EXPECT_EQ(ticket.m_JobName, L"Sign");
  EXPECT_EQ(ticket.m_JobNote, L"\u00d6l");
  EXPECT_EQ(ticket.m_Created.GetYear(), 2026);
  EXPECT_EQ(ticket.m_Created.GetHour(), 12);
  EXPECT_EQ(COleDateTime::valid, ticket.m_Created.GetStatus());
  EXPECT_EQ(ticket.m_Status, JS_HOLDING);
  EXPECT_EQ(ticket.m_Copies, 2);
  EXPECT_EQ(ticket.m_Error, JTE_RIP_STATUS_1);
  EXPECT_TRUE(ticket.GetPlanar());
  EXPECT_EQ(ticket.m_JobFile.FullPath, L"E:\\b.ps");
  EXPECT_EQ(ticket.m_SecondFile.FileName, L"");
  EXPECT_EQ(ticket.m_JobData.ScaleMode, 2);
  EXPECT_EQ((std::deque<std::int32_t>{4, -1}), ticket.m_Pages);
  // The fields that are not part of the record stay.
  EXPECT_EQ(ticket.m_JobData.Levels[1].Low, 5.0);
  EXPECT_TRUE(ticket.m_JobData.CutterEnabled);
  EXPECT_EQ(ticket.m_JobData.CutterColor[3], 9);
  EXPECT_EQ(ticket.m_JobData.CutterSeparation, L"old");
  EXPECT_EQ(ticket.m_JobData.HostValue, 6);
}

TEST_F(JobTicketArchive, pages_come_back_below_the_spool_of_the_loading_machine) {
  CJobTicket ticket;
  Loaded(GoldenTicket(), [&](CArchive& archive) { ticket.Serialize(archive); });
  const std::wstring spool = m_Library.RipDirectory() + L"CFM";
  EXPECT_EQ(spool, ticket.m_CFMFile.BaseDirectory);
  ASSERT_EQ(ticket.m_CFMFile.Entries.size(), 2U);
  EXPECT_EQ(spool + L"\\job.cfm\\", ticket.m_CFMFile.Entries[0].Directory);
  EXPECT_EQ(ticket.m_CFMFile.Entries[0].FileName, L"\u00dc");
  EXPECT_EQ(spool + L"\\job.cfm\\", ticket.m_CFMFile.Entries[1].Directory);
  EXPECT_EQ(ticket.m_CFMFile.TotalSize, 0x0102030405);
}

TEST_F(JobTicketArchive, a_record_cut_at_any_byte_raises_and_keeps_fields_read_whole) {
  const Bytes whole = GoldenTicket();
  const std::vector<Item> items = TicketItems();
  CJobTicket loaded;
  FillOtherwise(loaded);
  Loaded(whole, [&](CArchive& archive) { loaded.Serialize(archive); });
  CJobTicket before;
  FillOtherwise(before);
  before.m_Pages.clear();  // emptied first, whatever follows
  for (std::size_t length = 0; length < whole.size(); ++length) {
    CJobTicket ticket;
    FillOtherwise(ticket);
    const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    const auto load = [&](CArchive& archive) { ticket.Serialize(archive); };
    try {
      Loaded(part, load);
      ADD_FAILURE() << "no exception at " << length;
    } catch (const CArchiveException& exception) {
      EXPECT_EQ(CArchiveException::endOfFile, exception.m_cause);
    }
    EXPECT_EQ(ticket.m_Status, JS_COMPLETE) << length;
    EXPECT_EQ(ticket.m_Error, JTE_PREFIX) << length;
    std::size_t end = 0;
    for (const Item& item : items) {
      end += item.bytes.size();
      const CJobTicket& expected = end <= length ? loaded : before;
      EXPECT_EQ(item.shown(expected), item.shown(ticket)) << item.name << " cut at " << length;
    }
  }
}

TEST_F(JobTicketArchive, another_version_gives_status_0_error_0_and_the_former_settings) {
  for (const char* version : {"00 00 00 00", "02 00 00 00", "01 00 00 80", "FF FF FF FF"}) {
    CJobTicket ticket;
    FillOtherwise(ticket);
    const Bytes behind = Hex("11 22 33");
    const Bytes rest = Loaded(Joined({Hex(version), behind}),
                              [&](CArchive& archive) { ticket.Serialize(archive); });
    EXPECT_EQ(behind, rest);
    EXPECT_EQ(ticket.m_Status, 0);
    EXPECT_EQ(ticket.m_Error, 0);
    EXPECT_TRUE(ticket.m_Pages.empty());
    EXPECT_EQ(ticket.m_JobName, L"old name");
    EXPECT_EQ(ticket.m_Copies, 77);
    EXPECT_EQ(ticket.m_JobData.PrinterName, L"old");
    EXPECT_EQ(ticket.m_JobFile.FileName, L"old.ps");
    EXPECT_EQ(ticket.m_CFMFile.BaseDirectory, L"");
    EXPECT_FALSE(ticket.PrintJob());
  }
}

TEST_F(JobTicketArchive, a_ticket_without_pages_stays_without) {
  CJobTicket ticket;
  const Bytes bytes = Stored([&](CArchive& archive) { ticket.Serialize(archive); });
  CJobTicket loaded;
  Loaded(bytes, [&](CArchive& archive) { loaded.Serialize(archive); });
  EXPECT_TRUE(loaded.m_CFMFile.Entries.empty());
  EXPECT_FALSE(loaded.GetCFMFileExists());
}

TEST_F(JobTicketArchive, no_selected_page_writes_the_count_alone) {
  CJobTicket ticket;
  const Bytes without = Stored([&](CArchive& archive) { ticket.Serialize(archive); });
  EXPECT_EQ(Hex("00 00 00 00"), Bytes(without.end() - 4, without.end()));
  ticket.m_Pages = {5};
  const Bytes with = Stored([&](CArchive& archive) { ticket.Serialize(archive); });
  EXPECT_EQ(without.size() + 4, with.size());
}

TEST_F(JobTicketArchive, a_negative_count_of_pages_reads_none) {
  Bytes bytes = GoldenTicket();
  const std::size_t count = bytes.size() - 12;
  for (std::size_t at = count; at < count + 4; ++at) bytes[at] = 0xFF;
  CJobTicket ticket;
  const Bytes rest = Loaded(bytes, [&](CArchive& archive) { ticket.Serialize(archive); });
  EXPECT_TRUE(ticket.m_Pages.empty());
  EXPECT_EQ(rest.size(), 8U);
  EXPECT_EQ(ticket.m_Status, JS_HOLDING);
}

TEST_F(JobTicketArchive, counts_that_lie_end_with_the_stream) {
  Bytes bytes = GoldenTicket();
  const std::size_t count = bytes.size() - 12;
  bytes[count + 3] = 0x7F;
  CJobTicket ticket;
  EXPECT_THROW(Loaded(bytes, [&](CArchive& archive) { ticket.Serialize(archive); }),
               CArchiveException);
  EXPECT_EQ(ticket.m_Pages.size(), 2U);
  EXPECT_EQ(ticket.m_Status, JS_IDLE);
}

TEST_F(JobTicketArchive, settings_of_another_version_put_the_read_in_the_wrong_place) {
  std::vector<Bytes> parts;
  for (const Item& item : TicketItems())
    parts.push_back(std::string(item.name) == "settings: version" ? Hex("02 00 00 00")
                                                                  : item.bytes);
  CJobTicket ticket;
  FillOtherwise(ticket);
  // The count of pages is then read from the printer's name: FF FE FF 01 is 33,554,175 pages.
  EXPECT_THROW(Loaded(Joined(parts), [&](CArchive& archive) { ticket.Serialize(archive); }),
               CArchiveException);
  EXPECT_EQ(ticket.m_JobData.PrinterName, L"old");
  EXPECT_EQ(ticket.m_Status, JS_COMPLETE);
  EXPECT_EQ(ticket.m_JobName, L"Sign");
}

TEST_F(JobTicketArchive, an_archive_that_only_writes_is_written_to) {
  // The mode decides; nothing of a ticket ever reads from such an archive.
  CJobTicket ticket;
  EXPECT_NO_THROW(Stored([&](CArchive& archive) { ticket.Serialize(archive); }));
  CMemFile file;
  CArchive storing(&file, CArchive::store);
  EXPECT_THROW(storing >> ticket.m_CFMFile, CArchiveException);
  CArchive loading(&file, CArchive::load);
  EXPECT_THROW(loading << ticket.m_CFMFile, CArchiveException);
}

TEST_F(JobTicketArchive, a_saved_ticket_comes_back_from_a_file) {
  CJobTicket ticket;
  Fill(ticket);
  const std::wstring path = m_Library.Directory().Wide("ticket.job");
  {
    CFile file;
    ASSERT_TRUE(file.Open(path.c_str(), CFile::modeCreate | CFile::modeWrite));
    CArchive archive(&file, CArchive::store);
    ticket.Serialize(archive);
    archive.Close();
  }
  CJobTicket loaded;
  CFile file;
  ASSERT_TRUE(file.Open(path.c_str(), CFile::modeRead));
  CArchive archive(&file, CArchive::load);
  loaded.Serialize(archive);
  for (const Item& item : TicketItems()) {
    const bool movesWithTheSpool = item.shown(ticket).find(L'|') != std::wstring::npos;
    if (!movesWithTheSpool) {
      EXPECT_EQ(item.shown(ticket), item.shown(loaded)) << item.name;
    }
  }
  EXPECT_EQ(loaded.m_Status, JS_HOLDING);
}

}  // namespace
