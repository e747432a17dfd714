#include "rastrel/conversion/cut/cut_archive_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <limits>
#include <random>

#include "rastrel/platform/mfc/archive.h"
#include "tests/support/allocation_limit.h"
#include "tests/support/archive_bytes.h"
#include "tests/support/cut_archive_bytes.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::conversion {
namespace {

using namespace test::cut;

constexpr std::uint64_t Half = std::uint64_t{1} << 63;

// Reads the bytes from memory, through a buffer of that size. The cause of the exception, or none.
struct Reading {
  CCutObjects objects;
  bool read = false;
  int cause = CArchiveException::none;
};

Reading Read(const std::string& bytes, int buffer = 4096) {
  Reading reading;
  CMemFile file(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
  CArchive archive(&file, CArchive::load, buffer);
  try {
    reading.read = ReadCutObjects(archive, bytes.size(), reading.objects);
  } catch (const CArchiveException& exception) {
    reading.cause = exception.m_cause;
  }
  return reading;
}

const SubPoly& FirstSubPoly(const CutObject& object) {
  return *object.polygons->polygons.at(0)->entries.at(0).subPoly;
}

// Worked out by hand from the table of docs/formats/cut-archive.md: one object, one polygon, one
// closed part of two vertices.
const char* const Golden =
    "00 00 00 00  01 00 00 00"                              // version, count
    " 01 00 00 00"                                          // the object's version
    " FF FE FF 02 C9 00 41 00"                              // "ÉA"
    " 00 00 00 00 00 00 04 40"                              // 2.5
    " 01 00 00 00 00 00 00 00"                              // polygons
    " 01 00 00 00 00 00 00 00"                              // entries
    " 02 00 00 00 00 00 00 00"                              // vertices
    " 00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 00 C0"      // 1, -2
    " 00 00 00 00 00 00 08 40 00 00 00 00 00 00 10 40"      // 3, 4
    " 00 00 00 00 00 00 14 40"                              // 5
    " 00 00 00 00 00 00 E0 3F 00 00 00 00 00 00 D0 3F"      // 0.5, 0.25
    " 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"      // 0, 0
    " 00 00 00 00 00 00 00 00"                              // 0
    " 01"                                                   // closed
    " 08 07 06 05 04 03 02 01"                              // the entry's value
    " 0A 00 00 00 0B 00 00 00 0C 00 00 00 FF FF FF FF  0D"  // values and flag
    " FE FF FF FF";                                         // kind, -2

std::string GoldenBytes() {
  const test::Bytes bytes = test::Hex(Golden);
  return {bytes.begin(), bytes.end()};
}

TEST(CutArchive, every_value_of_an_archive_worked_out_by_hand_is_read) {
  const Reading reading = Read(GoldenBytes());
  ASSERT_TRUE(reading.read);
  ASSERT_EQ(reading.objects.m_Objects.size(), 1U);
  const CutObject& object = reading.objects.m_Objects[0];
  EXPECT_EQ(object.colorText,
            L"\x00C9"
            L"A");
  EXPECT_EQ(object.number, 2.5);
  EXPECT_EQ(object.kind, -2);
  ASSERT_EQ(object.polygons->polygons.size(), 1U);
  const Polygon& polygon = *object.polygons->polygons[0];
  ASSERT_EQ(polygon.entries.size(), 1U);
  EXPECT_EQ(polygon.entries[0].value, 0x0102030405060708U);
  EXPECT_EQ(polygon.values, (std::array<std::uint32_t, 4>{10, 11, 12, 0xFFFFFFFF}));
  EXPECT_EQ(polygon.flag, 13);
  const SubPoly& subPoly = FirstSubPoly(object);
  EXPECT_EQ(subPoly.closed, 1);
  ASSERT_EQ(subPoly.vertices.size(), 2U);
  EXPECT_EQ(subPoly.vertices[0].x, 1);
  EXPECT_EQ(subPoly.vertices[0].y, -2);
  EXPECT_EQ(subPoly.vertices[0].third, 3);
  EXPECT_EQ(subPoly.vertices[0].fourth, 4);
  EXPECT_EQ(subPoly.vertices[0].fifth, 5);
  EXPECT_EQ(subPoly.vertices[1].x, 0.5);
  EXPECT_EQ(subPoly.vertices[1].y, 0.25);
}

TEST(CutArchive, the_size_of_the_buffer_changes_nothing) {
  for (const int buffer : {0, 1, 2, 3, 7, 8, 39, 40, 41, 4096}) {
    const Reading reading = Read(GoldenBytes(), buffer);
    ASSERT_TRUE(reading.read) << buffer;
    EXPECT_EQ(reading.objects.m_Objects.at(0).kind, -2) << buffer;
    EXPECT_EQ(FirstSubPoly(reading.objects.m_Objects[0]).vertices.at(1).y, 0.25) << buffer;
  }
}

TEST(CutArchive, an_archive_without_objects_is_an_empty_list) {
  const Reading reading = Read(ArchiveBytes({}));
  EXPECT_TRUE(reading.read);
  EXPECT_TRUE(reading.objects.m_Objects.empty());
}

TEST(CutArchive, objects_come_in_the_archives_order) {
  const Reading reading =
      Read(ArchiveBytes({ObjectBytes("b", {LineBytes(1, 1)}), ObjectBytes("a", {}),
                         ObjectBytes("c", {LineBytes(2, 2), LineBytes(3, 3)})}));
  ASSERT_EQ(reading.objects.m_Objects.size(), 3U);
  EXPECT_EQ(reading.objects.m_Objects[0].colorText, L"b");
  EXPECT_EQ(reading.objects.m_Objects[1].colorText, L"a");
  EXPECT_TRUE(reading.objects.m_Objects[1].polygons->polygons.empty());
  EXPECT_EQ(reading.objects.m_Objects[2].polygons->polygons.size(), 2U);
}

TEST(CutArchive, any_other_version_gives_an_empty_list) {
  for (const std::uint32_t version : {1U, 2U, 0x80000000U, 0xFFFFFFFFU}) {
    std::string bytes = ArchiveBytes({ObjectBytes("a", {LineBytes(1, 1)})});
    bytes.replace(0, 4, U32(version));
    const Reading reading = Read(bytes);
    EXPECT_FALSE(reading.read) << version;
    EXPECT_EQ(reading.cause, CArchiveException::none) << version;
    EXPECT_TRUE(reading.objects.m_Objects.empty()) << version;
  }
}

TEST(CutArchive, another_version_needs_nothing_after_it) {
  const Reading reading = Read(U32(1));
  EXPECT_FALSE(reading.read);
  EXPECT_EQ(reading.cause, CArchiveException::none);
}

// The next object begins at the byte after the version, so the archive is misread from there on:
// the color's length is where a version should be.
TEST(CutArchive, after_an_object_of_version_2_the_next_byte_is_a_version) {
  std::string misread = ArchiveBytes({ObjectBytes("a", {}), ObjectBytes("b", {LineBytes(1, 1)})});
  misread.replace(8, 4, U32(2));
  const Reading reading = Read(misread);
  ASSERT_TRUE(reading.read);
  ASSERT_EQ(reading.objects.m_Objects.size(), 2U);
  for (const CutObject& object : reading.objects.m_Objects) {
    EXPECT_EQ(object.colorText, L"");
    EXPECT_EQ(object.kind, 1);
    EXPECT_EQ(object.number, 1.0);
    EXPECT_EQ(object.polygons.Get(), nullptr);
  }
}

TEST(CutArchive, an_object_right_after_a_bare_version_2_is_read) {
  const Reading reading =
      Read(U32(0) + U32(3) + U32(2) + ObjectBytes("b", {LineBytes(1, 1)}) + U32(0xFFFFFFFF));
  ASSERT_TRUE(reading.read);
  ASSERT_EQ(reading.objects.m_Objects.size(), 3U);
  EXPECT_EQ(reading.objects.m_Objects[0].polygons.Get(), nullptr);
  EXPECT_EQ(reading.objects.m_Objects[1].colorText, L"b");
  EXPECT_EQ(reading.objects.m_Objects[2].polygons.Get(), nullptr);
}

TEST(CutArchive, bytes_after_the_last_object_are_not_looked_at) {
  const Reading reading = Read(ArchiveBytes({ObjectBytes("a", {LineBytes(1, 1)})}) + "more");
  EXPECT_TRUE(reading.read);
  EXPECT_EQ(reading.objects.m_Objects.size(), 1U);
}

TEST(CutArchive, cut_at_every_byte_it_is_the_archives_end_of_file) {
  const std::string bytes = GoldenBytes();
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    const Reading reading = Read(bytes.substr(0, length));
    EXPECT_EQ(reading.cause, CArchiveException::endOfFile) << length;
    EXPECT_TRUE(reading.objects.m_Objects.empty()) << length;
  }
  EXPECT_TRUE(Read(bytes).read);
}

// Each count at the number of things that are there, one more, and far beyond.
TEST(CutArchive, a_count_that_its_bytes_cant_hold_is_the_archives_end_of_file) {
  const std::string bytes = GoldenBytes();
  struct Place {
    std::size_t at;
    unsigned size;
    std::uint64_t right;
  };
  for (const Place place : {Place{4, 4, 1}, Place{28, 8, 1}, Place{36, 8, 1}, Place{44, 8, 2}}) {
    for (const std::uint64_t count :
         {place.right + 1, std::uint64_t{1} << 31, Half - 1, Half + place.right,
          std::numeric_limits<std::uint64_t>::max()}) {
      const std::uint64_t kept = place.size == 4 ? count & 0xFFFFFFFFU : count;
      const bool negative = place.at == 28 && kept >= Half;  // another rule: see below
      if (kept <= place.right || negative) continue;
      std::string lying = bytes;
      lying.replace(place.at, place.size, NumberBytes(kept, place.size));
      EXPECT_EQ(Read(lying).cause, CArchiveException::endOfFile) << place.at << ' ' << kept;
    }
  }
}

TEST(CutArchive, memory_is_asked_for_by_the_files_bytes_and_not_by_its_counts) {
  const std::string object = U32(1) + TextBytes("a") + F64(1);
  const std::string manyVertices(4000, '\0');
  const std::vector<std::string> archives = {
      U32(0) + U32(0xFFFFFFFF), U32(0) + U32(1) + object + U64(Half - 1),
      U32(0) + U32(1) + object + U64(1) + U64(Half),
      U32(0) + U32(1) + object + U64(1) + U64(1) + U64(Half),
      // As many as there is room for if all else were left out, and one more.
      U32(0) + U32(1) + object + U64(1) + U64(1) + U64(100) + manyVertices,
      U32(0) + U32(1) + object + U64(1) + U64(1) + U64(101) + manyVertices};
  for (const std::string& bytes : archives) {
    const test::AllocationLimit limit(65536);
    EXPECT_EQ(Read(bytes).cause, CArchiveException::endOfFile);
  }
}

TEST(CutArchive, a_negative_number_of_polygons_is_none) {
  for (const std::uint64_t count : {Half, std::numeric_limits<std::uint64_t>::max()}) {
    const Reading reading =
        Read(U32(0) + U32(1) + U32(1) + TextBytes("a") + F64(1) + U64(count) + U32(5));
    ASSERT_TRUE(reading.read);
    EXPECT_TRUE(reading.objects.m_Objects[0].polygons->polygons.empty());
    EXPECT_EQ(reading.objects.m_Objects[0].kind, 5);
  }
}

TEST(CutArchive, a_text_that_is_longer_than_the_file_is_its_end) {
  const std::string start = U32(0) + U32(1) + U32(1);
  for (const std::string& length :
       {std::string("\xFF\xFE\xFF\xFE"), "\xFF\xFE\xFF\xFF" + std::string("\xFE\xFF"),
        "\xFF\xFE\xFF\xFF\xFF\xFF" + U32(0xFFFFFFFF), std::string("\x20"),
        "\xFF\xFF\xFF" + U32(0x7FFFFFFF)})
    EXPECT_EQ(Read(start + length + "abc").cause, CArchiveException::endOfFile);
}

TEST(CutArchive, every_double_comes_through) {
  for (const double value :
       {std::numeric_limits<double>::infinity(), -0.0, std::numeric_limits<double>::denorm_min(),
        std::numeric_limits<double>::max(), std::nan("")}) {
    const Reading reading = Read(ArchiveBytes({ObjectBytes(
        "a",
        {PolygonBytes({SubPolyBytes({VertexBytes(value, value, value, value, value)}, true)})})}));
    ASSERT_TRUE(reading.read);
    const Vertex& vertex = FirstSubPoly(reading.objects.m_Objects[0]).vertices[0];
    for (const double read : {vertex.x, vertex.y, vertex.third, vertex.fourth, vertex.fifth})
      EXPECT_EQ(std::bit_cast<std::uint64_t>(read), std::bit_cast<std::uint64_t>(value));
  }
}

// Vertices are read 1,024 at a time.
TEST(CutArchive, as_many_vertices_as_are_read_at_once_and_one_more_or_less) {
  for (const std::size_t count : {0UL, 1UL, 1023UL, 1024UL, 1025UL, 2048UL, 5000UL}) {
    std::vector<std::string> vertices;
    for (std::size_t index = 0; index < count; ++index)
      vertices.push_back(VertexBytes(static_cast<double>(index), -static_cast<double>(index)));
    const Reading reading =
        Read(ArchiveBytes({ObjectBytes("a", {PolygonBytes({SubPolyBytes(vertices, false)})})}));
    ASSERT_TRUE(reading.read) << count;
    const SubPoly& subPoly = FirstSubPoly(reading.objects.m_Objects[0]);
    ASSERT_EQ(subPoly.vertices.size(), count);
    for (std::size_t index = 0; index < count; ++index)
      ASSERT_EQ(subPoly.vertices[index].y, -static_cast<double>(index));
  }
}

TEST(CutArchive, random_damage_ends_in_a_list_or_in_the_archives_end_of_file) {
  std::mt19937_64 random(15);
  const std::string sound =
      ArchiveBytes({ObjectBytes("RGB: 1.000  0.000  0.000", {LineBytes(1, 1), LineBytes(2, 2)}),
                    ObjectBytes("Cut", {})});
  for (int round = 0; round < 20'000; ++round) {
    std::string bytes = sound;
    for (std::uint64_t changes = random() % 4; changes-- > 0;)
      bytes[random() % bytes.size()] = static_cast<char>(random());
    if (random() % 3 == 0) bytes.resize(random() % bytes.size());
    const Reading reading = Read(bytes);
    EXPECT_TRUE(reading.cause == CArchiveException::none ||
                reading.cause == CArchiveException::endOfFile);
    EXPECT_TRUE(reading.read || reading.objects.m_Objects.empty());
  }
}

class CutArchiveFile : public testing::Test {
 protected:
  [[nodiscard]] std::wstring Path(const std::string& name) const { return m_Directory.Wide(name); }
  test::ScratchDirectory m_Directory;
};

TEST_F(CutArchiveFile, is_read_and_stays) {
  m_Directory.Write("a.cut", ArchiveBytes({ObjectBytes("a", {LineBytes(1, 1)})}));
  CCutObjects objects;
  EXPECT_TRUE(ReadCutArchive(Path("a.cut"), objects));
  EXPECT_EQ(objects.m_Objects.size(), 1U);
  EXPECT_TRUE(m_Directory.Has("a.cut"));
}

TEST_F(CutArchiveFile, one_that_cant_be_opened_empties_the_list) {
  CCutObjects objects;
  objects.m_Objects.resize(2);
  EXPECT_FALSE(ReadCutArchive(Path("none.cut"), objects));
  EXPECT_TRUE(objects.m_Objects.empty());
}

TEST_F(CutArchiveFile, a_directory_or_a_pipe_is_no_archive) {
  CCutObjects objects;
  EXPECT_FALSE(ReadCutArchive(Path("."), objects));
  ASSERT_EQ(::mkfifo(m_Directory.Path("pipe").c_str(), 0600), 0);
  EXPECT_FALSE(ReadCutArchive(Path("pipe"), objects));
}

TEST_F(CutArchiveFile, an_empty_file_is_the_archives_end_of_file) {
  m_Directory.Write("a.cut", "");
  CCutObjects objects;
  objects.m_Objects.resize(2);
  EXPECT_THROW(static_cast<void>(ReadCutArchive(Path("a.cut"), objects)), CArchiveException);
  EXPECT_TRUE(objects.m_Objects.empty());
}

}  // namespace
}  // namespace rastrel::conversion
