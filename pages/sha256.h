#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

/// The check sum of page files: SHA-256 of FIPS 180-4.
namespace rastrel::pages {

/// Takes bytes in pieces of any size and returns their check sum.
class Sha256 {
 public:
  Sha256();
  /// Adds bytes.
  void Add(std::span<const std::byte> bytes);
  void Add(const void* bytes, std::size_t count) {
    Add({static_cast<const std::byte*>(bytes), count});
  }
  /// The sum of all that was added, as 64 lower-case hexadecimal digits. Nothing is added
  /// afterwards.
  [[nodiscard]] std::string Finish();

 private:
  std::array<std::uint32_t, 8> m_State;
  std::array<std::byte, 64> m_Block{};
  std::size_t m_Filled = 0;
  std::uint64_t m_Length = 0;
};

}  // namespace rastrel::pages
