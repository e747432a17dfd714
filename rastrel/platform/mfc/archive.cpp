#include "rastrel/platform/mfc/archive.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>
#include <vector>

#include "rastrel/platform/os/text.h"

namespace os = rastrel::os;

namespace {

// Written bytes go to the file in pieces of this size.
constexpr std::size_t PendingLimit = 65536;
// A text is read in pieces, so that a length that the stream merely claims costs no memory.
constexpr std::size_t ReadPiece = 65536;

// The marks of a text's length: a byte that says "longer", a 16-bit value that says "longer still",
// and the one that says "two bytes a character".
constexpr std::uint8_t LongMark = 0xFF;
constexpr std::uint16_t LongerMark = 0xFFFF;
constexpr std::uint16_t WideMark = 0xFFFE;

// Reads `count` bytes of text. Raises endOfFile if there are fewer.
std::string ReadBytes(CArchive& archive, std::uint64_t count) {
  std::string bytes;
  while (bytes.size() < count) {
    const std::size_t used = bytes.size();
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count - used, ReadPiece));
    bytes.resize(used + wanted);
    if (archive.Read(bytes.data() + used, static_cast<unsigned>(wanted)) < wanted)
      AfxThrowArchiveException(CArchiveException::endOfFile);
  }
  return bytes;
}

void WriteBytes(CArchive& archive, std::string_view bytes) {
  constexpr std::size_t most = std::numeric_limits<unsigned>::max();
  while (!bytes.empty()) {
    const std::size_t piece = std::min(bytes.size(), most);
    archive.Write(bytes.data(), static_cast<unsigned>(piece));
    bytes.remove_prefix(piece);
  }
}

std::uint32_t LengthOf(std::size_t count) {
  if (count > std::numeric_limits<std::uint32_t>::max())
    AfxThrowArchiveException(CArchiveException::genericException);
  return static_cast<std::uint32_t>(count);
}

std::wstring WideFromBytes(const std::string& bytes) {
  std::vector<std::uint16_t> units(bytes.size() / 2);
  for (std::size_t index = 0; index < units.size(); ++index) {
    const auto low = static_cast<unsigned char>(bytes[2 * index]);
    const auto high = static_cast<unsigned char>(bytes[2 * index + 1]);
    units[index] = static_cast<std::uint16_t>(low | high << 8);
  }
  return os::WideFromUtf16(units);
}

std::string BytesFromUnits(const std::vector<std::uint16_t>& units) {
  std::string bytes;
  bytes.reserve(units.size() * 2);
  for (const std::uint16_t unit : units) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

}  // namespace

CArchiveException::~CArchiveException() = default;

const char* CArchiveException::what() const noexcept {
  switch (m_cause) {
    case none: return "no archive error";
    case readOnly: return "the archive is open for reading and was written to";
    case endOfFile: return "the archive ends too early";
    case writeOnly: return "the archive is open for writing and was read from";
    case badIndex: return "the archive holds a bad index";
    case badClass: return "the archive holds an object of another class";
    case badSchema: return "the archive holds an object of another version";
    default: return "the archive failed";
  }
}

void AfxThrowArchiveException(int cause) {
  throw CArchiveException(static_cast<CArchiveException::Cause>(cause));
}

CArchive::CArchive(CFile* file, unsigned mode)
    : m_File(file), m_Mode((mode & load) != 0 ? load : store) {}

CArchive::CArchive(CFile* file, unsigned mode, int bufferSize) : CArchive(file, mode) {
  if (IsLoading() && bufferSize > 0) m_ReadBuffer.resize(static_cast<std::size_t>(bufferSize));
}

CArchive::~CArchive() {
  try {
    Close();
  } catch (...) {  // a caller that wants the failure calls Close itself
  }
}

unsigned CArchive::TakeBuffered(char* bytes, unsigned count) {
  const std::size_t taken = std::min<std::size_t>(count, m_Buffered - m_Taken);
  if (taken > 0) std::memcpy(bytes, m_ReadBuffer.data() + m_Taken, taken);
  m_Taken += taken;
  return static_cast<unsigned>(taken);
}

unsigned CArchive::Read(void* bytes, unsigned count) {
  if (!IsLoading()) AfxThrowArchiveException(CArchiveException::writeOnly);
  char* const target = static_cast<char*>(bytes);
  unsigned used = TakeBuffered(target, count);
  while (used < count) {
    // Whatever would fill the buffer goes past it.
    if (count - used >= m_ReadBuffer.size()) {
      const unsigned got = m_File->Read(target + used, count - used);
      if (got == 0) break;
      used += got;
    } else {
      m_Taken = 0;
      m_Buffered = m_File->Read(m_ReadBuffer.data(), static_cast<unsigned>(m_ReadBuffer.size()));
      if (m_Buffered == 0) break;
      used += TakeBuffered(target + used, count - used);
    }
  }
  m_BytesRead += used;
  return used;
}

void CArchive::Write(const void* bytes, unsigned count) {
  if (!IsStoring()) AfxThrowArchiveException(CArchiveException::readOnly);
  if (m_Pending.size() + count > PendingLimit) Close();
  if (count <= PendingLimit) {
    m_Pending.append(static_cast<const char*>(bytes), count);
  } else if (!m_File->Write(bytes, count)) {
    AfxThrowArchiveException(CArchiveException::genericException);
  }
}

