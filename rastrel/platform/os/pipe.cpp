#include "rastrel/platform/os/pipe.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
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

bool LiftAboveStandard(FileDescriptor& descriptor) {
  if (descriptor.Get() > STDERR_FILENO) return true;
  descriptor = FileDescriptor(MakeNotInheritable(descriptor.Release()));
  return descriptor.IsOpen();
}

bool OpenPipe(Ends& ends) {
  int descriptors[2];
  if (Calls().pipe2(descriptors, O_CLOEXEC) != 0) return false;
  ends.read.Reset(descriptors[0]);
  ends.write.Reset(descriptors[1]);
  return LiftAboveStandard(ends.read) && LiftAboveStandard(ends.write);
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

bool OpenFilledMemoryFile(Ends& ends, std::string_view content) {
  ends.read.Reset(Calls().memory_file("rastrel-input", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!ends.read.IsOpen() || !LiftAboveStandard(ends.read)) return false;
  if (!WriteAll(ends.read.Get(), content)) return false;
  if (::lseek(ends.read.Get(), 0, SEEK_SET) != 0) return false;
  if (::fcntl(ends.read.Get(), F_ADD_SEALS, SealsOfInput) != 0) return false;
  ends.write.Reset(Calls().duplicate(ends.read.Get(), STDERR_FILENO + 1));
  return ends.write.IsOpen();
}

}  // namespace

bool CreatePipe(HANDLE& readEnd, HANDLE& writeEnd, std::size_t size) {
  Ends ends;
  if (!OpenPipe(ends)) return false;
  if (size > 0) GrowPipe(ends, size);
  readEnd = ends.read.Release();
  writeEnd = ends.write.Release();
  return true;
}

bool CreateInput(HANDLE& readEnd, HANDLE& writeEnd, std::string_view content) {
  Ends ends;
  if (!OpenPipe(ends)) return false;
  const int granted = GrowPipe(ends, std::max<std::size_t>(content.size(), 1));
  if (granted < 0 || static_cast<std::size_t>(granted) < content.size()) {
    ends = Ends{};
    if (!OpenFilledMemoryFile(ends, content)) return false;
  }
  readEnd = ends.read.Release();
  writeEnd = ends.write.Release();
  return true;
}

bool WriteInput(HANDLE writeEnd, std::string_view content) {
  if (IsFilledMemoryFile(writeEnd)) return true;
  if (content.empty()) return true;
  const ssize_t written = WriteWithoutSignal(writeEnd, content.data(), content.size());
  if (written < 0) return false;
  if (static_cast<std::size_t>(written) == content.size()) return true;
  errno = EIO;
  return false;
}

HANDLE MakeNotInheritable(HANDLE handle) {
  const FileDescriptor old(handle);
  return Calls().duplicate(handle, STDERR_FILENO + 1);
}

long ReadSome(HANDLE handle, char* bytes, std::size_t count) {
  ssize_t got;
  do {
    got = Calls().read(handle, bytes, count);
  } while (got < 0 && errno == EINTR);
  return got;
}

long ReadSomeUnless(std::span<const HANDLE> stops, HANDLE handle, char* bytes, std::size_t count) {
  std::vector<HANDLE> handles(stops.begin(), stops.end());
  handles.push_back(handle);
  const std::uint32_t ready = WaitReadable(handles, Deadline::Never());
  if (ready == WaitFailed) return -1;
  return ready == WaitSignaledBase + stops.size() ? ReadSome(handle, bytes, count) : 0;
}

HANDLE StandardHandle(StandardStream stream) { return static_cast<HANDLE>(stream); }

}  // namespace rastrel::os
