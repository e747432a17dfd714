#include "rastrel/cfm/cfm_page.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "tests/support/library_fixture.h"
#include "tests/support/private_member.h"

namespace {

using PrintingThread::CCFMPage;
using rastrel::test::LibraryTest;
using rastrel::test::PlaceOf;

class CfmPage : public LibraryTest {
 protected:
  [[nodiscard]] std::wstring OutputDirectory() const {
    return m_Library.RipDirectory() + L"System\\c-out\\";
  }
};

TEST_F(CfmPage, the_fields_stand_in_order_behind_one_virtual_table) {
  EXPECT_TRUE(std::has_virtual_destructor_v<CCFMPage>);
  const CCFMPage page;
  rastrel::test::ExpectInOrder({PlaceOf(page), PlaceOf(page.m_Id), PlaceOf(page.m_Directory),
                                PlaceOf(page.m_Title), PlaceOf(page.m_TicketType)});
}

TEST_F(CfmPage, a_fresh_page_has_the_default_id_directory_and_type) {
  const CCFMPage page;
  EXPECT_EQ(page.m_Id, L"QueueCMF2Generator");
  EXPECT_EQ(OutputDirectory(), page.m_Directory);
  EXPECT_EQ(page.m_Title, L"");
  EXPECT_EQ(page.m_TicketType, 1);
}

TEST_F(CfmPage, a_page_of_a_saved_list_takes_directory_and_title) {
  const CCFMPage page(L" C:\\spool ", L" title ");
  EXPECT_EQ(page.m_Id, L"QueueCMF2Generator");
  EXPECT_EQ(page.m_Directory, L"C:\\spool\\");
  EXPECT_EQ(page.m_Title, L" title ");
  EXPECT_EQ(page.m_TicketType, 1);
}

TEST_F(CfmPage, set_directory_trims_replaces_default_and_closes) {
  const std::wstring output = OutputDirectory();
  struct Row {
    std::wstring text, directory;
  };
  const Row rows[] = {{L"C:\\a", L"C:\\a\\"},
                      {L"C:\\a\\", L"C:\\a\\"},
                      {L"/a/b", L"/a/b\\"},
                      {L"/a/b/", L"/a/b/"},
                      {L"\t \n\r\a\f\vC:\\a b\t \n\r\a\f\v", L"C:\\a b\\"},
                      {L"", L"\\"},
                      {L" \t ", L"\\"},
                      {L"default", output},
                      {L" default\t", output},
                      {L"Default", L"Default\\"},
                      {L"default\\", L"default\\"},
                      {L"default x", L"default x\\"},
                      {L"\u00a0x\u00a0", L"\u00a0x\u00a0\\"}};
  for (const Row& row : rows) {
    CCFMPage page;
    page.SetDirectory(row.text);
    EXPECT_EQ(row.directory, page.m_Directory);
  }
}

}  // namespace
