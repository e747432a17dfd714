#include "rastrel/conversion/cut/cut_archive_reader.h"

#include <algorithm>
#include <bit>
#include <span>
#include <vector>

#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::conversion {

namespace {

constexpr int ArchiveBuffer = 4096;  // bytes
constexpr std::uint32_t ArchiveVersion = 0;
constexpr std::uint32_t ObjectVersion = 1;

// The fewest bytes that each of them takes in the archive.
constexpr std::uint64_t ObjectBytes = 4;    // the version alone
constexpr std::uint64_t PolygonBytes = 25;  // count, four values, flag
constexpr std::uint64_t EntryBytes = 17;    // count, closed, value
constexpr std::uint64_t VertexBytes = 40;   // five doubles
constexpr std::uint64_t VerticesAtOnce = 1024;

// Little-endian, whatever this machine is.
double DoubleAt(const unsigned char* bytes) {
  std::uint64_t bits = 0;
  for (unsigned index = 0; index < sizeof bits; ++index)
    bits |= static_cast<std::uint64_t>(bytes[index]) << (8 * index);
  return std::bit_cast<double>(bits);
}

// The archive, little-endian; the number after a field is its bytes.
//
//   archive:  version 4 | count 4 | objects
//   object:   version 4 | color's text | number 8 | count 8 | polygons | kind 4
//   polygon:  count 8 | entries: sub-polygon, value 8 | values 4 x 4 | flag 1
//   sub-poly: count 8 | vertices: 5 x 8 | closed 1
class ObjectsReader {
 public:
  ObjectsReader(CArchive& archive, std::uint64_t size) : m_Archive(archive), m_Size(size) {}

  bool Read(CCutObjects& objects) {
    if (Number<std::uint32_t>() != ArchiveVersion) return false;
    const auto count = Number<std::uint32_t>();
    RequireRoom(count, ObjectBytes);
    for (std::uint32_t index = 0; index < count; ++index)
      ReadObject(objects.m_Objects.emplace_back());
    return true;
  }

 private:
  // A count that the rest of the file can't hold is its end: memory for it is never asked for.
  void RequireRoom(std::uint64_t count, std::uint64_t bytesEach) const {
    const std::uint64_t read = m_Archive.GetBytesRead();
    const std::uint64_t left = read < m_Size ? m_Size - read : 0;
    if (count > left / bytesEach) AfxThrowArchiveException(CArchiveException::endOfFile);
  }

  template <typename Value>
  Value Number() {
    Value value{};
    m_Archive >> value;
    return value;
  }

  std::uint64_t Count(std::uint64_t bytesEach) {
    const auto count = std::bit_cast<std::uint64_t>(Number<std::int64_t>());
    RequireRoom(count, bytesEach);
    return count;
  }

  void ReadObject(CutObject& object) {
    if (Number<std::uint32_t>() != ObjectVersion) return;
    m_Archive >> object.colorText;
    m_Archive >> object.number;
    // The one count that is signed: below 0 there are no polygons.
    const auto count = Number<std::int64_t>();
    object.polygons = PolyReference<Polygons>(new Polygons);
    if (count > 0) RequireRoom(static_cast<std::uint64_t>(count), PolygonBytes);
    for (std::int64_t index = 0; index < count; ++index)
      object.polygons->polygons.push_back(ReadPolygon());
    m_Archive >> object.kind;
  }

  PolyReference<Polygon> ReadPolygon() {
    PolyReference<Polygon> polygon(new Polygon);
    const std::uint64_t count = Count(EntryBytes);
    for (std::uint64_t index = 0; index < count; ++index) {
      SubPolyEntry& entry = polygon->entries.emplace_back();
      entry.subPoly = ReadSubPoly();
      entry.value = std::bit_cast<std::uint64_t>(Number<std::int64_t>());
    }
    for (std::uint32_t& value : polygon->values) m_Archive >> value;
    m_Archive >> polygon->flag;
    return polygon;
  }

  PolyReference<SubPoly> ReadSubPoly() {
    PolyReference<SubPoly> subPoly(new SubPoly);
    const std::uint64_t count = Count(VertexBytes);
    subPoly->vertices.reserve(count);
    for (std::uint64_t done = 0; done < count;) {
      const std::uint64_t piece = std::min(count - done, VerticesAtOnce);
      ReadVertices(*subPoly, piece);
      done += piece;
    }
    m_Archive >> subPoly->closed;
    return subPoly;
  }

  // Vertices are nearly all of an archive, so they are read many at once.
  void ReadVertices(SubPoly& subPoly, std::uint64_t count) {
    m_Bytes.resize(VertexBytes * VerticesAtOnce);
    const auto wanted = static_cast<unsigned>(count * VertexBytes);
    if (m_Archive.Read(m_Bytes.data(), wanted) < wanted)
      AfxThrowArchiveException(CArchiveException::endOfFile);
    for (const unsigned char* at = m_Bytes.data(); at < m_Bytes.data() + wanted; at += VertexBytes)
      subPoly.vertices.emplace_back(DoubleAt(at), DoubleAt(at + 8), DoubleAt(at + 16),
                                    DoubleAt(at + 24), DoubleAt(at + 32));
  }

  CArchive& m_Archive;
  std::uint64_t m_Size;
  std::vector<unsigned char> m_Bytes;
};

}  // namespace

bool ReadCutObjects(CArchive& archive, std::uint64_t size, CCutObjects& out) {
  out.m_Objects.clear();
  CCutObjects objects;
  if (!ObjectsReader(archive, size).Read(objects)) return false;
  out = std::move(objects);
  return true;
}

bool ReadCutArchive(const std::wstring& path, CCutObjects& out) {
  out.m_Objects.clear();
  CFile file;
  if (!os::IsRegularFile(path) || !file.Open(path.c_str(), CFile::modeRead)) return false;
  CArchive archive(&file, CArchive::load, ArchiveBuffer);
  return ReadCutObjects(archive, os::FileSize(path), out);
}

}  // namespace rastrel::conversion
