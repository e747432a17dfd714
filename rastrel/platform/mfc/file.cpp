#include "rastrel/platform/mfc/file.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/pipe.h"

namespace os = rastrel::os;

CFile::~CFile() { CFile::Close(); }

bool CFile::Open(const wchar_t* path, unsigned flags) {
  CFile::Close();
  const bool creates = (flags & modeCreate) != 0;
  const bool writes = (flags & modeWrite) != 0;
  rastrel::Expected<os::FileDescriptor> file = creates  ? os::CreateForWriting(path)
                                               : writes ? os::OpenForWriting(path)
                                                        : os::OpenForReading(path);
  if (!file) return false;
  m_Descriptor = file->Release();
  return true;
}

unsigned CFile::Read(void* bytes, unsigned count) {
  unsigned used = 0;
  while (used < count) {
    const auto got = os::ReadSome(m_Descriptor, static_cast<char*>(bytes) + used, count - used);
    if (!got || *got == 0) break;
    used += static_cast<unsigned>(*got);
  }
  return used;
}

bool CFile::Write(const void* bytes, unsigned count) {
  const std::string_view content(static_cast<const char*>(bytes), count);
  return static_cast<bool>(os::WriteAll(m_Descriptor, content));
}

void CFile::Close() {
  os::FileDescriptor(m_Descriptor).Reset();
  m_Descriptor = -1;
}

CMemFile::~CMemFile() = default;

bool CMemFile::Open(const wchar_t*, unsigned) { return false; }

unsigned CMemFile::Read(void* bytes, unsigned count) {
  const std::size_t got = std::min<std::size_t>(count, m_Bytes.size() - m_Position);
  if (got > 0) std::memcpy(bytes, m_Bytes.data() + m_Position, got);
  m_Position += got;
  return static_cast<unsigned>(got);
}

bool CMemFile::Write(const void* bytes, unsigned count) {
  const auto* first = static_cast<const std::uint8_t*>(bytes);
  m_Bytes.insert(m_Bytes.end(), first, first + count);
  return true;
}

void CMemFile::Close() { m_Position = 0; }
