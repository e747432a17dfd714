#include "children/coreodalis/netpbm_file.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>
#include <vector>

namespace rastrel::odalis {
namespace {

constexpr std::size_t BlockBytes = 1u << 12;
constexpr std::size_t MaximumHeader = 4096;

bool IsWhitespace(char byte) { return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n'; }

class NetpbmFile final : public PixelFile {
 public:
  NetpbmFile(os::FileDescriptor descriptor, std::string path)
      : m_Descriptor(std::move(descriptor)), m_Path(std::move(path)), m_Block(BlockBytes) {}

  Expected<void> ReadHeader(std::uint64_t bytes) {
    const auto magic = TakeByte();
    const auto kind = TakeByte();
    if (!magic || !kind) return Refuse("has no whole header");
    m_Samples = *kind == '6' ? 3 : 1;
    const auto width = TakeNumber();
    const auto height = TakeNumber();
    const auto highest = TakeNumber();
    if (!width || !height || !highest || *width == 0 || *height == 0) {
      return Refuse("has no whole header");
    }
    if (*highest != 255) return Refuse("has not 8 bits a sample");
    m_Width = *width;
    m_Height = *height;
    if (std::uint64_t{RowBytes()} * m_Height != bytes - m_HeaderBytes) {
      return Refuse("has not the size that its header tells");
    }
    if (RowBytes() > LargestRow) return Refuse("has rows of more than 64 MiB");
    return {};
  }

  Expected<void> ReadRows(std::span<std::uint8_t> rows) override {
    std::size_t filled = std::min(rows.size(), m_Filled - m_At);
    std::copy_n(m_Block.begin() + static_cast<std::ptrdiff_t>(m_At), filled, rows.begin());
    m_At += filled;
    // Past the block that the header was in, nothing is copied twice.
    while (filled < rows.size()) {
      const std::size_t count = Read(rows.data() + filled, rows.size() - filled);
      if (count == 0) return Refuse("ends before its last row");
      filled += count;
    }
    return {};
  }

 private:
  Failure Refuse(const char* why) const { return FailureOf("'" + m_Path + "' " + why); }

  /// Up to so many bytes; 0 at the end of the file and if it can't be read.
  std::size_t Read(void* to, std::size_t size) {
    while (true) {
      const ssize_t count = ::read(m_Descriptor.Get(), to, size);
      if (count < 0 && errno == EINTR) continue;
      return count > 0 ? static_cast<std::size_t>(count) : 0;
    }
  }

  bool Fill() {
    m_At = 0;
    m_Filled = Read(m_Block.data(), m_Block.size());
    return m_Filled > 0;
  }

  /// The next byte of the header.
  std::optional<char> TakeByte() {
    if (m_HeaderBytes >= MaximumHeader || (m_At == m_Filled && !Fill())) return std::nullopt;
    ++m_HeaderBytes;
    return m_Block[m_At++];
  }

  /// A decimal number after whitespace and comments; takes the one byte after it too.
  std::optional<unsigned> TakeNumber() {
    auto byte = TakeByte();
    while (byte && (IsWhitespace(*byte) || *byte == '#')) {
      if (*byte == '#') {
        while (byte && *byte != '\n') byte = TakeByte();
      }
      if (byte) byte = TakeByte();
    }
    unsigned number = 0;
    bool any = false;
    for (; byte && *byte >= '0' && *byte <= '9'; byte = TakeByte()) {
      number = number * 10 + static_cast<unsigned>(*byte - '0');
      if (number > MaximumSide) return std::nullopt;
      any = true;
    }
    if (!any || !byte || !IsWhitespace(*byte)) return std::nullopt;
    return number;
  }

  os::FileDescriptor m_Descriptor;
  std::string m_Path;
  std::vector<char> m_Block;
  std::size_t m_At = 0;
  std::size_t m_Filled = 0;
  std::size_t m_HeaderBytes = 0;
};

}  // namespace

Expected<std::unique_ptr<PixelFile>> OpenNetpbm(os::FileDescriptor descriptor, std::string path,
                                                std::uint64_t bytes) {
  auto file = std::make_unique<NetpbmFile>(std::move(descriptor), std::move(path));
  if (auto read = file->ReadHeader(bytes); !read) return read.Error();
  return std::unique_ptr<PixelFile>(std::move(file));
}

}  // namespace rastrel::odalis
