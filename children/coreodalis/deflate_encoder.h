#pragma once

#include <zlib.h>

#include <cstdint>
#include <span>
#include <vector>

#include "children/coreodalis/band_queue.h"
#include "children/devices/devices.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::odalis {

/// About so many bytes of rows are one band of a deflated picture: the dictionary that each begins
/// without costs less than a hundredth of the file then.
inline constexpr std::size_t DeflatedBandBytes = std::size_t{512} << 10;

/// The form of a queue whose bands become one zlib stream.
[[nodiscard]] BandQueue::Form DeflatedForm(std::size_t rowBytes, std::size_t rows, unsigned share);

/// Compresses bands so that one after the other, with the sum at the end, they are one zlib stream:
///
///     header  band  band ... band  sum
///
/// A band refers to nothing before it. All but the last end in an empty stored block, which
/// brings the next to a byte's begin; the last one ends the stream but for the sum.
class DeflateEncoder {
 public:
  explicit DeflateEncoder(devices::Compression compression);
  ~DeflateEncoder();
  DeflateEncoder(const DeflateEncoder&) = delete;
  DeflateEncoder& operator=(const DeflateEncoder&) = delete;

  /// Sets encoded bytes, sum and number of summed bytes of the band from its plain bytes.
  [[nodiscard]] Expected<void> Encode(std::span<const std::uint8_t> plain, Band& band);

 private:
  z_stream m_Stream{};
  bool m_IsReady;
};

/// The sum at the end of the stream, of bands that are added in order.
class StreamSum {
 public:
  void Add(const Band& band);
  /// Four bytes, the highest first.
  [[nodiscard]] std::vector<std::uint8_t> Bytes() const;

 private:
  std::uint32_t m_Sum = 1;
};

}  // namespace rastrel::odalis
