#include "cfplane/pixel_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <string_view>

#include "cfplane/pixel_block.h"
#include "cfplane/tiff_directory.h"
#include "pages/plain_tiff.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::planes {
namespace {

constexpr std::size_t NetpbmHeadBytes = 4096;  // comments included

// The numbers of a netpbm picture's head.
class HeadNumbers {
 public:
  explicit HeadNumbers(std::string_view head) : m_Head(head) {}

  // A decimal number after whitespace and comments. Takes the one byte after it too.
  std::optional<std::uint32_t> Next() {
    while (m_At < m_Head.size() && (IsWhitespace(m_Head[m_At]) || m_Head[m_At] == '#')) {
      if (m_Head[m_At] == '#') m_At = std::min(m_Head.find('\n', m_At), m_Head.size() - 1);
      ++m_At;
    }
    std::uint32_t number = 0;
    const std::size_t first = m_At;
    for (; m_At < m_Head.size() && IsDigit(m_Head[m_At]); ++m_At) {
      number = number * 10 + static_cast<std::uint32_t>(m_Head[m_At] - '0');
      if (number > MaximumSide) return std::nullopt;
    }
    if (m_At == first || m_At == m_Head.size() || !IsWhitespace(m_Head[m_At])) return std::nullopt;
    ++m_At;
    return number;
  }
  [[nodiscard]] std::size_t Taken() const { return m_At; }

 private:
  static bool IsWhitespace(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
  }
  static bool IsDigit(char byte) { return byte >= '0' && byte <= '9'; }

  std::string_view m_Head;
  std::size_t m_At = 2;  // after the two letters of the format
};

}  // namespace

Expected<PixelFile> PixelFile::Open(const std::string& directory, const pages::PageFile& listed) {
  const std::string path = directory + "/" + listed.name;
  // Without O_NONBLOCK the open of a pipe waits for somebody to write into it.
  auto opened = os::TakeDescriptor(
      os::Calls().open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0),
      "open", path);
  if (!opened) return opened.Error();
  PixelFile file(std::move(*opened), path);
  if (auto checked = file.CheckSize(listed); !checked) return checked.Error();
  if (auto read = file.ReadHead(); !read) return read.Error();
  return file;
}

Failure PixelFile::Refuse(std::string why) const {
  return Failure{.what = "read pixels", .where = m_Path, .error = EINVAL, .why = std::move(why)};
}

Expected<void> PixelFile::CheckSize(const pages::PageFile& listed) {
  struct stat state {};
  if (::fstat(m_File.Get(), &state) != 0) return Failure{"fstat", m_Path, errno};
  if (!S_ISREG(state.st_mode)) return Refuse("is no regular file");
  m_Size = static_cast<std::uint64_t>(state.st_size);
  if (m_Size == listed.bytes) return {};
  return Refuse("has " + std::to_string(m_Size) + " bytes, and " + std::to_string(listed.bytes) +
                " by the page's description");
}

Expected<void> PixelFile::ReadHead() {
  std::array<char, NetpbmHeadBytes> head;
  const std::size_t taken = static_cast<std::size_t>(std::min<std::uint64_t>(m_Size, head.size()));
  if (auto read = ReadAt(0, std::as_writable_bytes(std::span(head).first(taken))); !read)
    return read;
  const std::string_view text(head.data(), taken);
  const bool isNetpbm = text.starts_with("P5") || text.starts_with("P6");
  if (isNetpbm) return ReadNetpbm(text);
  return TakePlainTiff() ? Expected<void>() : ReadTiff();
}

// A page as the RIP keeps it; its strips follow one another.
bool PixelFile::TakePlainTiff() {
  const auto found = pages::FindWholePlainTiff(
      [this](std::uint64_t offset, std::span<std::byte> bytes) {
        return static_cast<bool>(ReadAt(offset, bytes));
      },
      m_Size);
  if (!found) return false;
  const pages::PlainTiff& picture = found->picture;
  if (picture.width > MaximumSide || picture.height > MaximumSide) return false;
  m_Width = picture.width;
  m_Height = picture.height;
  m_Samples = picture.samples;
  m_Runs = {{found->pixelsAt, picture.PixelBytes()}};
  return true;
}

