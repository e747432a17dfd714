#include "server/printer/byte_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "rastrel/platform/os/file_content.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::server {

Expected<ByteFile> ByteFile::Open(const std::string& path) {
  auto file = os::OpenRegularFile(os::FromNative(path));
  if (!file) return FailureAt(path, file.Error());
  struct stat state {};
  if (::fstat(file->Get(), &state) != 0) return Failure{"stat", path, errno};
  ByteFile opened;
  opened.m_File = *std::move(file);
  opened.m_Size = static_cast<std::uint64_t>(state.st_size);
  return opened;
}

Expected<std::string> ByteFile::Read(std::uint64_t offset, std::size_t count) const {
  if (offset > m_Size || count > m_Size - offset)
    return FailureOf("the file is cut off", FailureCode::BadInput);
  std::string bytes(count, '\0');
  std::size_t done = 0;
  while (done < count) {
    const ssize_t got =
        ::pread(m_File.Get(), bytes.data() + done, count - done, static_cast<off_t>(offset + done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return Failure{"read", {}, errno};
    if (got == 0) return FailureOf("the file is cut off", FailureCode::BadInput);
    done += static_cast<std::size_t>(got);
  }
  return bytes;
}

std::uint32_t BigEndian(const std::string& bytes, std::size_t at, unsigned count) {
  std::uint32_t value = 0;
  for (unsigned index = 0; index < count; ++index)
    value = value << 8 | static_cast<unsigned char>(bytes[at + index]);
  return value;
}

}  // namespace rastrel::server
