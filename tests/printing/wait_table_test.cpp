#include "rastrel/printing/wait_table.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>

#include "rastrel/platform/mfc/sync.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/printing/supervisor.h"
#include "tests/support/library_fixture.h"

using PrintingThread::CBBasePrintingThread;
using PrintingThread::CWaitTable;
namespace os = rastrel::os;

namespace {

/// Keeps which reactions were called.
class Probe : public CBBasePrintingThread {
 public:
  std::string m_Called;
  static void Signaled(CBBasePrintingThread& self) {
    static_cast<Probe&>(self).m_Called += "signaled ";
  }
  static void Abandoned(CBBasePrintingThread& self) {
    static_cast<Probe&>(self).m_Called += "abandoned ";
  }
  static void OtherSignaled(CBBasePrintingThread& self) {
    static_cast<Probe&>(self).m_Called += "other ";
  }
  static void OtherAbandoned(CBBasePrintingThread& self) {
    static_cast<Probe&>(self).m_Called += "other abandoned ";
  }
};

std::vector<HANDLE> HandlesOf(CWaitTable& table) {
  const auto handles = table.GetHandles();
  return {handles.begin(), handles.end()};
}

TEST(WaitTable, gives_the_handles_in_the_order_of_its_entries) {
  std::array<HANDLE, 3> handles = {30, 10, 20};
  CWaitTable table;
  for (HANDLE& handle : handles) table.Add(&handle, Probe::Signaled, Probe::Abandoned);
  EXPECT_EQ(HandlesOf(table), (std::vector<HANDLE>{30, 10, 20}));
}

TEST(WaitTable, returns_the_present_values_of_the_variables) {
  HANDLE handle = 5;
  CWaitTable table;
  table.Add(&handle, Probe::Signaled, Probe::Abandoned);
  EXPECT_EQ(HandlesOf(table), (std::vector<HANDLE>{5}));
  handle = 6;
  EXPECT_EQ(HandlesOf(table), (std::vector<HANDLE>{6}));
}

TEST(WaitTable, loses_an_entry_for_good_once_its_handle_is_invalid) {
  std::array<HANDLE, 3> handles = {1, 2, 3};
  CWaitTable table;
  table.Add(&handles[0], Probe::Signaled, Probe::Abandoned);
  table.Add(&handles[1], Probe::Signaled, Probe::Abandoned);
  table.Add(&handles[2], Probe::OtherSignaled, Probe::OtherAbandoned);
  handles[1] = INVALID_HANDLE_VALUE;
  EXPECT_EQ(HandlesOf(table), (std::vector<HANDLE>{1, 3}));
  ASSERT_NE(table.At(1), nullptr);
  EXPECT_EQ(table.At(1)->m_pHandle, &handles[2]);
  EXPECT_EQ(table.At(2), nullptr);
  handles[1] = 2;
  EXPECT_EQ(HandlesOf(table), (std::vector<HANDLE>{1, 3}));
}

TEST(WaitTable, without_a_valid_handle_is_empty) {
  HANDLE handle = INVALID_HANDLE_VALUE;
  CWaitTable table;
  EXPECT_TRUE(HandlesOf(table).empty());
  table.Add(&handle, Probe::Signaled, Probe::Abandoned);
  EXPECT_TRUE(HandlesOf(table).empty());
  EXPECT_EQ(table.At(0), nullptr);
}

TEST(WaitTable, keeps_a_null_handle) {
  HANDLE handle = 0;
  CWaitTable table;
  table.Add(&handle, Probe::Signaled, Probe::Abandoned);
  EXPECT_EQ(HandlesOf(table), (std::vector<HANDLE>{0}));
}

TEST(WaitTable, takes_64_entries_and_ignores_the_65th) {
  for (const std::size_t count : {63U, 64U, 65U}) {
    std::vector<HANDLE> handles(count);
    CWaitTable table;
    for (std::size_t index = 0; index < count; ++index) {
      handles[index] = static_cast<HANDLE>(100 + index);
      table.Add(&handles[index], Probe::Signaled, Probe::Abandoned);
    }
    const auto given = HandlesOf(table);
    EXPECT_EQ(given.size(), std::min<std::size_t>(count, 64));
    EXPECT_EQ(given.back(), static_cast<HANDLE>(100 + given.size() - 1));
  }
}

class WaitResult : public rastrel::test::LibraryTest {
 protected:
  void SetUp() override {
    m_Table.Add(&m_First, Probe::Signaled, Probe::Abandoned);
    m_Table.Add(&m_Second, Probe::OtherSignaled, Probe::OtherAbandoned);
    m_Mark = m_Library.LogMark();
  }
  /// The log and the reactions to a result.
  std::string ReactionTo(std::uint32_t result) {
    Probe probe;
    const std::size_t mark = m_Library.LogMark();
    const bool ok = probe.ReactTo(result, m_Table);
    return probe.m_Called + m_Library.LogTextsBehind(mark) + (ok ? "" : "(failed)");
  }

