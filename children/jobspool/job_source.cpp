#include "children/jobspool/job_source.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::jobspool {
namespace {

// The beginning of a file that may be missing or anything.
std::string ReadHead(const std::string& path) {
  const os::FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat state {};
  if (!file.IsOpen() || fstat(file.Get(), &state) != 0 || !S_ISREG(state.st_mode)) return {};
  return interpreter::ReadPart(file.Get(), 0, JobHeaderLimit);
}

std::string AsUtf8(const std::string& text) {
  if (os::Utf8FromWide(os::WideFromUtf8(text)) == text) return text;
  return os::Utf8FromWide(os::WideFromAnsi(text));
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
  source.header = ReadJobHeader(ReadHead(path));
  auto opened = interpreter::OpenJob(path, source.header.length);
  if (!opened) return opened.Error();
  source.job = std::move(*opened);
  source.title = AsUtf8(FileStem(path));
  const interpreter::JobLayout& layout = source.job.layout;
  if (layout.kind == interpreter::JobKind::Pdf) {
    if (source.header.length == 0) {
      source.header = ReadJobHeader(ReadHead(Companion(path, ".jhdr")));
    }
    return source;
  }
  const int file = source.job.file.Get();
  const std::string head = interpreter::ReadPart(
      file, layout.offset,
      static_cast<std::size_t>(std::min<std::uint64_t>(interpreter::JobHeadSize, layout.length)));
  const std::string title = interpreter::FindTitle(head);
  if (!title.empty()) source.title = AsUtf8(title);
  interpreter::DropEndOfJob(source.job);
  return source;
}

}  // namespace rastrel::jobspool
