#include "rastrel/printing/pipe_reader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <random>
#include <thread>
#include <vector>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/printing/output.h"
#include "rastrel/printing/stderr_parser.h"
#include "tests/support/library_fixture.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/transcript.h"
#include "tests/support/utf8_oracle.h"

namespace os = rastrel::os;
using rastrel::test::Lines;
using rastrel::test::OpenDescriptors;

namespace {

constexpr std::size_t RipPipeSize = 16'384;

void WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    ASSERT_GT(written, 0);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

class PipeReader : public rastrel::test::LibraryTest {
 protected:
  void SetUp() override {
    m_LogMark = m_Library.LogMark();
    m_Descriptors = OpenDescriptors();
    ASSERT_TRUE(os::CreatePipe(m_Read, m_Write, RipPipeSize));
  }
  void TearDown() override {
    os::CloseHandle(m_Read);
    os::CloseHandle(m_Write);
    EXPECT_EQ(OpenDescriptors(), m_Descriptors);
  }
  [[nodiscard]] std::string Logged() const { return m_Library.LogTextsBehind(m_LogMark); }

  /// The text that a reader has after these bytes and the end of the pipe.
  std::wstring TextOf(std::string_view bytes) {
    CRipOutReader reader(&m_Read);
    EXPECT_TRUE(reader.Start());
    WriteAll(m_Write, bytes);
    os::CloseHandle(m_Write);
    reader.Wait();
    return reader.m_Text;
  }

