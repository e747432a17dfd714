#include "cfplane/pixel_block.h"

#include <sys/mman.h>

#include <cerrno>
#include <utility>

namespace rastrel::planes {

Expected<PixelBlock> PixelBlock::Allocate(std::size_t bytes, std::size_t lead) {
  // In small pages: the system's large ones are filled faster, but on a virtual machine now and
  // then take several times as long at their first touch, and longer on the whole.
  void* const place =
      ::mmap(nullptr, lead + bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (place == MAP_FAILED) return Failure{.what = "allocate the pixels", .error = errno};
  PixelBlock block;
  block.m_Mapped = {static_cast<std::byte*>(place), lead + bytes};
  block.m_Bytes = block.m_Mapped.subspan(lead);
  return block;
}

PixelBlock::~PixelBlock() {
  if (!m_Mapped.empty()) ::munmap(m_Mapped.data(), m_Mapped.size());
}

PixelBlock::PixelBlock(PixelBlock&& other) noexcept
    : m_Mapped(std::exchange(other.m_Mapped, {})), m_Bytes(std::exchange(other.m_Bytes, {})) {}

PixelBlock& PixelBlock::operator=(PixelBlock&& other) noexcept {
  std::swap(m_Mapped, other.m_Mapped);
  std::swap(m_Bytes, other.m_Bytes);
  return *this;
}

}  // namespace rastrel::planes
