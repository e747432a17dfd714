#include "rastrel/platform/os/random_access_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"

namespace rastrel::os {
namespace {

// Small reads are not worth the question whether there is something to read.
constexpr std::size_t HoleStep = std::size_t{64} << 10;

}  // namespace

Expected<RandomAccessFile> RandomAccessFile::Open(std::wstring_view path) {
  const std::string native = ToNative(path);
  // Without O_NONBLOCK the open of a pipe waits for somebody to write into it.
  auto file = TakeDescriptor(::open(native.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY),
                             "open", native);
  if (!file) return file.Error();
  struct stat state {};
  if (::fstat(file->Get(), &state) != 0) return Failure{"fstat", native, errno};
  if (!S_ISREG(state.st_mode))
    return Failure{"read", native, S_ISDIR(state.st_mode) ? EISDIR : EINVAL};
  return RandomAccessFile(std::move(*file));
}

Expected<std::size_t> RandomAccessFile::ReadAt(std::uint64_t offset, std::span<char> bytes) {
  if (bytes.size() >= HoleStep) {
    const std::size_t hole = HoleAt(offset, bytes.size());
    std::fill_n(bytes.begin(), hole, '\0');
    if (hole > 0) return hole;
  }
  if (offset != m_Offset) {
    if (::lseek(m_File.Get(), static_cast<off_t>(offset), SEEK_SET) < 0)
      return Failure{"lseek", {}, errno};
    m_Offset = offset;
  }
  auto got = ReadSome(m_File.Get(), bytes.data(), bytes.size());
  if (got) m_Offset += *got;
  return got;
}

// How many of `count` bytes from `offset` on were never written, and so are zeros. Reading them
// would have the system fill its cache with zeros, at a hundredth of the speed.
std::size_t RandomAccessFile::HoleAt(std::uint64_t offset, std::size_t count) {
  const auto find = [&] { return ::lseek(m_File.Get(), static_cast<off_t>(offset), SEEK_DATA); };
  off_t data = find();
  std::uint64_t end = offset;
  if (data < 0 && errno == ENXIO) {
    // A file that grows meanwhile has data after a size that was read before.
    end = std::max(Size(), offset);
    data = end > offset ? find() : -1;
  }
  if (data >= 0) m_Offset = end = static_cast<std::uint64_t>(data);
  return static_cast<std::size_t>(std::min<std::uint64_t>(end - offset, count));
}

std::uint64_t RandomAccessFile::Size() const {
  struct stat state {};
  if (::fstat(m_File.Get(), &state) != 0) return 0;
  return static_cast<std::uint64_t>(state.st_size);
}

}  // namespace rastrel::os
