#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace rastrel::children {

/// SHA-256 (FIPS 180-4) of bytes that come in pieces.
class Sha256 {
 public:
  /// Takes more bytes. REQUIRES: Finish has not been called.
  void Add(std::string_view bytes);
  /// 64 lower-case hexadecimal digits for all bytes taken.
  [[nodiscard]] std::string Finish();

 private:
  void TakeBlock(const unsigned char* block);

  std::array<std::uint32_t, 8> m_State = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                          0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  std::array<unsigned char, 64> m_Block{};
  std::uint64_t m_Taken = 0;  ///< bytes, the ones in m_Block included
};

}  // namespace rastrel::children
