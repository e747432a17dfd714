#include "children/jobspool/cut_archive.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "children/jobspool/cut_path_reader.h"
#include "children/jobspool/prefix_text.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::jobspool {
namespace {

constexpr double CentimetresPerPoint = 2.54 / 72;
constexpr std::size_t BufferSize = 262144;
constexpr std::uint32_t ArchiveVersion = 0;
constexpr std::uint32_t ObjectVersion = 1;
constexpr std::int32_t OrdinaryKind = 1;
constexpr double OrdinaryNumber = 1.0;

// The archive, little-endian; the number after a field is its bytes.
//
//   archive:  version 4 | count 4 | objects
//   object:   version 4 | color's text | number 8 | count 8 | polygons | kind 4
//   polygon:  count 8 | parts, 8 bytes of 0 after each | 4 times 4 bytes of 0 | 1 byte of 0
//   part:     count 8 | vertices: x 8, y 8, 3 times 8 bytes of 0 | closed 1
//   text:     FF FE FF | count 1, or FF and count 2 | UTF-16 units of 2

// A file that is written from its start to its end, but for counts that are known late.
class ArchiveFile {
 public:
  explicit ArchiveFile(const std::string& path)
      : m_File(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)) {
    if (!m_File.IsOpen()) m_Error = errno;
  }

  template <typename Integer>
  void Put(Integer value) {
    for (unsigned i = 0; i < sizeof value; ++i) {
      m_Buffer += static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * i) & 255U);
    }
    if (m_Buffer.size() >= BufferSize) Flush();
  }
  void Put(double value) { Put(std::bit_cast<std::uint64_t>(value)); }

  // FF FE FF and the number of UTF-16 units come before these, in one byte or after FF in two. No
  // line of a header is so long that it would take the third form.
  void Put(const std::wstring& text) {
    const std::vector<std::uint16_t> units = os::Utf16FromWide(text);
    static_assert(JobHeaderLimit <= 65536);
    m_Buffer += "\xFF\xFE\xFF";
    if (units.size() < 0xFF) {
      Put(static_cast<std::uint8_t>(units.size()));
    } else {
      Put(std::uint8_t{0xFF});
      Put(static_cast<std::uint16_t>(units.size()));
    }
    for (const std::uint16_t unit : units) Put(unit);
  }

  [[nodiscard]] std::uint64_t Position() const { return m_Written + m_Buffer.size(); }

  // Writes a count over the zeros at that place.
  template <typename Integer>
  void PutAt(std::uint64_t position, Integer value) {
    Flush();
    std::array<char, sizeof(Integer)> bytes{};
    for (unsigned i = 0; i < sizeof value; ++i) {
      bytes[i] = static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * i) & 255U);
    }
    if (m_Error == 0 && pwrite(m_File.Get(), bytes.data(), bytes.size(),
                               static_cast<off_t>(position)) != ssize_t{sizeof(Integer)}) {
      m_Error = errno != 0 ? errno : EIO;
    }
  }

  // The error number of the first call that failed, or 0.
  [[nodiscard]] int Finish() {
    Flush();
    return m_Error;
  }
  [[nodiscard]] bool Failed() const { return m_Error != 0; }

 private:
  void Flush() {
    if (m_Error == 0 && Position() > ArchiveLimit) m_Error = EFBIG;
    if (m_Error == 0) {
      const auto written = os::WriteAll(m_File.Get(), m_Buffer);
      if (!written) m_Error = written.Error().error;
    }
    m_Written += m_Buffer.size();
    m_Buffer.clear();
  }

  os::FileDescriptor m_File;
  std::string m_Buffer;
  std::uint64_t m_Written = 0;
  int m_Error = 0;
};

void PutPart(ArchiveFile& file, const PathPart& part) {
  file.Put(std::uint64_t{part.points.size()});
  for (const Point& point : part.points) {
    file.Put(point.x * CentimetresPerPoint);
    file.Put(point.y * CentimetresPerPoint);
    for (int spare = 0; spare < 3; ++spare) file.Put(0.0);
  }
  file.Put(static_cast<std::uint8_t>(part.closed ? 1 : 0));
}

