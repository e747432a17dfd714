#include "cfplane/pixel_block.h"

#include <sys/mman.h>

#include <cerrno>
#include <utility>

namespace rastrel::planes {
namespace {

constexpr std::size_t LargePage = std::size_t{2} << 20;

std::size_t RoundUp(std::size_t bytes, std::size_t unit) {
  return (bytes + unit - 1) / unit * unit;
}

}  // namespace

Expected<PixelBlock> PixelBlock::Allocate(std::size_t bytes) {
  // A large page begins at a multiple of its size, so a block of several is mapped with that much
  // more around it, which goes again.
  const bool isLarge = bytes >= LargePage;
  const std::size_t mapped = isLarge ? RoundUp(bytes, LargePage) + LargePage : bytes;
  void* const place =
      ::mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (place == MAP_FAILED) return Failure{.what = "allocate the pixels", .error = errno};
  auto* begin = static_cast<std::byte*>(place);
  if (isLarge) {
    const std::size_t past = reinterpret_cast<std::uintptr_t>(begin) % LargePage;
    const std::size_t before = past == 0 ? 0 : LargePage - past;
    if (before > 0) ::munmap(begin, before);
    ::munmap(begin + before + RoundUp(bytes, LargePage), LargePage - before);
    begin += before;
    ::madvise(begin, RoundUp(bytes, LargePage), MADV_HUGEPAGE);
  }
  PixelBlock block;
  block.m_Bytes = {begin, bytes};
  return block;
}

PixelBlock::~PixelBlock() {
  if (m_Bytes.empty()) return;
  const std::size_t bytes = m_Bytes.size();
  ::munmap(m_Bytes.data(), bytes >= LargePage ? RoundUp(bytes, LargePage) : bytes);
}

PixelBlock::PixelBlock(PixelBlock&& other) noexcept : m_Bytes(std::exchange(other.m_Bytes, {})) {}

PixelBlock& PixelBlock::operator=(PixelBlock&& other) noexcept {
  std::swap(m_Bytes, other.m_Bytes);
  return *this;
}

}  // namespace rastrel::planes
