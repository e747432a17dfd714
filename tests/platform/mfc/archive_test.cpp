#include "rastrel/platform/mfc/archive.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

namespace {

Bytes Stored(const std::function<void(CArchive&)>& write) {
  CMemFile file;
  CArchive archive(&file, CArchive::store);
  write(archive);
  archive.Close();
  return file.Bytes();
}

void Loaded(const Bytes& bytes, const std::function<void(CArchive&)>& read) {
  CMemFile file(bytes);
  CArchive archive(&file, CArchive::load);
  read(archive);
}

// The cause of the exception that `action` raises, or none.
int CauseOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const CArchiveException& exception) {
    EXPECT_STRNE(exception.what(), "");
    return exception.m_cause;
  }
  return CArchiveException::none;
}

Bytes Joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

// A file that takes nothing.
class FullFile : public CFile {
 public:
  bool Write(const void*, unsigned) override {
    ++writes;
    return false;
  }
  int writes = 0;
};

}  // namespace

TEST(CArchive, numbers_are_little_endian_in_their_own_width) {
  EXPECT_EQ(Stored([](CArchive& archive) {
              archive << std::uint8_t{0x12} << std::uint16_t{0x1234} << std::int32_t{-2}
                      << std::uint32_t{0x12345678} << std::int64_t{-3} << 1.0 << true << false;
            }),
            (Bytes{0x12, 0x34, 0x12, 0xFE, 0xFF, 0xFF, 0xFF, 0x78, 0x56, 0x34,
                   0x12, 0xFD, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0,
                   0,    0,    0,    0,    0,    0xF0, 0x3F, 1,    0}));
}

TEST(CArchive, numbers_come_back_at_their_limits) {
  const auto roundTrip = [](auto value) {
    auto result = decltype(value){};
    Loaded(Stored([&](CArchive& archive) { archive << value; }),
           [&](CArchive& archive) { archive >> result; });
    EXPECT_EQ(result, value);
  };
  roundTrip(std::numeric_limits<std::uint8_t>::max());
  roundTrip(std::numeric_limits<std::uint16_t>::max());
  roundTrip(std::numeric_limits<std::int32_t>::min());
  roundTrip(std::numeric_limits<std::int32_t>::max());
  roundTrip(std::numeric_limits<std::uint32_t>::max());
  roundTrip(std::numeric_limits<std::int64_t>::min());
  roundTrip(std::numeric_limits<std::int64_t>::max());
  roundTrip(-0.1);
  roundTrip(std::numeric_limits<double>::denorm_min());
  roundTrip(true);
}

TEST(CArchive, any_byte_but_zero_is_true) {
  bool one = false;
  bool two = false;
  bool three = true;
  Loaded({0x80, 0x02, 0x00}, [&](CArchive& archive) { archive >> one >> two >> three; });
  EXPECT_TRUE(one);
  EXPECT_TRUE(two);
  EXPECT_FALSE(three);
}

TEST(CArchive, wide_text_stands_behind_its_tag_and_length) {
  EXPECT_EQ(Stored([](CArchive& archive) { archive << CString(L"a\x20AC"); }),
            (Bytes{0xFF, 0xFE, 0xFF, 2, 0x61, 0x00, 0xAC, 0x20}));
  EXPECT_EQ(Stored([](CArchive& archive) { archive << CString(); }), (Bytes{0xFF, 0xFE, 0xFF, 0}));
}

TEST(CArchive, the_length_counts_sixteen_bit_units) {
  const Bytes bytes = Stored([](CArchive& archive) { archive << CString(L"\x1F5A8"); });
  EXPECT_EQ(bytes, (Bytes{0xFF, 0xFE, 0xFF, 2, 0x3D, 0xD8, 0xA8, 0xDD}));
  CString text;
  Loaded(bytes, [&](CArchive& archive) { archive >> text; });
  EXPECT_EQ(text, L"\x1F5A8");
  // 127 pairs and one unit are one below the change of the form, one pair more is one above it.
  EXPECT_EQ(Stored([](CArchive& archive) { archive << CString(127, L'\x1F5A8'); })[3], 254);
  EXPECT_EQ(Stored([](CArchive& archive) { archive << CString(128, L'\x1F5A8'); })[3], 255);
}

