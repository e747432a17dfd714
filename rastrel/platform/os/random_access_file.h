#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/growing_file.h"

namespace rastrel::os {

/// A regular file that is read at any offset. Move only; not to be used by two threads at once.
/// The file may grow, shrink or lose its name meanwhile: a read sees the file of that moment.
class RandomAccessFile {
 public:
  /// Opens by library path (see path.h). Links are followed. Anything but a regular file is a
  /// failure (EINVAL; EISDIR for a directory) and is never waited for: a pipe without a writer, a
  /// device.
  [[nodiscard]] static Expected<RandomAccessFile> Open(std::wstring_view path);

  /// Reads from `offset` on. Returns how many bytes, which may be fewer than asked for before the
  /// end or where a part that was never written begins; 0 at and after the end. Goes on
  /// after an interruption. The Failure has no `where`.
  [[nodiscard]] Expected<std::size_t> ReadAt(std::uint64_t offset, std::span<char> bytes);

  /// At the file's end: waits if the file is announced as one that this process still writes (see
  /// growing_file.h).
  [[nodiscard]] Growth AwaitGrowth(std::uint64_t size) const {
    return WaitForGrowth(m_File.Get(), size);
  }

  /// The current size in bytes; 0 if it is not to be had.
  [[nodiscard]] std::uint64_t Size() const;

 private:
  std::size_t HoleAt(std::uint64_t offset, std::size_t count);
  explicit RandomAccessFile(FileDescriptor file) : m_File(std::move(file)) {}

  FileDescriptor m_File;
  std::uint64_t m_Offset = 0;  // where the next read of the descriptor begins
};

}  // namespace rastrel::os
