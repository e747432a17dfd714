#include "server/printer/png_rows.h"

#include <cstdlib>
#include <utility>

namespace rastrel::server {
namespace {

Failure Damaged() { return FailureOf("the PNG file's data is damaged", FailureCode::BadInput); }

// The neighbor that is nearest to left + above - corner, as the format's Paeth filter takes it.
unsigned Paeth(unsigned left, unsigned above, unsigned corner) {
  const int guess = static_cast<int>(left + above) - static_cast<int>(corner);
  const int toLeft = std::abs(guess - static_cast<int>(left));
  const int toAbove = std::abs(guess - static_cast<int>(above));
  const int toCorner = std::abs(guess - static_cast<int>(corner));
  if (toLeft <= toAbove && toLeft <= toCorner) return left;
  return toAbove <= toCorner ? above : corner;
}

unsigned Predict(unsigned filter, unsigned left, unsigned above, unsigned corner) {
  switch (filter) {
    case 1: return left;
    case 2: return above;
    case 3: return (left + above) / 2;
    case 4: return Paeth(left, above, corner);
    default: return 0;
  }
}

}  // namespace

PngRows::PngRows(std::uint32_t height, std::size_t rowBytes, std::size_t pixelBytes, OnRow onRow)
    : m_Left(height),
      m_PixelBytes(pixelBytes),
      m_OnRow(std::move(onRow)),
      m_Row(rowBytes + 1, '\0'),
      m_Above(rowBytes, '\0') {
  m_Ended = ::inflateInit(&m_Inflater) != Z_OK;
}

PngRows::~PngRows() { static_cast<void>(::inflateEnd(&m_Inflater)); }

Expected<void> PngRows::Add(std::string_view compressed) {
  m_Inflater.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(compressed.data()));
  m_Inflater.avail_in = static_cast<uInt>(compressed.size());
  while (!m_Ended) {
    // With all rows there, one more byte of room shows data that is too long.
    char surplus = 0;
    char* const room = m_Left == 0 ? &surplus : m_Row.data() + m_Filled;
    const std::size_t size = m_Left == 0 ? 1 : m_Row.size() - m_Filled;
    m_Inflater.next_out = reinterpret_cast<Bytef*>(room);
    m_Inflater.avail_out = static_cast<uInt>(size);
    const int result = ::inflate(&m_Inflater, Z_NO_FLUSH);
    const std::size_t made = size - m_Inflater.avail_out;
    if (made != 0 && m_Left == 0) return Damaged();
    m_Filled += made;
    if (m_Left != 0 && m_Filled == m_Row.size())
      if (auto done = TakeRow(); !done) return done;
    m_Ended = result == Z_STREAM_END;
    if (result == Z_BUF_ERROR) break;  // all of the piece is taken
    if (result != Z_OK && !m_Ended) return Damaged();
    if (m_Inflater.avail_in == 0 && made == 0) break;
  }
  return {};
}

Expected<void> PngRows::TakeRow() {
  if (!Unfilter()) return Damaged();
  --m_Left;
  m_Filled = 0;
  m_Above.assign(m_Row, 1);
  return m_OnRow(m_Above);
}

bool PngRows::Unfilter() {
  const unsigned filter = static_cast<unsigned char>(m_Row[0]);
  if (filter > 4) return false;
  for (std::size_t at = 0; filter != 0 && at < m_Above.size(); ++at) {
    const auto byte = [](char value) {
      return static_cast<unsigned>(static_cast<unsigned char>(value));
    };
    const bool first = at < m_PixelBytes;
    const unsigned left = first ? 0 : byte(m_Row[1 + at - m_PixelBytes]);
    const unsigned corner = first ? 0 : byte(m_Above[at - m_PixelBytes]);
    const unsigned value = byte(m_Row[1 + at]) + Predict(filter, left, byte(m_Above[at]), corner);
    m_Row[1 + at] = static_cast<char>(value & 0xFF);
  }
  return true;
}

Expected<void> PngRows::Finish() const {
  if (m_Left != 0 || !m_Ended) return Damaged();
  return {};
}

}  // namespace rastrel::server