TEST(CArchive, each_form_of_the_length_begins_at_its_limit) {
  const Bytes tag = {0xFF, 0xFE, 0xFF};
  const struct {
    std::size_t length;
    Bytes form;
  } rows[] = {{254, {0xFE}},
              {255, {0xFF, 0xFF, 0x00}},
              {256, {0xFF, 0x00, 0x01}},
              {0xFFFD, {0xFF, 0xFD, 0xFF}},
              {0xFFFE, {0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0, 0}},
              {0xFFFF, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0}},
              {0x10000, {0xFF, 0xFF, 0xFF, 0x00, 0x00, 1, 0}}};
  for (const auto& row : rows) {
    Bytes expected = Joined({tag, row.form});
    for (std::size_t index = 0; index < row.length; ++index)
      expected.insert(expected.end(), {'x', 0});
    const CString text(row.length, L'x');
    EXPECT_TRUE(Stored([&](CArchive& archive) { archive << text; }) == expected) << row.length;
    CString back = L"before";
    Loaded(expected, [&](CArchive& archive) { archive >> back; });
    EXPECT_TRUE(back == text) << row.length;
  }
}

TEST(CArchive, text_without_the_tag_has_one_byte_a_character) {
  const struct {
    std::size_t length;
    Bytes form;
  } rows[] = {{0, {0}},
              {254, {0xFE}},
              {255, {0xFF, 0xFF, 0x00}},
              {0xFFFD, {0xFF, 0xFD, 0xFF}},
              {0xFFFE, {0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0, 0}},
              {0xFFFF, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0}}};
  for (const auto& row : rows) {
    CString text = L"before";
    Loaded(Joined({row.form, Bytes(row.length, 0x80)}),
           [&](CArchive& archive) { archive >> text; });
    EXPECT_TRUE(text == CString(row.length, L'\x20AC')) << row.length;
  }
}

TEST(CArchive, lone_surrogates_survive_a_round_trip) {
  const Bytes bytes = {0xFF, 0xFE, 0xFF, 2, 0x00, 0xDC, 0x00, 0xD8};
  CString text;
  Loaded(bytes, [&](CArchive& archive) { archive >> text; });
  EXPECT_EQ(Stored([&](CArchive& archive) { archive << text; }), bytes);
}

TEST(CArchive, a_text_cut_anywhere_raises_end_of_file_and_leaves_the_target) {
  const Bytes forms[] = {
      Stored([](CArchive& archive) { archive << CString(L"some text"); }),
      Stored([](CArchive& archive) { archive << CString(300, L'm'); }),
      Joined({{0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 3, 0, 0, 0}, {'a', 0, 'b', 0, 'c', 0}}),
      {5, 'p', 'l', 'a', 'i', 'n'}};
  for (const Bytes& whole : forms) {
    for (std::size_t length = 0; length < whole.size(); ++length) {
      CString text = L"before";
      const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
      EXPECT_EQ(CauseOf([&] { Loaded(cut, [&](CArchive& archive) { archive >> text; }); }),
                CArchiveException::endOfFile)
          << length;
      EXPECT_EQ(text, L"before");
    }
  }
}

TEST(CArchive, a_number_cut_anywhere_raises_end_of_file_and_leaves_the_target) {
  for (std::size_t length = 0; length < 8; ++length) {
    double number = 5.0;
    std::int64_t whole = 6;
    EXPECT_EQ(
        CauseOf([&] { Loaded(Bytes(length), [&](CArchive& archive) { archive >> number; }); }),
        CArchiveException::endOfFile);
    EXPECT_EQ(CauseOf([&] { Loaded(Bytes(length), [&](CArchive& archive) { archive >> whole; }); }),
              CArchiveException::endOfFile);
    EXPECT_EQ(number, 5.0);
    EXPECT_EQ(whole, 6);
  }
}

TEST(CArchive, a_claimed_length_takes_no_memory) {
  // A piece is all that is ever asked for at once.
  class Watching : public CMemFile {
   public:
    using CMemFile::CMemFile;
    unsigned Read(void* bytes, unsigned count) override {
      largest = std::max(largest, count);
      return CMemFile::Read(bytes, count);
    }
    unsigned largest = 0;
  };
  for (const bool wide : {true, false}) {
    const Bytes length = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 'a', 'b', 'c'};
    Watching file(wide ? Joined({{0xFF, 0xFE, 0xFF}, length}) : length);
    CArchive archive(&file, CArchive::load);
    CString text = L"before";
    EXPECT_EQ(CauseOf([&] { archive >> text; }), CArchiveException::endOfFile);
    EXPECT_EQ(text, L"before");
    EXPECT_LE(file.largest, 1U << 20);
  }
  Watching file(Bytes{0xFF, 0xFF, 0xFF, 0xFF, 'a', 'b', 'c'});
  CArchive archive(&file, CArchive::load);
  std::wstring text = L"before";
  EXPECT_EQ(CauseOf([&] { rastrel::mfc::ReadNarrowText(archive, text); }),
            CArchiveException::endOfFile);
  EXPECT_EQ(text, L"before");
  EXPECT_LE(file.largest, 1U << 20);
}

