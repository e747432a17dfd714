#include "rastrel/platform/values/stream.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/archive_bytes.h"

using rastrel::test::Bytes;
using rastrel::test::Hex;
using rastrel::test::Joined;

namespace {

Bytes Written(const std::function<void(CStream&)>& write) {
  CMemFile file;
  CStream stream(&file);
  write(stream);
  stream.Flush();
  return file.Bytes();
}

// The cause of the exception that reading these bytes raises, or 0.
int CauseOfReading(const Bytes& bytes, const std::function<void(CStream&)>& read) {
  CMemFile file(bytes);
  CStream stream(&file);
  try {
    read(stream);
  } catch (const CStreamException& exception) {
    EXPECT_STRNE(exception.what(), "");
    return exception.m_cause;
  }
  return 0;
}

// Takes no more than so many bytes in all.
class FullFile : public CFile {
 public:
  explicit FullFile(std::size_t room) : m_Room(room) {}
  bool Write(const void*, unsigned count) override {
    if (count > m_Room) return false;
    m_Room -= count;
    return true;
  }

 private:
  std::size_t m_Room;
};

// Returns its bytes a few at a time.
class SlowFile : public CMemFile {
 public:
  using CMemFile::CMemFile;
  unsigned Read(void* bytes, unsigned count) override {
    return CMemFile::Read(bytes, std::min(count, 3U));
  }
};

TEST(CStream, numbers_are_little_endian) {
  EXPECT_EQ(Written([](CStream& stream) {
              stream.WriteInt32(-2);
              stream.WriteUInt32(0x12345678);
              stream.WriteUInt64(0x0102030405060708);
              stream.WriteDouble(1.0);
            }),
            Hex("FE FF FF FF 78 56 34 12 08 07 06 05 04 03 02 01 00 00 00 00 00 00 F0 3F"));
}

TEST(CStream, numbers_come_back) {
  SlowFile file(Hex("FE FF FF FF 78 56 34 12 08 07 06 05 04 03 02 01 00 00 00 00 00 00 F0 3F"));
  CStream stream(&file);
  EXPECT_EQ(stream.ReadInt32(), -2);
  EXPECT_EQ(stream.ReadUInt32(), 0x12345678U);
  EXPECT_EQ(stream.ReadUInt64(), 0x0102030405060708U);
  EXPECT_EQ(stream.ReadDouble(), 1.0);
}

TEST(CStream, text_is_counted_in_units_and_keeps_characters_beyond_the_first_plane) {
  const Bytes bytes = Hex("03 00 00 00 41 00 3D D8 00 DE");
  EXPECT_EQ(Written([](CStream& stream) { stream.WriteText(L"A\U0001F600"); }), bytes);
  CMemFile file(bytes);
  CStream stream(&file);
  EXPECT_EQ(stream.ReadText(), L"A\U0001F600");
}

TEST(CStream, a_text_that_only_claims_its_length_ends_the_stream) {
  EXPECT_EQ(CauseOfReading(Hex("FF FF FF FF 41 00"),
                           [](CStream& stream) { static_cast<void>(stream.ReadText()); }),
            CStreamException::endOfFile);
}

TEST(CStream, a_block_has_eight_bytes_of_length_in_front) {
  EXPECT_EQ(Written([](CStream& stream) {
              stream.Write("x", 1);
              stream.OpenWriteBlock();
              stream.Write("abc", 3);
              stream.CloseWriteBlock();
              stream.Write("y", 1);
            }),
            Hex("78 03 00 00 00 00 00 00 00 61 62 63 79"));
}

TEST(CStream, blocks_nest) {
  EXPECT_EQ(Written([](CStream& stream) {
              stream.OpenWriteBlock();
              stream.Write("a", 1);
              stream.OpenWriteBlock();
              stream.CloseWriteBlock();
              stream.Write("b", 1);
              stream.CloseWriteBlock();
            }),
            Hex("0A 00 00 00 00 00 00 00 61 00 00 00 00 00 00 00 00 62"));
}

TEST(CStream, a_block_reaches_the_file_only_when_it_is_closed) {
  CMemFile file;
  {
    CStream stream(&file);
    stream.Write("x", 1);
    stream.OpenWriteBlock();
    stream.Write("abc", 3);
    stream.Flush();
    EXPECT_EQ(file.Bytes(), Hex("78"));
    stream.Write("d", 1);
  }
  EXPECT_EQ(file.Bytes(), Hex("78")) << "one that is never closed is dropped";
}

TEST(CStream, a_block_of_any_size_has_its_length) {
  for (const std::size_t size : {1015U, 1016U, 1017U, 65527U, 65528U, 65529U, 3000000U}) {
    const std::vector<char> content(size, 'c');
    const Bytes bytes = Written([&](CStream& stream) {
      stream.Write("x", 1);
      stream.OpenWriteBlock();
      for (const char byte : content) stream.Write(&byte, 1);
      stream.CloseWriteBlock();
    });
    ASSERT_EQ(bytes.size(), size + 9);
    CMemFile file(bytes);
    CStream stream(&file);
    char first = 0;
    stream.Read(&first, 1);
    stream.OpenReadBlock();
    std::vector<char> back(size);
    stream.Read(back.data(), size);
    stream.CloseReadBlock();
    EXPECT_EQ(back, content);
  }
}

TEST(CStream, bytes_that_a_reader_leaves_of_a_block_are_passed_over) {
  for (const std::size_t excess : {0U, 1U, 100000U}) {
    const Bytes bytes = Written([&](CStream& stream) {
      stream.OpenWriteBlock();
      stream.WriteUInt32(7);
      stream.Write(std::vector<char>(excess).data(), excess);
      stream.CloseWriteBlock();
      stream.WriteUInt32(9);
    });
    CMemFile file(bytes);
    CStream stream(&file);
    stream.OpenReadBlock();
    EXPECT_EQ(stream.ReadUInt32(), 7U);
    stream.CloseReadBlock();
    EXPECT_EQ(stream.ReadUInt32(), 9U) << excess;
  }
}

TEST(CStream, a_reader_that_takes_more_than_the_block_says_reads_on) {
  CMemFile file(Hex("02 00 00 00 00 00 00 00 01 00 00 00 05 00 00 00"));
  CStream stream(&file);
  stream.OpenReadBlock();
  EXPECT_EQ(stream.ReadUInt32(), 1U);
  stream.CloseReadBlock();
  EXPECT_EQ(stream.ReadUInt32(), 5U) << "nothing is passed over";
}

TEST(CStream, a_block_whose_length_is_beyond_the_file_ends_the_stream_when_it_is_closed) {
  for (const char* length : {"03 00 00 00 00 00 00 00", "FF FF FF FF FF FF FF FF"}) {
    EXPECT_EQ(CauseOfReading(Joined({Hex(length), Hex("61 62")}),
                             [](CStream& stream) {
                               stream.OpenReadBlock();
                               stream.CloseReadBlock();
                             }),
              CStreamException::endOfFile);
  }
}

TEST(CStream, a_short_read_raises) {
  EXPECT_EQ(CauseOfReading(Hex("01 02 03"),
                           [](CStream& stream) { static_cast<void>(stream.ReadUInt32()); }),
            CStreamException::endOfFile);
  EXPECT_EQ(CauseOfReading({}, [](CStream& stream) { stream.OpenReadBlock(); }),
            CStreamException::endOfFile);
}

TEST(CStream, closing_a_block_that_is_not_open_raises) {
  EXPECT_EQ(CauseOfReading({}, [](CStream& stream) { stream.CloseReadBlock(); }),
            CStreamException::noBlock);
  EXPECT_EQ(CauseOfReading({}, [](CStream& stream) { stream.CloseWriteBlock(); }),
            CStreamException::noBlock);
}

TEST(CStream, a_file_that_is_full_raises) {
  FullFile file(10);
  CStream stream(&file);
  stream.Write("0123456789", 10);
  stream.Flush();
  stream.Write("x", 1);
  EXPECT_THROW(stream.Flush(), CStreamException);
}

TEST(CStream, a_stream_that_cannot_flush_ends_in_silence) {
  FullFile file(0);
  EXPECT_NO_THROW({
    CStream stream(&file);
    stream.Write("x", 1);
  });
}

TEST(CStream, postscript_is_written_as_utf_8) {
  EXPECT_EQ(Written([](CStream& stream) {
              EXPECT_EQ(stream.WritePostscript(L"(\u00e9)\r\n"), 1);
              EXPECT_EQ(stream.WritePostscript(L""), 1);
            }),
            Hex("28 C3 A9 29 0D 0A"));
}

}  // namespace
