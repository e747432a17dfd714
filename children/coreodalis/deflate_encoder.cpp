#include "children/coreodalis/deflate_encoder.h"

#include <algorithm>

namespace rastrel::odalis {
namespace {

/// Below this, pages of text are by a third larger than with other writers of these formats.
constexpr int UsualLevel = 6;
constexpr int Stored = 0;
constexpr int WindowBits = 15;
constexpr int UsualMemory = 8;
// Deflate with a window of 32 KiB, at the usual level.
constexpr std::uint8_t StreamHeader[2] = {0x78, 0x9C};

}  // namespace

BandQueue::Form DeflatedForm(std::size_t rowBytes, std::size_t rows, unsigned share) {
  BandQueue::Form form;
  form.rowBytes = rowBytes;
  form.rowsPerBand = std::max<std::size_t>(1, DeflatedBandBytes / rowBytes);
  form.rows = rows;
  form.share = share;
  return form;
}

DeflateEncoder::DeflateEncoder(devices::Compression compression)
    : m_IsReady(::deflateInit2(&m_Stream,
                               compression == devices::Compression::None ? Stored : UsualLevel,
                               Z_DEFLATED, -WindowBits, UsualMemory, Z_DEFAULT_STRATEGY) == Z_OK) {}

DeflateEncoder::~DeflateEncoder() {
  if (m_IsReady) ::deflateEnd(&m_Stream);
}

Expected<void> DeflateEncoder::Encode(std::span<const std::uint8_t> plain, Band& band) {
  if (!m_IsReady || ::deflateReset(&m_Stream) != Z_OK) return FailureOf("out of memory");
  const std::size_t header = band.isFirst ? sizeof StreamHeader : 0;
  // The bound is that of a whole stream; an empty block at the end of the band is no longer.
  band.encoded.resize(header + ::deflateBound(&m_Stream, plain.size()) + 16);
  if (band.isFirst) std::copy_n(StreamHeader, header, band.encoded.begin());
  m_Stream.next_in = const_cast<Bytef*>(plain.data());  // only read
  m_Stream.avail_in = static_cast<uInt>(plain.size());
  m_Stream.next_out = band.encoded.data() + header;
  m_Stream.avail_out = static_cast<uInt>(band.encoded.size() - header);
  const int result = ::deflate(&m_Stream, band.isLast ? Z_FINISH : Z_SYNC_FLUSH);
  if (result != (band.isLast ? Z_STREAM_END : Z_OK) || m_Stream.avail_out == 0)
    return FailureOf("the compression failed");
  band.encoded.resize(band.encoded.size() - m_Stream.avail_out);
  band.sum = static_cast<std::uint32_t>(::adler32_z(1, plain.data(), plain.size()));
  band.summed = plain.size();
  return {};
}

void StreamSum::Add(const Band& band) {
  m_Sum = static_cast<std::uint32_t>(
      ::adler32_combine(m_Sum, band.sum, static_cast<z_off_t>(band.summed)));
}

std::vector<std::uint8_t> StreamSum::Bytes() const {
  return {static_cast<std::uint8_t>(m_Sum >> 24), static_cast<std::uint8_t>(m_Sum >> 16),
          static_cast<std::uint8_t>(m_Sum >> 8), static_cast<std::uint8_t>(m_Sum)};
}

}  // namespace rastrel::odalis
