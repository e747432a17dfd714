#pragma once

#include <cstdint>
#include <string>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::server {

/// A file that is read by offset, in pieces. Its failures for what is past the end say that the
/// file is cut off.
class ByteFile {
 public:
  [[nodiscard]] static Expected<ByteFile> Open(const std::string& path);

  [[nodiscard]] std::uint64_t Size() const { return m_Size; }
  /// So many bytes from an offset, all of them.
  [[nodiscard]] Expected<std::string> Read(std::uint64_t offset, std::size_t count) const;

 private:
  os::FileDescriptor m_File;
  std::uint64_t m_Size = 0;
};

/// A number of the bytes, the highest first. At most four bytes from `at`, which must be there.
[[nodiscard]] std::uint32_t BigEndian(const std::string& bytes, std::size_t at, unsigned count);

}  // namespace rastrel::server
