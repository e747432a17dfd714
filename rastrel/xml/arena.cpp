#include "rastrel/xml/arena.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace rastrel::xml {
namespace {

// A template has a few hundred nodes; a large document soon gets chunks of the largest size.
constexpr std::size_t FirstChunkSize = std::size_t{8} << 10;
constexpr std::size_t LargestChunkSize = std::size_t{512} << 10;

}  // namespace

std::string_view XmlArena::Copy(std::string_view bytes) {
  if (bytes.empty()) return {};
  char* const place = static_cast<char*>(Allocate(bytes.size()));
  std::memcpy(place, bytes.data(), bytes.size());
  return {place, bytes.size()};
}

// Chunks after the current one are left over from memory that was given back. One that is too small
// for the request is replaced.
void XmlArena::NextChunk(std::size_t size) {
  const std::size_t next = m_Chunks.empty() ? 0 : m_Chunk + 1;
  if (next >= m_Chunks.size()) m_Chunks.emplace_back();
  Chunk& chunk = m_Chunks[next];
  if (chunk.size < size) {
    const std::size_t grown = next == 0 ? FirstChunkSize : m_Chunks[next - 1].size * 2;
    chunk.size = std::max(size, std::min(grown, LargestChunkSize));
    chunk.bytes = std::make_unique_for_overwrite<std::byte[]>(chunk.size);
  }
  if (next > 0) m_Before += m_Chunks[next - 1].size;
  Enter(next, chunk.bytes.get());
}

void XmlArena::GoBack(Mark mark) {
  if (m_Chunks.empty()) return;
  while (m_Chunk > mark.chunk) m_Before -= m_Chunks[--m_Chunk].size;
  Enter(mark.chunk, mark.free == nullptr ? m_Chunks.front().bytes.get() : mark.free);
}

void XmlArena::Enter(std::size_t chunk, std::byte* free) {
  m_Chunk = chunk;
  m_Free = free;
  m_End = m_Chunks[chunk].bytes.get() + m_Chunks[chunk].size;
}

}  // namespace rastrel::xml