Expected<void> PixelFile::ReadNetpbm(std::string_view head) {
  HeadNumbers numbers(head);
  const auto width = numbers.Next();
  const auto height = width ? numbers.Next() : width;
  const auto highest = height ? numbers.Next() : height;
  if (!highest || *width == 0 || *height == 0) return Refuse("has no whole head");
  if (*highest != 255) return Refuse("has not 8 bits a sample");
  m_Width = *width;
  m_Height = *height;
  m_Samples = head[1] == '6' ? 3 : 1;
  const std::uint64_t bytes = std::uint64_t{RowBytes()} * m_Height;
  if (bytes != m_Size - numbers.Taken()) return Refuse("has not the size that its head says");
  m_Runs = {{numbers.Taken(), bytes}};
  return {};
}

Expected<void> PixelFile::ReadTiff() {
  const auto directory = ReadTiffDirectory(
      m_Size, [this](std::uint64_t offset, std::span<std::byte> bytes) -> Expected<void> {
        if (offset > m_Size || bytes.size() > m_Size - offset)
          return Refuse("is cut off in its description");
        return ReadAt(offset, bytes);
      });
  if (!directory) {
    const Failure& why = directory.Error();
    return why.where.empty() ? Refuse(why.why) : why;
  }
  m_Width = directory->width;
  m_Height = directory->height;
  m_Samples = 1;
  if (m_Width == 0 || m_Height == 0 || m_Width > MaximumSide || m_Height > MaximumSide)
    return Refuse("has a side of no or too many pixels");
  // Strips may lie one in the other: only this keeps a small file from a large picture.
  if (std::uint64_t{RowBytes()} * m_Height > m_Size)
    return Refuse("claims more pixels than it has bytes");
  return TakeStrips(directory->offsets, directory->counts,
                    std::clamp(directory->rowsPerStrip, 1U, m_Height));
}

Expected<void> PixelFile::TakeStrips(const std::vector<std::uint32_t>& offsets,
                                     const std::vector<std::uint32_t>& counts,
                                     std::uint64_t rowsPerStrip) {
  const std::uint64_t strips = (m_Height + rowsPerStrip - 1) / rowsPerStrip;
  if (offsets.size() != strips || counts.size() != strips)
    return Refuse("has not as many strips as its rows make");
  std::uint64_t rows = m_Height;
  for (std::size_t i = 0; i < offsets.size(); ++i) {
    const std::uint64_t bytes = std::min(rows, rowsPerStrip) * m_Width;
    rows -= std::min(rows, rowsPerStrip);
    if (counts[i] != bytes || offsets[i] > m_Size || bytes > m_Size - offsets[i])
      return Refuse("has a strip of a wrong size");
    const bool continues =
        !m_Runs.empty() && m_Runs.back().offset + m_Runs.back().bytes == offsets[i];
    if (continues)
      m_Runs.back().bytes += bytes;
    else
      m_Runs.push_back({offsets[i], bytes});
  }
  return {};
}

Expected<void> PixelFile::Read(std::span<std::byte> bytes) {
  while (!bytes.empty()) {
    const Run& run = m_Runs[m_Run];
    const std::size_t count =
        static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), run.bytes - m_Taken));
    if (auto read = ReadAt(run.offset + m_Taken, bytes.first(count)); !read) return read;
    bytes = bytes.subspan(count);
    Take(count);
  }
  return {};
}

void PixelFile::Skip(std::uint64_t bytes) {
  while (bytes > 0) {
    const std::uint64_t count = std::min(bytes, m_Runs[m_Run].bytes - m_Taken);
    bytes -= count;
    Take(count);
  }
}

// Bytes of the present run.
void PixelFile::Take(std::uint64_t bytes) {
  m_Taken += bytes;
  if (m_Taken < m_Runs[m_Run].bytes) return;
  ++m_Run;
  m_Taken = 0;
}

Expected<void> PixelFile::ReadAt(std::uint64_t offset, std::span<std::byte> bytes) {
  if (offset != m_Offset) {
    if (::lseek(m_File.Get(), static_cast<off_t>(offset), SEEK_SET) < 0)
      return Failure{"lseek", m_Path, errno};
    m_Offset = offset;
  }
  while (!bytes.empty()) {
    const auto got =
        os::ReadSome(m_File.Get(), reinterpret_cast<char*>(bytes.data()), bytes.size());
    if (!got) return FailureAt(m_Path, got.Error());
    if (*got == 0)
      return Failure{
          .what = "read pixels", .where = m_Path, .error = EIO, .why = "was cut short meanwhile"};
    m_Offset += *got;
    bytes = bytes.subspan(*got);
  }
  return {};
}

}  // namespace rastrel::planes
