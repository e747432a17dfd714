#include "rastrel/platform/os/byte_search.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <random>
#include <string>

namespace os = rastrel::os;

namespace {

// Two pages, the second of which must not be touched: the text is right before it.
class GuardedText {
 public:
  GuardedText()
      : m_Pages(static_cast<char*>(::mmap(nullptr, 2 * Size, PROT_READ | PROT_WRITE,
                                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
    ::mprotect(m_Pages + Size, Size, PROT_NONE);
  }
  ~GuardedText() { ::munmap(m_Pages, 2 * Size); }
  GuardedText(const GuardedText&) = delete;
  GuardedText& operator=(const GuardedText&) = delete;

  const char* Put(const std::string& text) {
    return std::copy(text.begin(), text.end(), End() - text.size()) - text.size();
  }
  [[nodiscard]] char* End() const { return m_Pages + Size; }

 private:
  static constexpr std::size_t Size = std::size_t{64} << 10;
  char* m_Pages;
};

std::string RandomText(std::mt19937& random, std::size_t size, std::string_view alphabet) {
  std::string text(size, '\0');
  for (char& byte : text) byte = alphabet[random() % alphabet.size()];
  return text;
}

constexpr std::string_view Bytes("ab%%BD\n\r\0\x0b\x0c\x1a\x1d\x8a\x8d\x80 ", 16);

struct Letters {
  Letters() { is['B'] = is['D'] = true; }
  bool is[256]{};
};

}  // namespace

TEST(ByteSearch, a_line_end_is_cr_lf_or_zero_and_nothing_else) {
  GuardedText text;
  for (const os::ByteSearch& search : os::AllSearches())
    for (int value = 0; value < 256; ++value) {
      const bool ends = value == 0 || value == 10 || value == 13;
      const char* const begin = text.Put(std::string(100, 'x') + static_cast<char>(value) + "yy");
      EXPECT_EQ(search.lineEnd(begin, text.End()) - begin, ends ? 100 : 103)
          << search.name << value;
      EXPECT_EQ(search.lastLineEnd(begin, text.End()) - begin, ends ? 100 : 103) << search.name;
    }
}

TEST(ByteSearch, every_instruction_set_finds_the_same_as_the_plain_loop) {
  std::mt19937 random(1);
  GuardedText text;
  const os::ByteSearch& plain = os::AllSearches().front();
  for (int round = 0; round < 20000; ++round) {
    // Mostly one byte, so that finds are far apart too.
    std::string bytes(random() % 700, 'x');
    for (std::size_t at = random() % 40; at < bytes.size();
         at += 1 + random() % (1 << random() % 9))
      bytes[at] = Bytes[random() % Bytes.size()];
    const char* const begin = text.Put(bytes);
    const char* const end = text.End();
    for (const os::ByteSearch& search : os::AllSearches()) {
      ASSERT_EQ(search.lineEnd(begin, end), plain.lineEnd(begin, end)) << search.name;
      ASSERT_EQ(search.lastLineEnd(begin, end), plain.lastLineEnd(begin, end)) << search.name;
      ASSERT_EQ(search.unlike(begin, end, 'x'), plain.unlike(begin, end, 'x')) << search.name;
      ASSERT_EQ(search.pair(begin, end, '%', 'B', 'D'), plain.pair(begin, end, '%', 'B', 'D'))
          << search.name;
      ASSERT_EQ(search.pair(begin, end, '%', '%', '%'), plain.pair(begin, end, '%', '%', '%'))
          << search.name;
    }
  }
}

TEST(ByteSearch, a_pair_must_stand_inside) {
  GuardedText text;
  for (const os::ByteSearch& search : os::AllSearches())
    for (std::size_t size = 1; size < 300; ++size) {
      const char* const begin = text.Put(std::string(size - 1, 'x') + "%");
      EXPECT_EQ(search.pair(begin, text.End(), '%', 'x', '%'), text.End()) << search.name;
    }
}

TEST(ByteSearch, a_pair_of_the_last_two_bytes_is_found) {
  GuardedText text;
  for (const os::ByteSearch& search : os::AllSearches())
    for (std::size_t size = 2; size < 300; ++size) {
      const char* const begin = text.Put(std::string(size - 2, 'x') + "%B");
      EXPECT_EQ(search.pair(begin, text.End(), '%', 'B', 'D'), text.End() - 2) << search.name;
      EXPECT_EQ(search.pair(begin, text.End(), '%', 'D', 'B'), text.End() - 2) << search.name;
    }
}

TEST(ByteSearch, nothing_that_breaks_marked_lines_is_passed_over) {
  std::mt19937 random(2);
  GuardedText text;
  const Letters letters;
  for (int round = 0; round < 20000; ++round) {
    std::string bytes = "%";
    const std::size_t size = 1 + random() % 9000;
    while (bytes.size() < size)
      bytes += RandomText(random, random() % 200, "abc %") + (random() % 2 == 0 ? "\n%" : "\r\n%");
    const std::size_t faults = random() % 4;
    for (std::size_t fault = 0; fault < faults; ++fault)
      bytes.insert(random() % bytes.size(), RandomText(random, 1 + random() % 3, Bytes));
    const char* const begin = text.Put(bytes);
    const char* const end = text.End();
    for (const os::ByteSearch& search : os::AllSearches()) {
      const char* const found = search.unlikeMarkedLines(begin, end, '%', letters.is);
      ASSERT_GE(found, begin);
      ASSERT_LE(found, end);
      const char* lastEnd = begin - 1;
      for (const char* at = begin; at < found; ++at) {
        if (os::IsLineEnd(*at)) {
          ASSERT_LT(at - lastEnd, 2 * os::PlainStretch);
          lastEnd = at;
        }
        if (end - at <= 2) continue;
        const bool isReturn = at[1] == '\n' || at[1] == '\r';
        ASSERT_FALSE(os::IsLineEnd(*at) && at[1] != '%' && !isReturn) << search.name;
        ASSERT_FALSE(os::IsLineEnd(*at) && isReturn && (at[2] == '\n' || at[2] == '\r'))
            << search.name;
        ASSERT_FALSE(at[0] == '%' && at[1] == '%' && (at[2] == 'B' || at[2] == 'D')) << search.name;
      }
    }
  }
}

TEST(ByteSearch, marked_lines_are_passed_over_up_to_the_first_other_one) {
  GuardedText text;
  const Letters letters;
  std::string lines;
  for (int line = 0; line < 300; ++line) lines += "% a comment\r\n%%Other\n";
  for (const os::ByteSearch& search : os::AllSearches())
    for (const char* other : {"x\n", "%%Box\n", "\n\n\n"}) {
      const std::string all = lines + other + lines;
      const char* const begin = text.Put(all);
      const auto found = search.unlikeMarkedLines(begin, text.End(), '%', letters.is) - begin;
      EXPECT_GE(found, static_cast<long>(lines.size()) - 1) << search.name;
      EXPECT_LE(found, static_cast<long>(lines.size())) << search.name;
    }
}
