#include "server/web/http/event_stream.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <string>
#include <thread>

#include "tests/server/web/web_test_support.h"

namespace rastrel::server::web {
namespace {

std::string Take(EventStream& stream, std::size_t limit) {
  std::string text(limit, '\0');
  text.resize(stream.Take(text.data(), limit));
  return text;
}

TEST(EventStream, gives_bytes_as_they_are_taken) {
  EventStream stream;
  EXPECT_TRUE(stream.Send("abc"));
  EXPECT_EQ(Take(stream, 2), "ab");
  EXPECT_TRUE(stream.Send("de"));
  EXPECT_EQ(stream.WaitingBytes(), 3U);
  EXPECT_EQ(Take(stream, 9), "cde");
  EXPECT_EQ(Take(stream, 9), "");
  stream.Send("f");
  stream.Close();
  EXPECT_FALSE(stream.IsDone());
  EXPECT_FALSE(stream.Send("g"));
  EXPECT_EQ(Take(stream, 9), "f");
  EXPECT_TRUE(stream.IsDone());
}

TEST(EventStream, wakes_its_server_for_text_and_for_its_end) {
  EventStream stream;
  int woken = 0;
  stream.SetWake([&] { ++woken; });
  EXPECT_EQ(woken, 0);
  stream.Send("a");
  EXPECT_EQ(woken, 1);
  stream.SetWake([&] { woken += 10; });
  EXPECT_EQ(woken, 11);
  stream.Close();
  EXPECT_EQ(woken, 21);
  stream.Abandon();
  EXPECT_FALSE(stream.Send("b"));
  EXPECT_EQ(woken, 21);
}

TEST(EventStream, drops_a_reader_with_too_much_to_take) {
  for (const std::size_t size : {EventStream::WaitingLimit - 1, EventStream::WaitingLimit}) {
    EventStream stream;
    EXPECT_TRUE(stream.Send(std::string(size, 'x'))) << size;
  }
  EventStream stream;
  stream.Send("x");
  EXPECT_FALSE(stream.Send(std::string(EventStream::WaitingLimit, 'x')));
  EXPECT_FALSE(stream.IsOpen());
  EXPECT_EQ(stream.WaitingBytes(), 0U);
}

TEST(EventText, has_a_line_of_data_for_each_line) {
  EXPECT_EQ(EventText(7, "state", "{}"), "id: 7\nevent: state\ndata: {}\n\n");
  EXPECT_EQ(EventText(0, "", "a\nb\r\nc\rd"), "data: a\ndata: b\ndata: c\ndata: d\n\n");
}

TEST_F(WebTest, a_reader_that_takes_nothing_is_closed_and_others_go_on) {
  m_Settings.limits.idleTime = std::chrono::seconds(1);
  Start();
  const JobId id = Submit("ada");
  ASSERT_TRUE(m_Queue->ClaimToInterpret());
  // More bytes than sockets hold.
  for (int line = 0; line < 3000; ++line)
    ASSERT_TRUE(m_Queue->AddMessage(id, std::string(2000, 'x')));
  TestClient stalled = Local();
  stalled.Send("GET /api/v1/events?after=0 HTTP/1.1\r\nHost: localhost\r\n\r\n");
  EXPECT_TRUE(test::WaitUntil([&] { return m_Server->Connections() == 1; }));
  EXPECT_TRUE(test::WaitUntil([&] { return m_Server->Connections() == 0; }));
  const std::string after = std::to_string(m_Queue->LastEvent().ValueOr(1) - 1);
  TestClient reader = Local();
  reader.Send("GET /api/v1/events?after=" + after + " HTTP/1.1\r\nHost: localhost\r\n\r\n");
  EXPECT_NE(reader.ReadUntil("xxx").find("event: message"), std::string::npos);
}

}  // namespace
}  // namespace rastrel::server::web
