#include "rastrel/job/job_code_text.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "rastrel/job/job_ticket.h"
#include "rastrel/platform/host/translation.h"
#include "tests/job/vocabulary.h"
#include "tests/support/library_fixture.h"
#include "tests/support/test_host.h"

namespace {

using rastrel::test::LibraryTest;
using rastrel::test::TestHost;

class StatusText : public LibraryTest {};

std::wstring InfoTextOf(int code, int originator) {
  const CJobTicket ticket;
  CString text = L"before";
  ticket.GetInfoText(static_cast<JT_INFO>(code), static_cast<JT_ORIGINATOR>(originator), text);
  return text;
}

TEST_F(StatusText, every_status_has_its_text) {
  CJobTicket ticket;
  for (const auto& [status, expected] : rastrel::test::StatusTexts()) {
    ticket.m_Status = static_cast<JT_STATUS>(status);
    CString text = L"before";
    ticket.GetStatusText(text);
    EXPECT_EQ(expected, text);
  }
}

TEST_F(StatusText, a_status_outside_the_table_leaves_the_text_as_it_was) {
  CJobTicket ticket;
  for (const int status : {6, 7, -1, 255, std::numeric_limits<int>::max()}) {
    ticket.m_Status = static_cast<JT_STATUS>(status);
    CString text = L"before";
    ticket.GetStatusText(text);
    EXPECT_EQ(text, L"before") << status;
  }
}

TEST_F(StatusText, every_error_number_gives_its_text_and_itself) {
  CJobTicket ticket;
  for (int code = -3; code <= 300; ++code) {
    ticket.m_Error = static_cast<JT_ERROR>(code);
    CString text = L"before";
    EXPECT_EQ(code, ticket.GetErrorText(text));
    EXPECT_EQ(rastrel::test::ExpectedErrorText(code), text) << code;
  }
}

TEST_F(StatusText, errors_7_and_19_are_unknown_and_11_carries_its_number) {
  CJobTicket ticket;
  CString text;
  for (const int code : {7, 19}) {
    ticket.m_Error = static_cast<JT_ERROR>(code);
    ticket.GetErrorText(text);
    EXPECT_EQ(text, L"(*v*)Unknown error");
  }
  ticket.m_Error = JTE_NUMBERED;
  ticket.GetErrorText(text);
  EXPECT_EQ(text, L"(*v*)Unknown error 11");
}

TEST_F(StatusText, no_error_empties_the_text_and_returns_0) {
  CJobTicket ticket;
  CString text = L"before";
  EXPECT_EQ(ticket.GetErrorText(text), JTE_NONE);
  EXPECT_EQ(text, L"");
}

TEST_F(StatusText, every_info_has_its_text_by_originator) {
  for (const int originator : {0, 1, 2, 3, 4, 5, 77, -1})
    for (int code = -3; code <= 300; ++code)
      EXPECT_EQ(rastrel::test::ExpectedInfoText(code, originator), InfoTextOf(code, originator))
          << code << " of " << originator;
}

TEST_F(StatusText, infos_outside_the_vocabulary_empty_the_text) {
  for (const int code : {10, 11, 100, -1, 254, 264}) EXPECT_EQ(InfoTextOf(code, 0), L"") << code;
}

TEST_F(StatusText, another_originator_stands_in_the_translated_text) {
  TestHost host;
  host.m_Translate = [](const std::wstring& text) -> std::optional<std::wstring> {
    if (text == L"(*v*)Initializing other %d") return L"Anderer Teil %d beginnt";
    return std::nullopt;
  };
  EXPECT_EQ(InfoTextOf(256, 5), L"Anderer Teil 5 beginnt");
  // A text that the table lacks stays, with its mark, and still gets the number.
  EXPECT_EQ(InfoTextOf(257, 5), L"(*v*)Other Ready 5");
}

TEST_F(StatusText, only_the_texts_with_a_number_are_translated) {
  TestHost host;
  host.m_Translate = [](const std::wstring&) -> std::optional<std::wstring> {
    return L"translated";
  };
  EXPECT_EQ(InfoTextOf(257, 0), L"(*v*)Rip Ready");
  EXPECT_EQ(InfoTextOf(257, 1), L"(*v*)\"Odalis\" Ready");
  EXPECT_EQ(InfoTextOf(7, 5), L"(*v*)Processing Started");
  EXPECT_EQ(InfoTextOf(257, 2), L"translated");
}

TEST_F(StatusText, a_translation_of_512_characters_is_taken_and_one_of_513_is_not) {
  TestHost host;
  std::size_t length = 512;
  host.m_Translate = [&length](const std::wstring&) -> std::optional<std::wstring> {
    return std::wstring(length - 2, L'x') + L"%d";
  };
  EXPECT_EQ(std::wstring(510, L'x') + L"5", InfoTextOf(257, 5));
  length = 513;
  EXPECT_EQ(InfoTextOf(257, 5), L"(*v*)Other Ready 5");
}

TEST_F(StatusText, a_hostile_translation_reads_nothing_that_is_not_there) {
  TestHost host;
  host.m_Translate = [](const std::wstring&) -> std::optional<std::wstring> {
    return L"%s|%s|%n|%100x|%";
  };
  EXPECT_EQ(InfoTextOf(257, 5), L"5||||");
}

TEST_F(StatusText, an_empty_translation_empties_the_text) {
  TestHost host;
  host.m_Translate = [](const std::wstring&) -> std::optional<std::wstring> { return L""; };
  EXPECT_EQ(InfoTextOf(257, 5), L"");
}

TEST(Vocabulary, numbers_keep_their_values) {
  EXPECT_EQ(0, JTO_RIP);
  EXPECT_EQ(1, JTO_ODALIS);
  EXPECT_EQ(2, JTO_SYSTEM);
  EXPECT_EQ(0, JS_RECEIVING);
  EXPECT_EQ(1, JS_PREPROCESSING);
  EXPECT_EQ(2, JS_IDLE);
  EXPECT_EQ(3, JS_HOLDING);
  EXPECT_EQ(4, JS_ACTIVE);
  EXPECT_EQ(5, JS_COMPLETE);
  const int errors[] = {JTE_NONE,         JTE_RIP_MISSING,      JTE_ODALIS_MISSING,
                        JTE_STEM_MISSING, JTE_NO_OUTPUT_THREAD, JTE_START_ODALIS,
                        JTE_START_RIP};
  for (int code = 0; code <= 6; ++code) EXPECT_EQ(code, errors[code]);
  const int later[] = {JTE_RIP_EXIT,      JTE_ODALIS_EXIT,   JTE_LOW_RESOURCES,  JTE_NUMBERED,
                       JTE_ABNORMAL,      JTE_SPOOL_OUTPUT,  JTE_SPOOL_GENERATE, JTE_PREFIX,
                       JTE_SPOOL_INVALID, JTE_SPOOL_MISSING, JTE_PS_MISSING};
  for (int code = 8; code <= 18; ++code) EXPECT_EQ(code, later[code - 8]);
  const int children[] = {JTE_UNDEFINED,       JTE_RUN_INSTALL,    JTE_INVALID_RECOVERY,
                          JTE_RIP_STATUS_1,    JTE_RIP_STATUS_2,   JTE_RIP_STATUS_3,
                          JTE_ODALIS_STATUS_1, JTE_ODALIS_STATUS_2};
  for (int code = 255; code <= 262; ++code) EXPECT_EQ(code, children[code - 255]);
  const int infos[] = {JTI_BAD,
                       JTI_START_RIPPING,
                       JTI_RIPPING_COMPLETE,
                       JTI_START_PRINTING,
                       JTI_PRINTING_COMPLETE,
                       JTI_START_SPOOLING,
                       JTI_SPOOLING_COMPLETE,
                       JTI_PROCESSING_STARTED,
                       JTI_PROCESSING_COMPLETED,
                       JTI_PRINTING_ABORTED,
                       JTI_CLQ_SUCCESS,
                       JTI_CLQ_FAILURE};
  for (int code = 0; code <= 11; ++code) EXPECT_EQ(code, infos[code]);
  const int states[] = {JTI_UNDEFINED,    JTI_INITIALISING, JTI_READY,
                        JTI_INTERPRETING, JTI_CONVERTING,   JTI_FLUSHING,
                        JTI_PRINTING,     JTI_SPOOLING,     JTI_VALID_RECOVERY};
  for (int code = 255; code <= 263; ++code) EXPECT_EQ(code, states[code - 255]);
}

TEST(Vocabulary, every_number_is_32_bits) {
  EXPECT_EQ(sizeof(JT_ERROR), 4U);
  EXPECT_EQ(sizeof(JT_INFO), 4U);
  EXPECT_EQ(sizeof(JT_ORIGINATOR), 4U);
  EXPECT_EQ(sizeof(JT_STATUS), 4U);
}

}  // namespace
