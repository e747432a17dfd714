#include "children/jobspool/job_source.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <utility>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::jobspool {
namespace {

constexpr std::string_view BoxComment = "%%BoundingBox:";
constexpr std::string_view Blanks = " \t\r\n\f\v";
constexpr std::size_t TailSize = 65536;
constexpr char EndOfJob = '\x04';
constexpr double LargestCoordinate = 1e7;  // points

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

bool IsLineStart(std::string_view text, std::size_t at) {
  return at == 0 || text[at - 1] == '\n' || text[at - 1] == '\r';
}

std::string_view LineAt(std::string_view text, std::size_t at) {
  text.remove_prefix(at);
  return text.substr(0, text.find_first_of("\r\n"));
}

std::optional<std::string_view> FirstBox(std::string_view text) {
  for (std::size_t at = text.find(BoxComment); at != text.npos;
       at = text.find(BoxComment, at + 1)) {
    if (IsLineStart(text, at)) return LineAt(text, at + BoxComment.size());
  }
  return {};
}

std::optional<std::string_view> LastBox(std::string_view text) {
  for (std::size_t at = text.rfind(BoxComment); at != text.npos;
       at = at == 0 ? text.npos : text.rfind(BoxComment, at - 1)) {
    if (IsLineStart(text, at)) return LineAt(text, at + BoxComment.size());
  }
  return {};
}

std::optional<PointBox> ReadBox(std::string_view text) {
  std::array<double, 4> sides{};
  for (double& side : sides) {
    text.remove_prefix(std::min(text.find_first_not_of(Blanks), text.size()));
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), side);
    if (error != std::errc() || !std::isfinite(side) || std::abs(side) > LargestCoordinate) {
      return {};
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  }
  const PointBox box{sides[0], sides[1], sides[2], sides[3]};
  if (box.Width() <= 0 || box.Height() <= 0) return {};
  return box;
}

// After an end-of-job byte at the end, a page that the job left open could not be put out.
void DropEndOfJob(interpreter::JobFile& job, std::string_view tail) {
  const std::size_t last = tail.find_last_not_of(std::string(Blanks) + EndOfJob);
  const std::size_t kept = last == tail.npos ? 0 : last + 1;
  const std::string_view dropped = tail.substr(kept);
  const std::size_t first = dropped.find(EndOfJob);
  if (first != dropped.npos) job.layout.length -= dropped.size() - first;
}

std::string FileStem(const std::string& path) {
  const std::string name = path.substr(path.rfind('/') + 1);
  const std::size_t dot = name.rfind('.');
  return dot == name.npos || dot == 0 ? name : name.substr(0, dot);
}

}  // namespace

std::optional<PointBox> FindDeclaredBox(std::string_view head, std::string_view tail) {
  auto line = FirstBox(head);
  if (!line || line->find("(atend)") != line->npos) line = LastBox(tail);
  return line ? ReadBox(*line) : std::nullopt;
}

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
  interpreter::JobLayout& layout = source.job.layout;
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
  const std::uint64_t tailSize = std::min<std::uint64_t>(TailSize, layout.length);
  const auto head = interpreter::ReadPart(file, layout.offset, static_cast<std::size_t>(headSize));
  if (!head) return CanNotRead("job", path, head.Error());
  const auto tail = interpreter::ReadPart(file, layout.offset + layout.length - tailSize,
                                          static_cast<std::size_t>(tailSize));
  if (!tail) return CanNotRead("job", path, tail.Error());
  source.declared = FindDeclaredBox(*head, *tail);
  const std::string title = interpreter::FindTitle(*head);
  if (!title.empty()) source.title = os::Utf8FromUtf8OrAnsi(title);
  DropEndOfJob(source.job, *tail);
  return source;
}

}  // namespace rastrel::jobspool