// False if the path has not as many parts as it says.
bool PutPolygon(ArchiveFile& file, CutPathReader& reader) {
  file.Put(std::uint64_t{reader.Parts()});
  std::size_t parts = 0;
  while (const auto part = reader.NextPart()) {
    PutPart(file, *part);
    file.Put(std::uint64_t{0});
    ++parts;
  }
  for (int value = 0; value < 4; ++value) file.Put(std::uint32_t{0});
  file.Put(std::uint8_t{0});
  return parts == reader.Parts();
}

// Writes the object of one line, if there are paths of it. False if the file broke its form.
bool PutObject(ArchiveFile& file, const std::string& cutPaths, const std::vector<CutLine>& lines,
               std::size_t line, double tolerance, std::uint32_t& objects) {
  CutPathReader reader(cutPaths, tolerance);
  std::uint64_t place = 0;
  std::uint64_t polygons = 0;
  while (!file.Failed() && reader.NextPath()) {
    if (reader.Hidden() || LineOfColor(reader.Color(), lines) != line) continue;
    if (polygons++ == 0) {
      file.Put(ObjectVersion);
      file.Put(os::WideFromUtf8(ColorText(lines[line])));
      file.Put(OrdinaryNumber);
      place = file.Position();
      file.Put(polygons);
      ++objects;
    }
    if (!PutPolygon(file, reader)) return false;
  }
  if (polygons > 0) {
    file.PutAt(place, polygons);
    file.Put(OrdinaryKind);
  }
  return reader.Whole();
}

// Whole numbers of thousandths or ten-thousandths, in which colors are compared.
bool SameValues(std::string_view text, const CutLine& line, std::size_t count, double factor) {
  for (std::size_t i = 0; i < count; ++i) {
    while (text.starts_with(' ')) text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) return false;
    if (std::llround(value * factor) != std::llround(line.values[i] * factor)) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  }
  return true;
}

bool IsColor(std::string_view color, const CutLine& line) {
  const std::size_t blank = color.find(' ');
  if (blank == color.npos) return false;
  const std::string_view kind = color.substr(0, blank);
  const std::string_view rest = color.substr(blank + 1);
  switch (line.kind) {
    case CutLine::Kind::Rgb: return kind == "rgb" && SameValues(rest, line, 3, 1000);
    case CutLine::Kind::Cmyk: return kind == "cmyk" && SameValues(rest, line, 4, 10000);
    case CutLine::Kind::Separation: break;
  }
  return kind == "separation" && rest == NameOf(line);
}

}  // namespace

std::string ColorText(const CutLine& line) {
  std::array<char, 128> text{};
  const auto& v = line.values;
  switch (line.kind) {
    case CutLine::Kind::Rgb:
      std::snprintf(text.data(), text.size(), "RGB: %.3f  %.3f  %.3f", v[0], v[1], v[2]);
      break;
    case CutLine::Kind::Cmyk:
      std::snprintf(text.data(), text.size(), "CMYK: %.4f  %.4f  %.4f  %.4f", v[0], v[1], v[2],
                    v[3]);
      break;
    case CutLine::Kind::Separation: return NameOf(line);
  }
  return text.data();
}

std::size_t LineOfColor(const std::string& color, const std::vector<CutLine>& lines) {
  const auto found =
      std::ranges::find_if(lines, [&](const CutLine& line) { return IsColor(color, line); });
  return static_cast<std::size_t>(found - lines.begin());
}

Expected<void> WriteCutArchive(const std::string& cutPaths, const std::string& archive,
                               const std::vector<CutLine>& lines, double tolerance) {
  ArchiveFile file(archive);
  std::uint32_t objects = 0;
  file.Put(ArchiveVersion);
  const std::uint64_t place = file.Position();
  file.Put(objects);
  for (std::size_t line = 0; line < lines.size() && !file.Failed(); ++line) {
    if (!PutObject(file, cutPaths, lines, line, tolerance, objects) && !file.Failed()) {
      return Failure{"read", cutPaths, EINVAL};
    }
  }
  file.PutAt(place, objects);
  const int error = file.Finish();
  if (error != 0) return Failure{"write", archive, error};
  return {};
}

}  // namespace rastrel::jobspool