  HANDLE m_Read = INVALID_HANDLE_VALUE;
  HANDLE m_Write = INVALID_HANDLE_VALUE;
  std::size_t m_LogMark = 0;
  std::size_t m_Descriptors = 0;
};

TEST_F(PipeReader, a_child_that_writes_nothing_leaves_no_text_and_no_log_line) {
  EXPECT_EQ(TextOf(""), L"");
  EXPECT_EQ(Logged(), "");
}

TEST_F(PipeReader, the_text_is_all_that_was_written) {
  EXPECT_EQ(TextOf("begin := once\nend\n"), L"begin := once\nend\n");
  EXPECT_EQ(Logged(), "");
}

TEST_F(PipeReader, a_stream_longer_than_the_pipe_is_drained_while_it_is_written) {
  std::string text;
  for (int line = 0; line < 100'000; ++line) text += "line " + std::to_string(line) + '\n';
  ASSERT_GT(text.size(), RipPipeSize);
  EXPECT_EQ(TextOf(text), std::wstring(text.begin(), text.end()));
}

TEST_F(PipeReader, waiting_for_a_reader_that_was_never_started_returns_at_once) {
  CRipOutReader reader(&m_Read);
  reader.Wait();  // the write end is open: a wait for the stream's end would not return
  EXPECT_EQ(reader.m_Text, L"");
}

TEST_F(PipeReader, waiting_for_a_reader_whose_thread_could_not_be_made_returns_at_once) {
  const os::SystemCallsGuard guard;
  os::Calls().thread_create = [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) {
    return EAGAIN;
  };
  CRipOutReader reader(&m_Read);
  EXPECT_FALSE(reader.Start());
  reader.Wait();
  EXPECT_EQ(Logged(), "");
}

TEST_F(PipeReader, no_semaphore_is_reported_in_the_log) {
  const os::SystemCallsGuard guard;
  os::Calls().eventfd = [](unsigned, int) {
    errno = EMFILE;
    return -1;
  };
  CRipOutReader reader(&m_Read);
  EXPECT_FALSE(reader.Start());
  reader.Wait();
  EXPECT_EQ(Logged(), "[Print]: Couldn't set up synchronization");
}

TEST_F(PipeReader, a_semaphore_that_can_not_be_locked_is_reported_in_the_log) {
  const os::SystemCallsGuard guard;
  os::Calls().poll = [](pollfd*, nfds_t, int) {
    errno = ENOMEM;
    return -1;
  };
  CRipOutReader reader(&m_Read);
  EXPECT_FALSE(reader.Start());
  EXPECT_EQ(Logged(), "[Print]: Couldn't set up synchronization");
}

TEST_F(PipeReader, a_read_that_fails_is_reported_with_its_error_and_ends_the_reader) {
  HANDLE notReadable = m_Write;
  CRipOutReader reader(&notReadable);
  EXPECT_TRUE(reader.Start());
  reader.Wait();
  EXPECT_EQ(Logged(), "[Print] Pipe terminated with error: " + std::to_string(EBADF) + "\r\n");
}

TEST_F(PipeReader, an_owner_without_a_handle_has_nothing_to_read) {
  HANDLE none = 0;
  CRipOutReader reader(&none);
  EXPECT_TRUE(reader.Start());
  reader.Wait();
  EXPECT_EQ(Logged(), "");
}

/// Keeps each piece.
class PieceKeeper : public CPipeReader {
 public:
  using CPipeReader::CPipeReader;
  void OnData(const char* bytes, unsigned count) override {
    m_Pieces.emplace_back(bytes, count);
    if (m_Forget != nullptr) *m_Forget = 0;
  }
  std::vector<std::string> m_Pieces;
  HANDLE* m_Forget = nullptr;
};

TEST_F(PipeReader, a_piece_has_at_most_1024_bytes) {
  WriteAll(m_Write, std::string(1023, 'a') + std::string(1024, 'b') + std::string(2, 'c'));
  os::CloseHandle(m_Write);
  PieceKeeper reader(&m_Read);
  ASSERT_TRUE(reader.Start());
  reader.Wait();
  const std::vector<std::string> pieces = {std::string(1023, 'a') + "b",
                                           std::string(1023, 'b') + "c", "c"};
  EXPECT_EQ(reader.m_Pieces, pieces);
}

TEST_F(PipeReader, the_owners_variable_is_read_again_before_each_read) {
  WriteAll(m_Write, std::string(5000, 'a'));
  HANDLE variable = m_Read;
  PieceKeeper reader(&variable);
  reader.m_Forget = &variable;
  ASSERT_TRUE(reader.Start());
  reader.Wait();
  EXPECT_EQ(reader.m_Pieces.size(), 1U);
}

TEST_F(PipeReader, a_zero_byte_takes_the_rest_of_its_piece_away) {
  std::string bytes(2048, 'a');
  bytes[1000] = '\0';
  WriteAll(m_Write, bytes);  // before the reader starts, so that the pieces are full
  EXPECT_EQ(TextOf(""), std::wstring(1000, L'a') + std::wstring(1024, L'a'));
}

TEST_F(PipeReader, a_character_that_the_limit_cuts_comes_out_as_replacement_text) {
  const std::string euro = "\xE2\x82\xAC";
  for (const std::size_t before : {1022U, 1023U}) {
    const std::string bytes = std::string(before, 'a') + euro + "b";
    WriteAll(m_Write, bytes);
    const std::wstring expected = rastrel::test::DecodeUtf8Literally(bytes.substr(0, 1024)) +
                                  rastrel::test::DecodeUtf8Literally(bytes.substr(1024));
    ASSERT_NE(expected.find(wchar_t{0xFFFD}), std::wstring::npos);
    EXPECT_EQ(TextOf(""), expected) << before;
    os::CloseHandle(m_Read);
    ASSERT_TRUE(os::CreatePipe(m_Read, m_Write, RipPipeSize));
  }
}

TEST_F(PipeReader, a_character_that_ends_at_the_limit_is_whole) {
  WriteAll(m_Write, std::string(1021, 'a') + "\xE2\x82\xAC" + "b");
  EXPECT_EQ(TextOf(""), std::wstring(1021, L'a') + L"\x20AC" + L"b");
}

TEST_F(PipeReader, random_bytes_are_decoded_piece_by_piece) {
  std::mt19937 random(7);
  std::string bytes(10'000, '\0');
  for (char& byte : bytes) byte = static_cast<char>(1 + random() % 255);
  WriteAll(m_Write, bytes);
  std::wstring expected;
  for (std::size_t at = 0; at < bytes.size(); at += CPipeReader::BufferSize)
    expected += rastrel::test::DecodeUtf8Literally(bytes.substr(at, CPipeReader::BufferSize));
  EXPECT_EQ(TextOf(""), expected);
}

TEST_F(PipeReader, an_interrupted_read_goes_on) {
  static std::atomic<int> interruptions;
  interruptions = 3;
  const os::SystemCallsGuard guard;
  os::Calls().read = [](int descriptor, void* bytes, std::size_t count) -> ssize_t {
    if (count == CPipeReader::BufferSize && interruptions.fetch_sub(1) > 0) {
      errno = EINTR;
      return -1;
    }
    return ::read(descriptor, bytes, count);
  };
  EXPECT_EQ(TextOf("x"), L"x");
  EXPECT_EQ(Logged(), "");
}

TEST_F(PipeReader, a_parser_reports_from_its_own_thread_and_drops_the_last_line_without_an_end) {
  rastrel::test::RecordingMessaging messaging;
  std::thread::id reported;
  messaging.m_Told.Listen(
      [&reported](const std::string&) { reported = std::this_thread::get_id(); });
  CStderrParser parser(&messaging, &m_Read, JTO_ODALIS);
  ASSERT_TRUE(parser.Start());
  WriteAll(m_Write, "INFO: READY\nINFO: PRINTING");
  os::CloseHandle(m_Write);
  parser.Wait();
  EXPECT_EQ(messaging.m_Told.All(), (Lines{"Log [Odalis]INFO: READY", "Info 257 odalis"}));
  EXPECT_NE(reported, std::this_thread::get_id());
}

TEST_F(PipeReader, the_engines_standard_output_is_closed_at_once) {
  const std::size_t before = OpenDescriptors();
  Output output(m_Read);
  EXPECT_EQ(OpenDescriptors(), before - 1);
  EXPECT_FALSE(output.m_bStopped);
  m_Read = INVALID_HANDLE_VALUE;
  EXPECT_FALSE(os::WriteInput(m_Write, "x"));
  EXPECT_EQ(errno, EPIPE);
}

TEST_F(PipeReader, an_output_without_a_handle_closes_nothing) {
  const std::size_t before = OpenDescriptors();
  const Output none(INVALID_HANDLE_VALUE);
  EXPECT_EQ(OpenDescriptors(), before);
}

}  // namespace