  HANDLE m_First = 0;
  HANDLE m_Second = 0;
  CWaitTable m_Table;
  std::size_t m_Mark = 0;
};

constexpr const char* UnexpectedSignal =
    "[Print]: Unexpected return from WaitForMultipleObjects (signal)";
constexpr const char* UnexpectedAbandon =
    "[Print]: Unexpected return from WaitForMultipleObjects (abandon)";

TEST_F(WaitResult, below_128_calls_the_signalled_reaction_of_its_entry) {
  EXPECT_EQ(ReactionTo(0), "signaled ");
  EXPECT_EQ(ReactionTo(1), "other ");
}

TEST_F(WaitResult, below_128_without_an_entry_is_reported_as_unexpected) {
  for (const std::uint32_t result : {2U, 63U, 64U, 127U})
    EXPECT_EQ(ReactionTo(result), UnexpectedSignal);
}

TEST_F(WaitResult, from_128_calls_the_abandoned_reaction_of_its_entry) {
  EXPECT_EQ(ReactionTo(128), "abandoned ");
  EXPECT_EQ(ReactionTo(129), "other abandoned ");
}

TEST_F(WaitResult, from_128_without_an_entry_is_reported_as_unexpected) {
  for (const std::uint32_t result : {130U, 192U, 257U})
    EXPECT_EQ(ReactionTo(result), UnexpectedAbandon);
}

TEST_F(WaitResult, from_258_is_passed_over) {
  for (const std::uint32_t result : {258U, 259U, 0xFFFFFFFEU}) EXPECT_EQ(ReactionTo(result), "");
}

TEST_F(WaitResult, of_a_failed_wait_is_reported_with_the_systems_error) {
  CAppLog::Instance();
  errno = ENOMEM;
  Probe probe;
  EXPECT_FALSE(probe.ReactTo(0xFFFFFFFF, m_Table));
  EXPECT_EQ(m_Library.LogTextsBehind(m_Mark),
            "[Print]: WaitForMultipleObjects failed. Error: " + std::to_string(ENOMEM) + "\r\n");
  EXPECT_EQ(probe.m_Called, "");
}

TEST_F(WaitResult, with_an_empty_table_is_passed_over) {
  m_Table = CWaitTable();
  for (const std::uint32_t result : {0U, 1U, 127U, 128U, 257U, 258U})
    EXPECT_EQ(ReactionTo(result), "");
}

TEST_F(WaitResult, counts_the_entries_that_are_left) {
  m_First = INVALID_HANDLE_VALUE;
  static_cast<void>(m_Table.GetHandles());
  EXPECT_EQ(ReactionTo(0), "other ");
  EXPECT_EQ(ReactionTo(1), UnexpectedSignal);
  EXPECT_EQ(ReactionTo(128), "other abandoned ");
  EXPECT_EQ(ReactionTo(129), UnexpectedAbandon);
}

TEST_F(WaitResult, comes_from_the_first_of_two_handles_that_are_signalled) {
  CSemaphore first(1, 1);
  CSemaphore second(1, 1);
  m_First = first.m_hObject;
  m_Second = second.m_hObject;
  Probe probe;
  EXPECT_TRUE(probe.WaitOnce(m_Table));
  EXPECT_TRUE(probe.WaitOnce(m_Table));
  EXPECT_EQ(probe.m_Called, "signaled other ");
}

TEST_F(WaitResult, of_a_wait_for_nothing_is_a_failure_and_no_standstill) {
  CWaitTable empty;
  Probe probe;
  EXPECT_FALSE(probe.WaitOnce(empty));
  EXPECT_EQ(m_Library.LogTextsBehind(m_Mark),
            "[Print]: WaitForMultipleObjects failed. Error: " + std::to_string(EINVAL) + "\r\n");
}

TEST_F(WaitResult, of_a_wait_that_the_system_refuses_is_a_failure) {
  CSemaphore first(1, 1);
  m_First = first.m_hObject;
  m_Second = first.m_hObject;
  const os::SystemCallsGuard guard;
  os::Calls().poll = [](pollfd*, nfds_t, int) {
    errno = ENOMEM;
    return -1;
  };
  Probe probe;
  EXPECT_FALSE(probe.WaitOnce(m_Table));
  EXPECT_EQ(m_Library.LogTextsBehind(m_Mark),
            "[Print]: WaitForMultipleObjects failed. Error: " + std::to_string(ENOMEM) + "\r\n");
}

TEST_F(WaitResult, of_a_closed_handle_is_a_failure) {
  m_First = 1'000'000;
  m_Second = 1'000'000;
  Probe probe;
  EXPECT_FALSE(probe.WaitOnce(m_Table));
  EXPECT_EQ(m_Library.LogTextsBehind(m_Mark),
            "[Print]: WaitForMultipleObjects failed. Error: " + std::to_string(EBADF) + "\r\n");
}

TEST_F(WaitResult, over_64_handles_is_found_at_the_last_place) {
  std::vector<std::unique_ptr<CSemaphore>> quiet;
  CWaitTable table;
  for (int count = 0; count < 63; ++count) {
    quiet.push_back(std::make_unique<CSemaphore>(0, 1));
    table.Add(&quiet.back()->m_hObject, Probe::Signaled, Probe::Abandoned);
  }
  CSemaphore loud(1, 1);
  table.Add(&loud.m_hObject, Probe::OtherSignaled, Probe::OtherAbandoned);
  Probe probe;
  EXPECT_TRUE(probe.WaitOnce(table));
  EXPECT_EQ(probe.m_Called, "other ");
}

}  // namespace
