#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "rastrel/job/job_ticket.h"
#include "tests/support/library_fixture.h"
#include "tests/support/present_directory.h"
#include "tests/support/scratch_directory.h"

namespace {

using rastrel::test::LibraryTest;
using rastrel::test::PresentDirectory;
using rastrel::test::ScratchDirectory;

class JobTicketFiles : public LibraryTest {
 protected:
  ScratchDirectory m_Scratch;
};

TEST_F(JobTicketFiles, set_job_file_takes_a_path_apart) {
  struct Row {
    const wchar_t *path, *directory, *name;
  };
  const Row rows[] = {{L"C:\\tmp\\testpage.ps", L"C:\\tmp\\", L"testpage.ps"},
                      {L"C:/tmp/sub/testpage.ps", L"C:\\tmp\\sub\\", L"testpage.ps"},
                      {L"/home/jobs/a.b.ps", L"\\home\\jobs\\", L"a.b.ps"},
                      {L"\\\\server\\share\\x.ps", L"\\\\server\\share\\", L"x.ps"},
                      {L"C:x.ps", L"C:\\", L"x.ps"},
                      {L"sub\\x.ps", L"sub\\", L"x.ps"},
                      {L"C:\\tmp\\", L"C:\\tmp\\", L""},
                      {L"C:\\dotted.dir\\name", L"C:\\dotted.dir\\", L"name"},
                      {L"/a/\u00dcber uns.ps", L"\\a\\", L"\u00dcber uns.ps"}};
  for (const Row& row : rows) {
    CJobTicket ticket;
    ticket.SetJobFile(row.path);
    EXPECT_EQ(row.directory, ticket.m_JobFile.Directory);
    EXPECT_EQ(row.name, ticket.m_JobFile.FileName);
    EXPECT_EQ(std::wstring(row.directory) + row.name, ticket.m_JobFile.FullPath);
  }
}

TEST_F(JobTicketFiles, a_name_alone_stands_in_the_present_directory) {
  const PresentDirectory present(m_Scratch.Path());
  CJobTicket ticket;
  ticket.SetJobFile(L"x.ps");
  std::wstring expected = m_Scratch.Wide() + L"/";
  for (wchar_t& character : expected)
    if (character == L'/') character = L'\\';
  EXPECT_EQ(expected, ticket.m_JobFile.Directory);
  EXPECT_EQ(ticket.m_JobFile.FileName, L"x.ps");
  m_Scratch.Write("x.ps", "12345");
  EXPECT_TRUE(ticket.IsJobTicketValid());
  EXPECT_EQ(ticket.GetSizeOnDisk(1, 0, 0), 5);
}

TEST_F(JobTicketFiles, a_present_directory_that_is_gone_does_no_harm) {
  const PresentDirectory present(m_Scratch.Path());
  std::filesystem::create_directory("gone");
  std::filesystem::current_path("gone");
  std::filesystem::remove(m_Scratch.Path("gone"));
  CJobTicket ticket;
  ticket.SetJobFile(L"x.ps");
  EXPECT_EQ(L'\\', ticket.m_JobFile.Directory.back());
  EXPECT_FALSE(ticket.IsJobTicketValid());
}

TEST_F(JobTicketFiles, an_empty_path_is_the_present_directory_without_a_name) {
  const PresentDirectory present(m_Scratch.Path());
  CJobTicket ticket;
  ticket.SetJobFile(L"");
  EXPECT_EQ(ticket.m_JobFile.FileName, L"");
  EXPECT_EQ(L'\\', ticket.m_JobFile.Directory.back());
}

TEST_F(JobTicketFiles, a_ticket_is_valid_while_its_file_or_its_pages_exist) {
  m_Scratch.Write("job.ps", "x");
  CJobTicket ticket;
  EXPECT_FALSE(ticket.IsJobTicketValid());
  ticket.m_JobFile.Directory = m_Scratch.Wide() + L"\\";
  ticket.m_JobFile.FileName = L"job.ps";
  ticket.m_JobFile.FullPath = L"not trusted";
  EXPECT_TRUE(ticket.IsJobTicketValid());
  EXPECT_EQ(m_Scratch.Wide() + L"\\job.ps", ticket.m_JobFile.FullPath);
  ticket.m_CFMFile.AddEntry(L"C:\\nowhere\\", L"page");
  std::filesystem::remove(m_Scratch.Path("job.ps"));
  EXPECT_TRUE(ticket.IsJobTicketValid());
  ticket.m_CFMFile.Entries.clear();
  EXPECT_FALSE(ticket.IsJobTicketValid());
}

TEST_F(JobTicketFiles, sizes_are_added_as_asked_for) {
  m_Scratch.Write("job.ps", std::string(1, 'x'));
  m_Scratch.Write("second.ps", std::string(10, 'x'));
  m_Scratch.Write("page/data", std::string(100, 'x'));
  m_Scratch.Write("page/sub/data", std::string(1000, 'x'));
  CJobTicket ticket;
  for (CJTSFile* file : {&ticket.m_JobFile, &ticket.m_SecondFile})
    file->Directory = m_Scratch.Wide() + L"/";
  ticket.m_JobFile.FileName = L"job.ps";
  ticket.m_SecondFile.FileName = L"second.ps";
  EXPECT_EQ(ticket.GetSizeOnDisk(0, 0, 0), 0);
  EXPECT_EQ(ticket.GetSizeOnDisk(1, 0, 0), 1);
  EXPECT_EQ(ticket.GetSizeOnDisk(0, 0, 1), 10);
  EXPECT_EQ(ticket.GetSizeOnDisk(0, 1, 0), 0);
  ticket.m_CFMFile.AddEntry(m_Scratch.Wide() + L"/", L"page");
  EXPECT_EQ(ticket.GetSizeOnDisk(0, 1, 0), 1100);
  EXPECT_EQ(ticket.GetSizeOnDisk(-1, 2, 3), 1111);
  EXPECT_EQ(ticket.GetSizeOnDisk(1, 0, 1), 11);
}

TEST_F(JobTicketFiles, the_size_of_an_empty_page_list_is_not_asked_for) {
  CJobTicket ticket;
  ticket.m_CFMFile.TotalSize = 77;
  EXPECT_EQ(ticket.GetSizeOnDisk(1, 1, 1), 0);
}

TEST_F(JobTicketFiles, a_missing_file_counts_0) {
  CJobTicket ticket;
  ticket.m_JobFile.Directory = m_Scratch.Wide() + L"\\";
  ticket.m_JobFile.FileName = L"missing.ps";
  ticket.m_CFMFile.AddEntry(m_Scratch.Wide() + L"\\missing\\", L"page");
  EXPECT_EQ(ticket.GetSizeOnDisk(1, 1, 1), 0);
}

}  // namespace
