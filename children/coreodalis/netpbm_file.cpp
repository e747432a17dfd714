#include "children/coreodalis/netpbm_file.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace rastrel::odalis {
namespace {

constexpr std::size_t BlockBytes = 1u << 18;
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

  Expected<void> ReadRow(std::span<std::uint8_t> row) override {
    std::size_t filled = 0;
    while (filled < row.size()) {
      if (m_At == m_Filled && !Fill()) return Refuse("ends before its last row");
      const std::size_t count = std::min(row.size() - filled, m_Filled - m_At);
      std::memcpy(row.data() + filled, m_Block.data() + m_At, count);
      m_At += count;
      filled += count;
    }
    return {};
  }

 private:
  Failure Refuse(const char* why) const { return FailureOf("'" + m_Path + "' " + why); }

  bool Fill() {
    m_At = m_Filled = 0;
    while (true) {
      const ssize_t count = ::read(m_Descriptor.Get(), m_Block.data(), m_Block.size());
      if (count < 0 && errno == EINTR) continue;
      if (count > 0) m_Filled = static_cast<std::size_t>(count);
      return count > 0;
    }
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
