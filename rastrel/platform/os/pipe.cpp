#include "rastrel/platform/os/pipe.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <string>
#include <utility>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/quiet_write.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/wait.h"

namespace rastrel::os {
namespace {

// The system's default limit for a process without privileges.
constexpr int UsualPipeLimit = 1 << 20;

struct Ends {
  FileDescriptor read;
  FileDescriptor write;
};

Expected<Ends> OpenPipe() {
  int descriptors[2];
  if (Calls().pipe2(descriptors, O_CLOEXEC) != 0) return Failure{"pipe", {}, errno};
  FileDescriptor second(descriptors[1]);
  auto read = TakeDescriptor(descriptors[0], "pipe", {});
  if (!read) return read.Error();
  auto write = TakeDescriptor(second.Release(), "pipe", {});
  if (!write) return write.Error();
  return Ends{std::move(*read), std::move(*write)};
}

// Returns the pipe's new size, or -1 if it is unknown.
int GrowPipe(const Ends& ends, std::size_t size) {
  const int wanted = static_cast<int>(std::min<std::size_t>(size, INT_MAX));
  const int granted = Calls().set_pipe_size(ends.write.Get(), wanted);
  if (granted >= 0 || wanted <= UsualPipeLimit) return granted;
  return Calls().set_pipe_size(ends.write.Get(), UsualPipeLimit);
}

constexpr int SealsOfInput = F_SEAL_WRITE | F_SEAL_GROW | F_SEAL_SHRINK | F_SEAL_SEAL;

bool IsFilledMemoryFile(int descriptor) {
  // Only memory files have seals; a pipe fails the question.
  const int saved = errno;
  const int seals = ::fcntl(descriptor, F_GET_SEALS);
  errno = saved;
  return seals >= 0 && (seals & F_SEAL_WRITE) != 0;
}

Expected<Ends> OpenFilledMemoryFile(std::string_view content) {
  auto file = TakeDescriptor(Calls().memory_file("rastrel-input", MFD_CLOEXEC | MFD_ALLOW_SEALING),
                             "memfd_create", {});
  if (!file) return file.Error();
  if (const auto written = WriteAll(file->Get(), content); !written) return written.Error();
  if (::lseek(file->Get(), 0, SEEK_SET) != 0) return Failure{"lseek", {}, errno};
  if (::fcntl(file->Get(), F_ADD_SEALS, SealsOfInput) != 0) return Failure{"fcntl", {}, errno};
  FileDescriptor second(Calls().duplicate(file->Get(), STDERR_FILENO + 1));
  if (!second.IsOpen()) return Failure{"fcntl", {}, errno};
  return Ends{std::move(*file), std::move(second)};
}

void HandOver(Ends& ends, HANDLE& readEnd, HANDLE& writeEnd) {
  readEnd = ends.read.Release();
  writeEnd = ends.write.Release();
}

}  // namespace

Expected<void> CreatePipe(HANDLE& readEnd, HANDLE& writeEnd, std::size_t size) {
  auto ends = OpenPipe();
  if (!ends) return ends.Error();
  if (size > 0) GrowPipe(*ends, size);
  HandOver(*ends, readEnd, writeEnd);
  return {};
}

Expected<Pipe> MakePipe(std::size_t size) {
  HANDLE reading = INVALID_HANDLE_VALUE;
  HANDLE writing = INVALID_HANDLE_VALUE;
  if (auto made = CreatePipe(reading, writing, size); !made) return made.Error();
  return Pipe{FileDescriptor(reading), FileDescriptor(writing)};
}

Expected<void> CreateInput(HANDLE& readEnd, HANDLE& writeEnd, std::string_view content) {
  auto ends = OpenPipe();
  if (!ends) return ends.Error();
  const int granted = GrowPipe(*ends, std::max<std::size_t>(content.size(), 1));
  if (granted < 0 || static_cast<std::size_t>(granted) < content.size()) {
    // The pipe is closed first: there may be no descriptors to spare.
    ends = Ends{};
    ends = OpenFilledMemoryFile(content);
    if (!ends) return ends.Error();
  }
  HandOver(*ends, readEnd, writeEnd);
  return {};
}

Expected<void> WriteInput(HANDLE writeEnd, std::string_view content) {
  if (IsFilledMemoryFile(writeEnd)) return {};
  if (content.empty()) return {};
  const ssize_t written = WriteWithoutSignal(writeEnd, content.data(), content.size());
  if (written < 0) return Failure{"write", {}, errno};
  if (static_cast<std::size_t>(written) < content.size()) return Failure{"write", {}, EIO};
  return {};
}

Expected<HANDLE> MakeNotInheritable(HANDLE handle) {
  const FileDescriptor old(handle);
  const HANDLE moved = Calls().duplicate(handle, STDERR_FILENO + 1);
  if (moved < 0) return Failure{"fcntl", {}, errno};
  return moved;
}

Expected<FileDescriptor> TakeDescriptor(int descriptor, const char* call, std::string_view where) {
  if (descriptor < 0) return Failure{call, std::string(where), errno};
  if (descriptor > STDERR_FILENO) return FileDescriptor(descriptor);
  const auto moved = MakeNotInheritable(descriptor);
  if (!moved) return Failure{call, std::string(where), moved.Error().error};
  return FileDescriptor(*moved);
}

Expected<std::size_t> ReadSome(HANDLE handle, char* bytes, std::size_t count) {
  for (;;) {
    const ssize_t got = Calls().read(handle, bytes, count);
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno != EINTR) return Failure{"read", {}, errno};
  }
}

Expected<std::size_t> ReadSomeUnless(std::span<const HANDLE> stops, HANDLE handle, char* bytes,
                                     std::size_t count) {
  std::vector<HANDLE> handles(stops.begin(), stops.end());
  handles.push_back(handle);
  const std::uint32_t ready = WaitReadable(handles, Deadline::Never());
  if (ready == WaitFailed) return Failure{"poll", {}, errno};
  if (ready != WaitSignaledBase + stops.size()) return std::size_t{0};
  return ReadSome(handle, bytes, count);
}

HANDLE StandardHandle(StandardStream stream) { return static_cast<HANDLE>(stream); }

}  // namespace rastrel::os
