#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace rastrel::xml {

/// Memory for many small objects that end together. No destructor is run; going back to a mark
/// frees all that was allocated since. One thread at a time.
class XmlArena {
 public:
  /// A point to go back to.
  struct Mark {
    std::size_t chunk = 0;
    std::byte* free = nullptr;
  };

  XmlArena() = default;
  XmlArena(const XmlArena&) = delete;
  XmlArena& operator=(const XmlArena&) = delete;

  /// Returns memory for anything that needs no more than a pointer's alignment.
  [[nodiscard]] void* Allocate(std::size_t size) {
    const std::size_t rounded = (size + alignof(void*) - 1) & ~(alignof(void*) - 1);
    if (rounded > static_cast<std::size_t>(m_End - m_Free)) NextChunk(rounded);
    std::byte* const place = m_Free;
    m_Free += rounded;
    return place;
  }
  /// Returns a copy of the bytes, at any alignment.
  [[nodiscard]] std::string_view Copy(std::string_view bytes);

  /// Bytes taken from the system for the memory in use, unused ends of chunks included.
  [[nodiscard]] std::size_t Size() const { return m_Before + Used(); }

  [[nodiscard]] Mark Here() const { return {m_Chunk, m_Free}; }
  /// Gives back all memory taken since `mark`, and keeps it for later allocations. REQUIRES: no
  /// earlier mark was gone back to since.
  void GoBack(Mark mark);

 private:
  struct Chunk {
    std::unique_ptr<std::byte[]> bytes;
    std::size_t size = 0;
  };
  [[nodiscard]] std::size_t Used() const {
    return m_Chunks.empty() ? 0 : static_cast<std::size_t>(m_Free - m_Chunks[m_Chunk].bytes.get());
  }
  void NextChunk(std::size_t size);
  void Enter(std::size_t chunk, std::byte* free);

  std::vector<Chunk> m_Chunks;
  std::size_t m_Chunk = 0;   // the one that m_Free points into
  std::size_t m_Before = 0;  // sizes of those ahead of it
  std::byte* m_Free = nullptr;
  std::byte* m_End = nullptr;
};

}  // namespace rastrel::xml
