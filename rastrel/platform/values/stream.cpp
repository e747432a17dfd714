#include "rastrel/platform/values/stream.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "rastrel/platform/os/text.h"

namespace os = rastrel::os;

namespace {

// Bytes outside blocks are written to the file in pieces of this size, and read in them.
constexpr std::size_t Piece = 65536;
// A writer's memory grows by at least this much.
constexpr std::size_t MinimumGrowth = 1024;

static_assert(std::endian::native == std::endian::little, "numbers are copied as they lie");

template <typename Number>
Number Taken(CStream& stream) {
  Number value;
  stream.Read(&value, sizeof value);
  return value;
}

}  // namespace

CStreamException::~CStreamException() = default;

const char* CStreamException::what() const noexcept {
  switch (m_cause) {
    case endOfFile: return "the stream ends too early";
    case writeFailed: return "the stream could not be written";
    case noBlock: return "a block of the stream is closed that was not open";
  }
  return "the stream failed";
}

CStream::CStream(CFile* file) : m_File(file) {}

CStream::~CStream() {
  try {
    Flush();
  } catch (...) {  // a destructor can't report it; who needs to know calls Flush
  }
}

void CStream::Read(void* bytes, std::size_t count) {
  auto* target = static_cast<unsigned char*>(bytes);
  if (count <= m_Used - m_Taken) {
    std::memcpy(target, m_Buffer.get() + m_Taken, count);
    m_Taken += count;
    return;
  }
  ReadBehindBuffer(target, count);
}

void CStream::ReadBehindBuffer(unsigned char* target, std::size_t count) {
  while (count > 0) {
    if (m_Taken == m_Used) Fill();
    const std::size_t part = std::min(count, m_Used - m_Taken);
    std::memcpy(target, m_Buffer.get() + m_Taken, part);
    m_Taken += part;
    target += part;
    count -= part;
  }
}

void CStream::Fill() {
  if (m_Capacity < Piece) {
    m_Buffer = std::unique_ptr<unsigned char[]>(new unsigned char[Piece]);
    m_Capacity = Piece;
  }
  const unsigned got = m_File->Read(m_Buffer.get(), static_cast<unsigned>(Piece));
  if (got == 0) throw CStreamException(CStreamException::endOfFile);
  m_Position += got;
  m_Used = got;
  m_Taken = 0;
}

void CStream::PassOver(std::uint64_t count) {
  while (count > 0) {
    if (m_Taken == m_Used) Fill();
    const std::uint64_t part = std::min<std::uint64_t>(count, m_Used - m_Taken);
    m_Taken += static_cast<std::size_t>(part);
    count -= part;
  }
}

void CStream::Write(const void* bytes, std::size_t count) {
  if (count > m_Capacity - m_Used) Grow(count);
  if (count > 0) std::memcpy(m_Buffer.get() + m_Used, bytes, count);
  m_Used += count;
}

// Makes room for `count` more bytes: by writing the bytes outside blocks, else by growing.
void CStream::Grow(std::size_t count) {
  if (m_WriteBlocks.empty()) Flush();
  if (count <= m_Capacity - m_Used) return;
  const std::size_t minimum = m_WriteBlocks.empty() ? Piece : MinimumGrowth;
  const std::size_t capacity = m_Capacity + std::max({count, minimum, m_Capacity / 2});
  std::unique_ptr<unsigned char[]> larger(new unsigned char[capacity]);
  if (m_Used > 0) std::memcpy(larger.get(), m_Buffer.get(), m_Used);
  m_Buffer = std::move(larger);
  m_Capacity = capacity;
}

void CStream::Flush() {
  if (m_Position != 0) return;  // a reader's buffer
  const std::size_t ready = m_WriteBlocks.empty() ? m_Used : m_WriteBlocks.front();
  if (ready == 0) return;
  GiveToFile(m_Buffer.get(), ready);
  std::memmove(m_Buffer.get(), m_Buffer.get() + ready, m_Used - ready);
  m_Used -= ready;
  for (std::size_t& block : m_WriteBlocks) block -= ready;
}

void CStream::GiveToFile(const unsigned char* bytes, std::size_t count) {
  constexpr std::size_t maximum = std::numeric_limits<unsigned>::max();
  while (count > 0) {
    const std::size_t part = std::min(count, maximum);
    if (!m_File->Write(bytes, static_cast<unsigned>(part)))
      throw CStreamException(CStreamException::writeFailed);
    bytes += part;
    count -= part;
  }
}

std::int32_t CStream::ReadInt32() { return Taken<std::int32_t>(*this); }

std::uint32_t CStream::ReadUInt32() { return Taken<std::uint32_t>(*this); }

std::uint64_t CStream::ReadUInt64() { return Taken<std::uint64_t>(*this); }

double CStream::ReadDouble() { return Taken<double>(*this); }

void CStream::WriteInt32(std::int32_t value) { Write(&value, sizeof value); }

void CStream::WriteUInt32(std::uint32_t value) { Write(&value, sizeof value); }

void CStream::WriteUInt64(std::uint64_t value) { Write(&value, sizeof value); }

void CStream::WriteDouble(double value) { Write(&value, sizeof value); }

std::wstring CStream::ReadText() {
  std::size_t left = ReadUInt32();
  std::vector<std::uint16_t> units;
  while (left > 0) {
    const std::size_t part = std::min(left, Piece);
    units.resize(units.size() + part);
    Read(units.data() + units.size() - part, part * sizeof(std::uint16_t));
    left -= part;
  }
  return os::WideFromUtf16(units);
}

void CStream::WriteText(const std::wstring& text) {
  if (text.empty()) return WriteUInt32(0);
  const std::vector<std::uint16_t> units = os::Utf16FromWide(text);
  if (units.size() > std::numeric_limits<std::uint32_t>::max())
    throw CStreamException(CStreamException::writeFailed);
  WriteUInt32(static_cast<std::uint32_t>(units.size()));
  Write(units.data(), units.size() * sizeof(std::uint16_t));
}

void CStream::OpenWriteBlock() {
  const std::size_t place = m_Used;
  m_WriteBlocks.push_back(place);
  WriteUInt64(0);  // known when the block is closed
}

void CStream::CloseWriteBlock() {
  if (m_WriteBlocks.empty()) throw CStreamException(CStreamException::noBlock);
  const std::size_t place = m_WriteBlocks.back();
  m_WriteBlocks.pop_back();
  const std::uint64_t length = m_Used - place - sizeof(std::uint64_t);
  std::memcpy(m_Buffer.get() + place, &length, sizeof length);
  if (m_WriteBlocks.empty() && m_Used >= Piece) Flush();
}

void CStream::OpenReadBlock() {
  const std::uint64_t length = ReadUInt64();
  m_ReadBlocks.push_back({m_Position - (m_Used - m_Taken), length});
}

void CStream::CloseReadBlock() {
  if (m_ReadBlocks.empty()) throw CStreamException(CStreamException::noBlock);
  const ReadBlock block = m_ReadBlocks.back();
  m_ReadBlocks.pop_back();
  const std::uint64_t taken = m_Position - (m_Used - m_Taken) - block.begin;
  if (taken < block.length) PassOver(block.length - taken);
}

int CStream::WritePostscript(const wchar_t* text) {
  const std::string bytes = os::Utf8FromWide(text);
  Write(bytes.data(), bytes.size());
  return 1;
}
