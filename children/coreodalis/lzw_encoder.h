#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace rastrel::odalis {

/// LZW as TIFF files hold it: codes of 9 to 12 bits, the highest bit first, each width one code
/// early.
///
/// The TIFF library has an encoder too, which looks at every byte by itself. Of a sign's bytes,
/// once each sample is the difference to its neighbor, most are zeros in long runs: here the
/// strings of zeros have a table of their own, and such a run costs one look at it.
class LzwEncoder {
 public:
  /// Appends the code of the bytes, whole from its first clear code to its end code.
  void Encode(std::span<const std::uint8_t> bytes, std::vector<std::uint8_t>& to);

 private:
  static constexpr unsigned TableBits = 13;

  struct Output;
  void Clear(Output& output);
  void Add(std::uint32_t prefix, std::uint8_t next, std::uint32_t* place, Output& output);
  void CountString(Output& output);
  std::uint32_t* Find(std::uint32_t key);

  /// The strings with more than one byte, by their hash. An entry has, from its highest bit: the
  /// code of all but the last byte (12), the last byte (8), the string's own code (12); 0: none.
  std::array<std::uint32_t, 1u << TableBits> m_Strings;
  std::array<std::uint16_t, 4096> m_Zeros;  ///< the codes of strings of so many zeros
  std::size_t m_LongestZeros = 1;
  std::uint32_t m_NextCode = 0;
};

}  // namespace rastrel::odalis
