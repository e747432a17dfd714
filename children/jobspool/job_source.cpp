#include "children/jobspool/job_source.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::jobspool {
namespace {

Failure CanNotRead(const std::string& role, const std::string& path, const Failure& failure) {
  return FailureOf("The " + role + " can't be read: " + Describe(FailureAt(path, failure)),
                   FailureCode::BadInput);
}

// The header at the beginning of a file that may be missing or anything. One that is there and
// can't be read is no missing one: without its header a picture would become planes.
Expected<JobHeader> ReadHeader(const std::string& role, const std::string& path) {
  const os::FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file.IsOpen() && (errno == ENOENT || errno == ENOTDIR)) return JobHeader();
  struct stat state {};
  if (!file.IsOpen() || fstat(file.Get(), &state) != 0) {
    return CanNotRead(role, path, Failure{"open", {}, errno});
  }
  if (!S_ISREG(state.st_mode)) return JobHeader();
  const auto head = interpreter::ReadPart(file.Get(), 0, JobHeaderLimit);
  if (!head) return CanNotRead(role, path, head.Error());
  return ReadJobHeader(*head);
}

std::string FileStem(const std::string& path) {
  const std::string name = path.substr(path.rfind('/') + 1);
  const std::size_t dot = name.rfind('.');
  return dot == name.npos || dot == 0 ? name : name.substr(0, dot);
}

}  // namespace

std::string Companion(const std::string& path, const std::string& suffix) {
  const std::size_t name = path.rfind('/') + 1;
  const std::size_t dot = path.rfind('.');
  return path.substr(0, dot == path.npos || dot <= name ? path.size() : dot) + suffix;
}

Expected<JobSource> OpenJobSource(const std::string& path) {
  JobSource source;
  auto header = ReadHeader("job", path);
  if (!header) return header.Error();
  source.header = std::move(*header);
  auto opened = interpreter::OpenJob(path, source.header.length);
  if (!opened) return opened.Error();
  source.job = std::move(*opened);
  source.title = os::Utf8FromUtf8OrAnsi(FileStem(path));
  const interpreter::JobLayout& layout = source.job.layout;
  if (layout.kind == interpreter::JobKind::Pdf) {
    if (source.header.length == 0) {
      auto beside = ReadHeader("job header", Companion(path, ".jhdr"));
      if (!beside) return beside.Error();
      source.header = std::move(*beside);
    }
    return source;
  }
  const int file = source.job.file.Get();
  const std::uint64_t headSize = std::min<std::uint64_t>(interpreter::JobHeadSize, layout.length);
  const auto head = interpreter::ReadPart(file, layout.offset, static_cast<std::size_t>(headSize));
  if (!head) return CanNotRead("job", path, head.Error());
  const std::string title = interpreter::FindTitle(*head);
  if (!title.empty()) source.title = os::Utf8FromUtf8OrAnsi(title);
  if (const auto dropped = interpreter::DropEndOfJob(source.job); !dropped)
    return CanNotRead("job", path, dropped.Error());
  return source;
}

}  // namespace rastrel::jobspool
