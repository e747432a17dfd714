#include "interpreter/job_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

#include "interpreter/declared_box.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::interpreter {
namespace {

constexpr std::uint64_t TailSize = 4096;
const std::string Whitespace = " \t\r\n\f\v";
constexpr char EndOfJob = '\x04';

struct OpenFile {
  os::FileDescriptor file;
  std::uint64_t size = 0;
};

Failure Refused(const std::string& sentence) { return FailureOf(sentence, FailureCode::BadInput); }

Failure CanNotRead(const std::string& role, const std::string& path, const Failure& failure) {
  return Refused("The " + role + " can't be read: " + Describe(FailureAt(path, failure)));
}

// Opened without waiting, since the name could be a pipe's. `role` is "job" or "prefix".
Expected<OpenFile> Open(const std::string& role, const std::string& path) {
  OpenFile opened{os::FileDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)), 0};
  struct stat state {};
  if (!opened.file.IsOpen() || fstat(opened.file.Get(), &state) != 0) {
    return CanNotRead(role, path, Failure{"open", {}, errno});
  }
  if (!S_ISREG(state.st_mode)) return Refused("The " + role + " is not a file: " + path);
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

Expected<std::string> ReadPart(int file, std::uint64_t offset, std::size_t count) {
  std::string text(count, '\0');
  std::size_t filled = 0;
  while (filled < count) {
    const ssize_t got =
        pread(file, text.data() + filled, count - filled, static_cast<off_t>(offset + filled));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return Failure{"read", {}, errno};
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
  }
  text.resize(filled);
  return text;
}

namespace {

// Its last bytes, so many or all.
Expected<std::string> TailOf(const JobFile& job, std::uint64_t count) {
  count = std::min(count, job.layout.length);
  return ReadPart(job.file.Get(), job.layout.offset + job.layout.length - count,
                  static_cast<std::size_t>(count));
}

}  // namespace

Expected<JobFile> OpenJob(const std::string& path, std::uint64_t start) {
  auto opened = Open("job", path);
  if (!opened) return opened.Error();
  auto& [file, size] = *opened;
  start = std::min(start, size);
  const auto head = ReadPart(file.Get(), start, JobHeadSize);
  if (!head) return CanNotRead("job", path, head.Error());
  JobLayout layout = FindJobLayout(*head, size - start);
  layout.offset += start;
  if (layout.section) {
    const auto length =
        static_cast<std::size_t>(std::min<std::uint64_t>(JobHeadSize, layout.length));
    const std::uint64_t section = layout.offset;
    const auto sectionHead = ReadPart(file.Get(), section, length);
    if (!sectionHead) return CanNotRead("job", path, sectionHead.Error());
    layout = FindJobLayout(*sectionHead, layout.length);
    layout.offset += section;
  }
  if (layout.kind == JobKind::Unknown) {
    return Refused("The job is neither PostScript nor PDF: " + path);
  }
  if (layout.wrapped) {
    const std::uint64_t length = std::min(TailSize, layout.length);
    const auto tail = ReadPart(file.Get(), layout.offset + layout.length - length,
                               static_cast<std::size_t>(length));
    if (!tail) return CanNotRead("job", path, tail.Error());
    layout.length -= WrapperLength(*tail);
  }
  JobFile job{std::move(file), layout};
  if (layout.kind != JobKind::Pdf) {
    const auto pages =
        ReadPart(job.file.Get(), layout.offset,
                 static_cast<std::size_t>(std::min<std::uint64_t>(JobHeadSize, layout.length)));
    if (!pages) return CanNotRead("job", path, pages.Error());
    const auto tail = TailOf(job, JobHeadSize);
    if (!tail) return CanNotRead("job", path, tail.Error());
    job.declared = FindDeclaredBox(*pages, *tail);
  }
  return job;
}

Expected<void> DropEndOfJob(JobFile& job) {
  if (job.layout.kind == JobKind::Pdf) return {};
  const auto read = TailOf(job, JobHeadSize);
  if (!read) return read.Error();
  const std::string& tail = *read;
  const std::size_t last = tail.find_last_not_of(Whitespace + EndOfJob);
  const std::size_t kept = last == tail.npos ? 0 : last + 1;
  const std::size_t first = tail.find(EndOfJob, kept);
  if (first != tail.npos) job.layout.length -= tail.size() - first;
  return {};
}

Expected<PrefixFile> OpenPrefix(const std::string& path) {
  auto opened = Open("prefix", path);
  if (!opened) return opened.Error();
  const auto head = ReadPart(opened->file.Get(), 0, JobHeadSize);
  if (!head) return CanNotRead("prefix", path, head.Error());
  return PrefixFile{std::move(opened->file), FindTitle(*head), SetsCutColor(*head)};
}

}  // namespace rastrel::interpreter
