// The shipped scans against literal ones that seek and read for every line.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/memory_file.h"
#include "tests/support/ps_scan_answers.h"
#include "tests/support/ps_scan_files.h"

using rastrel::test::DifferencesFromLiteral;
using rastrel::test::MemoryFile;
using rastrel::test::PsScanFiles;

namespace {

const std::vector<std::string> LineEnds = {
    "\n", "\r", "\r\n", "\n\n", std::string(1, '\0'), std::string("\0\n", 2)};

// All that a scan looks for, in an order in which every scan gets far.
std::string Document(const std::string& end) {
  std::string text = "%!PS-Adobe-3.0 EPSF-3.0" + end;
  for (const char* line :
       {"%%BoundingBox: (atend)", "%%DocumentCustomColors: (A B) C", "%%+ (D\\065)",
        "%%CMYKCustomColor: 0 .5 1e-1 1 C", "%%+ 1 1 1 1 (A B)", "%%RGBCustomColor: 1 0.5 0 (DA)",
        "%%EndComments", "10 10 moveto", "%BeginPhotoshop: 2 1", "%%Trailer",
        "%%BoundingBox: -1 2.5 300 40", "%%EOF"})
    text += line + end;
  return text;
}

void ExpectNoDifferenceOnAnyPrefix(const std::string& content) {
  MemoryFile file;
  file.Write(content);
  for (std::size_t size = content.size() + 1; size-- > 0;) {
    file.Resize(static_cast<long>(size));
    ASSERT_EQ(DifferencesFromLiteral(file.Path()), "") << "cut at " << size;
  }
}

// Lines whose lengths end round the size of the line buffer.
void ExpectNoDifferenceForLength(std::size_t length) {
  for (const std::string& end : LineEnds) {
    const std::string content = "%!PS" + end + "%" + std::string(length - 1, 'x') + end +
                                "%%DocumentCustomColors: A" + end + "%%RGBCustomColor: 1 1 1 A" +
                                end + "%%BoundingBox: 1 2 3 4" + end + "y";
    ExpectNoDifferenceOnAnyPrefix(content);
    if (testing::Test::HasFatalFailure()) return;
  }
}

}  // namespace

TEST(AgainstLiteralScans, every_prefix_of_a_document_with_every_line_end) {
  for (const std::string& end : LineEnds) {
    ExpectNoDifferenceOnAnyPrefix(Document(end));
    std::string deferred = Document(end);
    deferred.replace(deferred.find("(A B) C"), 7, "(atend)");
    deferred.erase(deferred.find("%BeginPhotoshop"), 3);
    ExpectNoDifferenceOnAnyPrefix(deferred + deferred);
    if (HasFatalFailure()) return;
  }
}

TEST(AgainstLiteralScans, every_prefix_of_mixed_line_ends) {
  const std::string one = Document("@");
  std::string mixed;
  unsigned next = 1;
  for (const char byte : one + one) {
    next = next * 1103515245 + 12345;
    mixed += byte == '@' ? LineEnds.at((next >> 16) % LineEnds.size()) : std::string(1, byte);
  }
  ExpectNoDifferenceOnAnyPrefix(mixed);
}

TEST(AgainstLiteralScans, every_prefix_with_a_line_of_4094_bytes) {
  ExpectNoDifferenceForLength(4094);
}
TEST(AgainstLiteralScans, every_prefix_with_a_line_of_4095_bytes) {
  ExpectNoDifferenceForLength(4095);
}
TEST(AgainstLiteralScans, every_prefix_with_a_line_of_4096_bytes) {
  ExpectNoDifferenceForLength(4096);
}
TEST(AgainstLiteralScans, every_prefix_with_a_line_of_4097_bytes) {
  ExpectNoDifferenceForLength(4097);
}
TEST(AgainstLiteralScans, every_prefix_with_a_line_of_4098_bytes) {
  ExpectNoDifferenceForLength(4098);
}
TEST(AgainstLiteralScans, every_prefix_with_a_line_of_4099_bytes) {
  ExpectNoDifferenceForLength(4099);
}

TEST(AgainstLiteralScans, keywords_at_every_offset_round_the_buffers_edge) {
  MemoryFile file;
  const std::string rest = "\n" + Document("\n");
  for (const char* const keyword : {"%%BoundingBox: 1 2 3 4", "%%DocumentCustomColors: A", "%%+ B",
                                    "%BeginPhotoshop", "%%CMYKCustomColor: 1 1 1 1 A", "%%EOF"})
    for (std::size_t before = 4060; before <= 4130; ++before)
      for (const char fill : {'x', '%', '\n'})
        for (const std::size_t behind : {0, 1, 4096, 9000}) {
          // Line ends by the thousand take the literal scans long.
          if (fill == '\n' && behind != 4096) continue;
          // The tail decides whether the edge is met in the window or in the file's last bytes.
          file.Write("%!PS-Adobe\n%" + std::string(before, fill) + keyword + rest +
                     std::string(behind, 'z'));
          ASSERT_EQ(DifferencesFromLiteral(file.Path()), "") << keyword << before << fill << behind;
        }
}

TEST(AgainstLiteralScans, trailers_round_the_last_mib) {
  MemoryFile file;
  const std::string head = "%!PS\n%%DocumentCustomColors: (atend)\n%%EndComments\n";
  const std::string lists =
      "%%DocumentCustomColors: A\n%%RGBCustomColor: 1 1 1 A\n%%BoundingBox: 1 2 3 4\n";
  std::string body;
  while (body.size() < (std::size_t{600} << 10)) body += std::string(4000, 'x') + "\n";
  for (int distance = -30; distance <= 100; ++distance) {
    std::string tail(static_cast<std::size_t>(0x100000 - distance), 'y');
    for (std::size_t at = 4000; at < tail.size(); at += 4000) tail[at] = '\n';
    file.Write(head + body + lists + tail);
    ASSERT_EQ(DifferencesFromLiteral(file.Path()), "") << distance;
  }
}

TEST(AgainstLiteralScans, long_runs_without_a_line_end_and_of_line_ends) {
  MemoryFile file;
  const std::string keywords = "%%BoundingBox: 1 2 3 4\n%%DocumentCustomColors: A\nx\n";
  const std::vector<std::string> units = {"x",    "\n", "\r\n",  "%",
                                          "x%%B", "%B", "\n\n%", std::string(1, '\0')};
  for (const std::string& unit : units)
    for (const std::size_t size : {70000, 262144 - 4096, 262144, 300000, 300001, 300002}) {
      std::string run;
      while (run.size() < size) run += unit;
      // A file with a line end a byte takes the literal scans long.
      if (unit.find('\n') != std::string::npos || unit[0] == '\0') run.resize(run.size() / 8);
      file.Write("%!PS\n%" + run + keywords);
      ASSERT_EQ(DifferencesFromLiteral(file.Path()), "") << unit << size;
    }
}

// RASTREL_TEST_FILES=N tries that many, RASTREL_TEST_SEED=S others.
unsigned FromEnvironment(const char* name, unsigned usual) {
  const char* text = std::getenv(name);
  return text == nullptr ? usual : static_cast<unsigned>(std::strtoul(text, nullptr, 10));
}

TEST(AgainstLiteralScans, random_files) {
  MemoryFile file;
  PsScanFiles files(FromEnvironment("RASTREL_TEST_SEED", 20250601));
  const unsigned count = FromEnvironment("RASTREL_TEST_FILES", 4000);
  for (unsigned number = 0; number < count; ++number) {
    const std::string content = files.Next();
    file.Write(content);
    ASSERT_EQ(DifferencesFromLiteral(file.Path()), "") << "file " << number;
  }
}
