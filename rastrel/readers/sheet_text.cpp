#include "rastrel/readers/sheet_text.h"

#include <algorithm>

namespace rastrel::readers {

// Makes sure of a byte at least at the end of the text, unless the limit is reached.
bool SheetText::TakeRoom(std::size_t wanted) {
  if (m_Room > 0 || wanted == 0) return true;
  if (m_Size >= m_Limit) {
    m_IsOverLimit = true;
    return false;
  }
  const std::size_t block = m_Size / BlockSize;
  const std::size_t inBlock = m_Size % BlockSize;
  if (block == m_Blocks.size())
    m_Blocks.push_back(std::make_unique_for_overwrite<char[]>(BlockSize));
  m_End = m_Blocks[block].get() + inBlock;
  m_Room = std::min(BlockSize - inBlock, m_Limit - m_Size);
  return true;
}

void SheetText::AppendSlowly(std::string_view bytes) {
  while (!bytes.empty() && TakeRoom(bytes.size())) {
    const std::size_t count = std::min(bytes.size(), m_Room);
    std::memcpy(m_End, bytes.data(), count);
    Advance(count);
    bytes.remove_prefix(count);
  }
}

void SheetText::Append(std::size_t count, char byte) {
  while (count > 0 && TakeRoom(count)) {
    const std::size_t piece = std::min(count, m_Room);
    std::memset(m_End, byte, piece);
    Advance(piece);
    count -= piece;
  }
}

void SheetText::TrimRight(std::string_view set) {
  std::size_t size = m_Size;
  while (size > 0 && set.find(At(size - 1)) != std::string_view::npos) --size;
  if (size < m_Size) Truncate(size);
}

void SheetText::Truncate(std::size_t size) {
  m_Size = size;
  // One block is kept, for texts that are emptied again and again.
  const std::size_t needed = std::max<std::size_t>((size + BlockSize - 1) / BlockSize, 1);
  if (m_Blocks.size() > needed) m_Blocks.resize(needed);
  m_End = nullptr;
  m_Room = 0;
  m_IsOverLimit = false;
  if (size % BlockSize != 0) {
    m_End = m_Blocks[size / BlockSize].get() + size % BlockSize;
    m_Room = std::min(BlockSize - size % BlockSize, m_Limit - size);
  }
}

std::pair<std::size_t, std::size_t> SheetText::TrimmedRange() const {
  std::size_t begin = 0;
  std::size_t end = m_Size;
  while (begin < end && Whitespace.find(At(begin)) != std::string_view::npos) ++begin;
  while (begin < end && Whitespace.find(At(end - 1)) != std::string_view::npos) --end;
  return {begin, end};
}

}  // namespace rastrel::readers