TEST(CArchive, the_wrong_direction_raises_its_own_cause) {
  CMemFile file;
  CArchive storing(&file, CArchive::store);
  CArchive loading(&file, CArchive::load);
  std::int32_t number = 7;
  EXPECT_EQ(CauseOf([&] { storing >> number; }), CArchiveException::writeOnly);
  EXPECT_EQ(number, 7);
  EXPECT_EQ(CauseOf([&] { loading << number; }), CArchiveException::readOnly);
  EXPECT_TRUE(storing.IsStoring());
  EXPECT_FALSE(storing.IsLoading());
  EXPECT_TRUE(loading.IsLoading());
}

TEST(CArchive, a_file_that_takes_nothing_raises_once) {
  FullFile file;
  {
    CArchive archive(&file, CArchive::store);
    archive << std::int32_t{1};
    EXPECT_EQ(CauseOf([&] { archive.Close(); }), CArchiveException::genericException);
    EXPECT_EQ(CauseOf([&] { archive.Close(); }), CArchiveException::none);
  }
  EXPECT_EQ(file.writes, 1);
  const Bytes large(100'000);
  CArchive archive(&file, CArchive::store);
  EXPECT_EQ(CauseOf([&] { archive.Write(large.data(), 100'000); }),
            CArchiveException::genericException);
}

TEST(CArchive, its_destructor_writes_pending_bytes_and_never_throws) {
  CMemFile file;
  { CArchive(&file, CArchive::store) << std::uint8_t{9}; }
  EXPECT_EQ(file.Bytes(), Bytes{9});
  FullFile full;
  { CArchive(&full, CArchive::store) << std::uint8_t{9}; }
  EXPECT_EQ(full.writes, 1);
}

TEST(CArchive, large_and_small_writes_keep_their_order) {
  Bytes large(70'000, 0xAB);
  const Bytes bytes = Stored([&](CArchive& archive) {
    archive << std::uint8_t{1};
    archive.Write(large.data(), 70'000);
    archive << std::uint8_t{2};
    for (int count = 0; count < 70'000; ++count) archive << std::uint8_t{3};
  });
  EXPECT_TRUE(bytes == Joined({{1}, large, {2}, Bytes(70'000, 3)}));
}

TEST(CArchive, raw_reads_return_how_much_there_was) {
  Loaded({1, 2, 3}, [](CArchive& archive) {
    std::uint8_t bytes[5] = {};
    EXPECT_EQ(archive.Read(bytes, 2), 2U);
    EXPECT_EQ(archive.Read(bytes, 5), 1U);
    EXPECT_EQ(bytes[0], 3);
    EXPECT_EQ(archive.Read(bytes, 5), 0U);
  });
}

TEST(NarrowText, is_a_byte_length_and_utf8) {
  EXPECT_EQ(Stored([](CArchive& archive) { rastrel::mfc::WriteNarrowText(archive, L"a\xE9"); }),
            (Bytes{3, 0, 0, 0, 'a', 0xC3, 0xA9}));
  EXPECT_EQ(Stored([](CArchive& archive) { rastrel::mfc::WriteNarrowText(archive, L""); }),
            (Bytes{0, 0, 0, 0}));
}

TEST(NarrowText, a_length_of_zero_empties_the_target) {
  std::wstring text = L"before";
  Loaded({0, 0, 0, 0}, [&](CArchive& archive) { rastrel::mfc::ReadNarrowText(archive, text); });
  EXPECT_EQ(text, L"");
}

TEST(NarrowText, bad_bytes_become_the_replacement) {
  std::wstring text;
  Loaded({2, 0, 0, 0, 'a', 0xFF},
         [&](CArchive& archive) { rastrel::mfc::ReadNarrowText(archive, text); });
  EXPECT_EQ(text, L"a\xFFFD");
}

TEST(NarrowText, cut_anywhere_it_raises_end_of_file_and_leaves_the_target) {
  const Bytes whole =
      Stored([](CArchive& archive) { rastrel::mfc::WriteNarrowText(archive, L"text"); });
  for (std::size_t length = 0; length < whole.size(); ++length) {
    std::wstring text = L"before";
    const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_EQ(CauseOf([&] {
                Loaded(cut,
                       [&](CArchive& archive) { rastrel::mfc::ReadNarrowText(archive, text); });
              }),
              CArchiveException::endOfFile);
    EXPECT_EQ(text, L"before");
  }
}

TEST(AfxReadStringLength, returns_the_character_size) {
  int size = 0;
  Loaded({0xFF, 0xFE, 0xFF, 7},
         [&](CArchive& archive) { EXPECT_EQ(AfxReadStringLength(archive, size), 7U); });
  EXPECT_EQ(size, 2);
  Loaded({7}, [&](CArchive& archive) { EXPECT_EQ(AfxReadStringLength(archive, size), 7U); });
  EXPECT_EQ(size, 1);
}

TEST(AfxWriteStringLength, without_the_tag_the_length_stands_alone) {
  EXPECT_EQ(Stored([](CArchive& archive) { AfxWriteStringLength(archive, 300, false); }),
            (Bytes{0xFF, 0x2C, 0x01}));
}

TEST(CArchiveException, every_cause_has_its_message) {
  const char* const messages[] = {"no archive error",
                                  "the archive failed",
                                  "the archive is open for reading and was written to",
                                  "the archive ends too early",
                                  "the archive is open for writing and was read from",
                                  "the archive holds a bad index",
                                  "the archive holds an object of another class",
                                  "the archive holds an object of another version",
                                  "the archive failed"};
  int cause = 0;
  for (const char* const message : messages)
    EXPECT_STREQ(CArchiveException(static_cast<CArchiveException::Cause>(cause++)).what(), message);
  EXPECT_EQ(CauseOf([] { AfxThrowArchiveException(CArchiveException::badSchema); }),
            CArchiveException::badSchema);
}

// A file that counts how often it is read.
class CountedFile : public CMemFile {
 public:
  using CMemFile::CMemFile;
  unsigned Read(void* bytes, unsigned count) override {
    ++reads;
    return CMemFile::Read(bytes, count);
  }
  int reads = 0;
};

TEST(CArchiveBuffer, small_reads_of_4096_bytes_are_one_read_of_the_file) {
  CountedFile file(Bytes(4096, 1));
  CArchive archive(&file, CArchive::load, 4096);
  std::uint32_t value = 0;
  for (int index = 0; index < 1024; ++index) archive >> value;
  EXPECT_EQ(value, 0x01010101U);
  EXPECT_EQ(file.reads, 1);
  EXPECT_EQ(CauseOf([&] { archive >> value; }), CArchiveException::endOfFile);
}

TEST(CArchiveBuffer, without_one_the_file_is_read_no_further_than_the_archive) {
  CMemFile file({1, 2, 3, 4, 5});
  CArchive archive(&file, CArchive::load);
  std::uint32_t value = 0;
  archive >> value;
  std::uint8_t rest = 0;
  EXPECT_EQ(file.Read(&rest, 1), 1U);
  EXPECT_EQ(rest, 5);
}

TEST(CArchiveBuffer, reads_that_cross_its_end_are_whole) {
  Bytes bytes;
  for (int index = 0; index < 1000; ++index) bytes.push_back(static_cast<std::uint8_t>(index));
  for (const int size : {-1, 0, 1, 2, 3, 4, 5, 7, 64, 999, 1000, 1001}) {
    CMemFile file(bytes);
    CArchive archive(&file, CArchive::load, size);
    Bytes read;
    for (unsigned count = 0; read.size() < bytes.size(); ++count) {
      Bytes piece(count % 13);
      piece.resize(archive.Read(piece.data(), static_cast<unsigned>(piece.size())));
      read.insert(read.end(), piece.begin(), piece.end());
      EXPECT_EQ(archive.GetBytesRead(), read.size());
    }
    EXPECT_EQ(read, bytes) << size;
  }
}

TEST(CArchiveBuffer, storing_is_as_without_one) {
  CMemFile file;
  CArchive archive(&file, CArchive::store, 4096);
  archive << std::uint16_t{0x0201};
  archive.Close();
  EXPECT_EQ(file.Bytes(), (Bytes{1, 2}));
}