void CArchive::Close() {
  if (m_Pending.empty()) return;
  // Emptied first: bytes that the file refused are not written a second time.
  const std::string pending = std::move(m_Pending);
  m_Pending.clear();
  if (!m_File->Write(pending.data(), static_cast<unsigned>(pending.size())))
    AfxThrowArchiveException(CArchiveException::genericException);
}

void CArchive::ReadExactly(void* bytes, std::size_t count) {
  if (Read(bytes, static_cast<unsigned>(count)) < count)
    AfxThrowArchiveException(CArchiveException::endOfFile);
}

template <typename Value>
void CArchive::Put(Value value) {
  std::array<char, sizeof(Value)> bytes{};
  for (std::size_t index = 0; index < bytes.size(); ++index)
    bytes[index] = static_cast<char>(value >> (8 * index) & 0xFF);
  Write(bytes.data(), static_cast<unsigned>(bytes.size()));
}

template <typename Value>
void CArchive::Get(Value& value) {
  std::array<unsigned char, sizeof(Value)> bytes{};
  ReadExactly(bytes.data(), bytes.size());
  Value result = 0;
  for (std::size_t index = 0; index < bytes.size(); ++index)
    result = static_cast<Value>(result | static_cast<Value>(bytes[index]) << (8 * index));
  value = result;
}

CArchive& CArchive::operator<<(std::uint8_t value) {
  Put(value);
  return *this;
}
CArchive& CArchive::operator<<(std::uint16_t value) {
  Put(value);
  return *this;
}
CArchive& CArchive::operator<<(std::int32_t value) {
  Put(static_cast<std::uint32_t>(value));
  return *this;
}
CArchive& CArchive::operator<<(std::uint32_t value) {
  Put(value);
  return *this;
}
CArchive& CArchive::operator<<(std::int64_t value) {
  Put(static_cast<std::uint64_t>(value));
  return *this;
}
CArchive& CArchive::operator<<(double value) {
  Put(std::bit_cast<std::uint64_t>(value));
  return *this;
}
CArchive& CArchive::operator<<(bool value) {
  Put(static_cast<std::uint8_t>(value ? 1 : 0));
  return *this;
}

CArchive& CArchive::operator>>(std::uint8_t& value) {
  Get(value);
  return *this;
}
CArchive& CArchive::operator>>(std::uint16_t& value) {
  Get(value);
  return *this;
}
CArchive& CArchive::operator>>(std::int32_t& value) {
  std::uint32_t bits = 0;
  Get(bits);
  value = std::bit_cast<std::int32_t>(bits);
  return *this;
}
CArchive& CArchive::operator>>(std::uint32_t& value) {
  Get(value);
  return *this;
}
CArchive& CArchive::operator>>(std::int64_t& value) {
  std::uint64_t bits = 0;
  Get(bits);
  value = std::bit_cast<std::int64_t>(bits);
  return *this;
}
CArchive& CArchive::operator>>(double& value) {
  std::uint64_t bits = 0;
  Get(bits);
  value = std::bit_cast<double>(bits);
  return *this;
}
CArchive& CArchive::operator>>(bool& value) {
  std::uint8_t byte = 0;
  Get(byte);
  value = byte != 0;
  return *this;
}

CArchive& CArchive::operator<<(const CString& text) {
  const std::vector<std::uint16_t> units = os::Utf16FromWide(text);
  AfxWriteStringLength(*this, LengthOf(units.size()), true);
  WriteBytes(*this, BytesFromUnits(units));
  return *this;
}

CArchive& CArchive::operator>>(CString& text) {
  int characterSize = 0;
  const std::uint64_t length = AfxReadStringLength(*this, characterSize);
  const std::string bytes = ReadBytes(*this, length * static_cast<unsigned>(characterSize));
  text = characterSize == 2 ? WideFromBytes(bytes) : os::WideFromAnsi(bytes);
  return *this;
}

void AfxWriteStringLength(CArchive& archive, std::uint32_t length, bool unicode) {
  if (unicode) archive << LongMark << WideMark;
  if (length < LongMark) {
    archive << static_cast<std::uint8_t>(length);
  } else if (length < WideMark) {
    archive << LongMark << static_cast<std::uint16_t>(length);
  } else {
    archive << LongMark << LongerMark << length;
  }
}

std::uint32_t AfxReadStringLength(CArchive& archive, int& characterSize) {
  characterSize = 1;
  std::uint8_t shortLength = 0;
  archive >> shortLength;
  if (shortLength != LongMark) return shortLength;
  std::uint16_t length = 0;
  archive >> length;
  if (length == WideMark) {
    characterSize = 2;
    archive >> shortLength;
    if (shortLength != LongMark) return shortLength;
    archive >> length;
  }
  if (length != LongerMark) return length;
  std::uint32_t longLength = 0;
  archive >> longLength;
  return longLength;
}

namespace rastrel::mfc {

void WriteNarrowText(CArchive& archive, const std::wstring& text) {
  const std::string bytes = os::Utf8FromWide(text);
  archive << LengthOf(bytes.size());
  WriteBytes(archive, bytes);
}

void ReadNarrowText(CArchive& archive, std::wstring& text) {
  std::uint32_t length = 0;
  archive >> length;
  text = os::WideFromUtf8(ReadBytes(archive, length));
}

}  // namespace rastrel::mfc
