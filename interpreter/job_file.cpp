#include "interpreter/job_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

#include "rastrel/platform/os/expected.h"

namespace rastrel::interpreter {
namespace {

constexpr std::uint64_t TailSize = 4096;

struct OpenFile {
  os::FileDescriptor file;
  std::uint64_t size = 0;
};

std::string ReadAt(int file, std::uint64_t offset, std::size_t count) {
  std::string text(count, '\0');
  std::size_t filled = 0;
  while (filled < count) {
    const ssize_t got =
        pread(file, text.data() + filled, count - filled, static_cast<off_t>(offset + filled));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    filled += static_cast<std::size_t>(got);
  }
  text.resize(filled);
  return text;
}

RunFailure Unreadable(const char* what, const std::string& path, int error) {
  return {ExitStatus::BadInput,
          std::string("The ") + what + " can't be read: " + Describe({"open", path, error}) + "."};
}

// Opened without waiting, since the name could be a pipe's.
std::variant<OpenFile, RunFailure> Open(const char* what, const std::string& path) {
  OpenFile opened{os::FileDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)), 0};
  struct stat state {};
  if (!opened.file.IsOpen() || fstat(opened.file.Get(), &state) != 0) {
    return Unreadable(what, path, errno);
  }
  if (!S_ISREG(state.st_mode)) {
    return RunFailure{ExitStatus::BadInput,
                      std::string("The ") + what + " is not a file: " + path + "."};
  }
  opened.size = static_cast<std::uint64_t>(state.st_size);
  return opened;
}

// Whether a line ends in a color space's name and one of the operators that take a cut color.
bool SetsCutColor(std::string_view prefix) {
  for (const std::string_view space : {"/DeviceRGB", "/DeviceCMYK", "/DeviceGray", "/Separation"}) {
    for (const std::string_view name : {" $setcutter", " $stripcontour"}) {
      if (prefix.find(std::string(space).append(name)) != prefix.npos) return true;
    }
  }
  return false;
}

}  // namespace

std::variant<JobFile, RunFailure> OpenJob(const std::string& path, std::uint64_t start) {
  auto opened = Open("job", path);
  if (auto* const failure = std::get_if<RunFailure>(&opened)) return std::move(*failure);
  auto& [file, size] = std::get<OpenFile>(opened);
  start = std::min(start, size);
  JobLayout layout = FindJobLayout(ReadAt(file.Get(), start, JobHeadSize), size - start);
  layout.offset += start;
  if (layout.section) {
    const auto length =
        static_cast<std::size_t>(std::min<std::uint64_t>(JobHeadSize, layout.length));
    const std::uint64_t section = layout.offset;
    layout = FindJobLayout(ReadAt(file.Get(), section, length), layout.length);
    layout.offset += section;
  }
  if (layout.kind == JobKind::Unknown) {
    return RunFailure{ExitStatus::BadInput, "The job is neither PostScript nor PDF: " + path + "."};
  }
  if (layout.wrapped) {
    const std::uint64_t tail = std::min(TailSize, layout.length);
    layout.length -= WrapperLength(
        ReadAt(file.Get(), layout.offset + layout.length - tail, static_cast<std::size_t>(tail)));
  }
  return JobFile{std::move(file), layout};
}

std::variant<PrefixFile, RunFailure> OpenPrefix(const std::string& path) {
  auto opened = Open("prefix", path);
  if (auto* const failure = std::get_if<RunFailure>(&opened)) return std::move(*failure);
  os::FileDescriptor& file = std::get<OpenFile>(opened).file;
  const std::string head = ReadAt(file.Get(), 0, JobHeadSize);
  return PrefixFile{std::move(file), FindTitle(head), SetsCutColor(head)};
}

}  // namespace rastrel::interpreter
