#include "rastrel/printing/environment_block.h"

#include <cstdlib>
#include <cstring>

namespace PrintingThread {

void* (*Args::s_Reallocate)(void*, std::size_t) = std::realloc;

Args::Args() : m_pBuffer(static_cast<char*>(s_Reallocate(nullptr, 1))) {
  if (m_pBuffer != nullptr) *m_pBuffer = '\0';
}

Args::~Args() { std::free(m_pBuffer); }

void Args::Add(std::string_view text) {
  if (m_pBuffer == nullptr) return;
  const std::uint64_t grown = m_Capacity + text.size() + 1;
  auto* const block = static_cast<char*>(s_Reallocate(m_pBuffer, grown));
  if (block == nullptr) std::free(m_pBuffer);
  m_pBuffer = block;
  if (block == nullptr) return;
  std::memcpy(block + m_Used, text.data(), text.size());
  m_Used += text.size();
  block[m_Used++] = '\0';
  block[m_Used] = '\0';
  m_Capacity = grown;
}

}  // namespace PrintingThread
