#include "rastrel/job/vk_job_ticket.h"

#include <gtest/gtest.h>

#include <string>

#include "rastrel/platform/mfc/window.h"
#include "tests/job/vocabulary.h"
#include "tests/support/job_log.h"
#include "tests/support/library_fixture.h"

namespace {

using rastrel::test::JobLog;
using rastrel::test::LibraryTest;

class VkJobTicket : public LibraryTest {
 protected:
  void SetUp() override {
    m_Ticket.OpenLog(JobLog::Take);
    m_Ticket.SetWnd(&m_Window);
  }
  void TearDown() override { JobLog::Taken(); }

  CWnd m_Window;
  CVKJobTicket m_Ticket;
};

// The kind that a code posts; 0 for no message.
int KindOf(int code) {
  if (code == 0 || code == 7 || code == 255 || (code >= 256 && code <= 263)) return 2;
  if (code == 8 || code == 9) return 3;
  return 0;
}

TEST_F(VkJobTicket, every_info_posts_the_kind_of_its_row) {
  for (const int originator : {0, 1, 2}) {
    for (int code = -1; code <= 300; ++code) {
      m_Ticket.Info(static_cast<JT_INFO>(code), static_cast<JT_ORIGINATOR>(originator));
      const auto message = m_Window.TakeMessage();
      ASSERT_EQ(KindOf(code) != 0, message.has_value()) << code;
      if (!message) continue;
      EXPECT_EQ(message->message, 32890U);
      EXPECT_EQ(static_cast<std::uintptr_t>(originator), message->wParam);
      EXPECT_EQ(KindOf(code), message->lParam) << code;
      EXPECT_FALSE(m_Window.TakeMessage().has_value());
    }
  }
}

TEST_F(VkJobTicket, the_ticket_has_changed_before_the_window_hears_of_it) {
  class Host : public CWnd {
   public:
    bool PostMessage(unsigned, std::uintptr_t, std::intptr_t) override {
      m_Error = m_Ticket->m_Error;
      return true;
    }
    CJobTicket* m_Ticket = nullptr;
    int m_Error = -1;
  };
  Host host;
  host.m_Ticket = &m_Ticket;
  m_Ticket.SetWnd(&host);
  m_Ticket.Info(JTI_PRINTING_ABORTED, JTO_SYSTEM);
  EXPECT_EQ(host.m_Error, 12);
}

TEST_F(VkJobTicket, progress_posts_also_for_0_and_leaves_the_number_alone_then) {
  m_Ticket.Progress(30, JTO_RIP);
  m_Ticket.Progress(0, JTO_ODALIS);
  EXPECT_EQ(m_Ticket.GetProgress(JTO_RIP, nullptr), 30);
  for (const std::uintptr_t originator : {0U, 1U}) {
    const auto message = m_Window.TakeMessage();
    ASSERT_TRUE(message);
    EXPECT_EQ(message->message, 32891U);
    EXPECT_EQ(originator, message->wParam);
    EXPECT_EQ(message->lParam, 2);
  }
  EXPECT_FALSE(m_Window.TakeMessage());
}

TEST_F(VkJobTicket, errors_and_texts_post_nothing) {
  m_Ticket.Error(JTE_PREFIX, JTO_SYSTEM);
  m_Ticket.Error(L"words", JTO_SYSTEM);
  m_Ticket.Warning(L"words", JTO_SYSTEM);
  m_Ticket.Log(L"line");
  EXPECT_EQ(m_Ticket.m_Error, 15);
  EXPECT_EQ(m_Ticket.m_Status, 3);
  EXPECT_FALSE(m_Window.TakeMessage());
}

TEST_F(VkJobTicket, without_a_window_it_behaves_as_any_other_ticket) {
  for (int code = -1; code <= 300; ++code) {
    CVKJobTicket direct;
    CJobTicket plain;
    for (CJobTicket* ticket : {static_cast<CJobTicket*>(&direct), &plain}) {
      JobLog::Taken();
      ticket->OpenLog(JobLog::Take);
      ticket->Progress(5, JTO_RIP);
      ticket->Info(static_cast<JT_INFO>(code), JTO_ODALIS);
      ticket->Progress(0, JTO_RIP);
    }
    CString directText;
    CString plainText;
    EXPECT_EQ(plain.GetProgress(JTO_RIP, &plainText), direct.GetProgress(JTO_RIP, &directText));
    EXPECT_EQ(plainText, directText);
    EXPECT_EQ(plain.m_Error, direct.m_Error);
    EXPECT_EQ(plain.m_Status, direct.m_Status);
  }
}

TEST_F(VkJobTicket, a_copy_posts_to_the_same_window) {
  CVKJobTicket copy(m_Ticket);
  copy.Progress(1, JTO_RIP);
  EXPECT_TRUE(m_Window.TakeMessage());
}

}  // namespace
