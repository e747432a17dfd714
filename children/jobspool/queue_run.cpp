#include "children/jobspool/queue_run.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>
#include <vector>

#include "children/jobspool/anonymous_file.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::jobspool {
namespace {

Expected<os::FileDescriptor> CopyRest(int file, std::uint64_t offset,
                                      const std::string& directory) {
  auto copy = MakeAnonymousFile(directory);
  if (!copy) return copy;
  std::vector<char> buffer(262144);
  while (true) {
    const ssize_t count = pread(file, buffer.data(), buffer.size(), static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Failure{"read", "the job", errno};
    if (count == 0) return copy;
    const auto written =
        os::WriteAll(copy->Get(), {buffer.data(), static_cast<std::size_t>(count)});
    if (!written) return FailureAt("a copy of the job", written.Error());
    offset += static_cast<std::uint64_t>(count);
  }
}

}  // namespace

Expected<interpreter::RunRequest> RequestOf(const JobSource& source, const QueueContext& context) {
  interpreter::RunRequest request;
  request.ripDirectory = context.ripDirectory;
  request.settings = context.settings;
  request.title = source.title;
  request.job.layout = source.job.layout;
  request.job.declared = source.job.declared;
  const bool shifted =
      source.job.layout.kind == interpreter::JobKind::Pdf && source.job.layout.offset > 0;
  if (shifted) {
    auto copy = CopyRest(source.job.file.Get(), source.job.layout.offset, context.ripDirectory);
    if (!copy) return copy.Error();
    request.job.file = std::move(*copy);
  } else {
    request.job.file = os::FileDescriptor(fcntl(source.job.file.Get(), F_DUPFD_CLOEXEC, 3));
    if (!request.job.file.IsOpen()) return Failure{"dup", "the job", errno};
  }
  return request;
}

Expected<PageMeasure> Measure(const JobSource& source, const QueueContext& context) {
  auto request = RequestOf(source, context);
  if (!request) return request.Error();
  const auto directory = interpreter::RunDirectory::Make(context.ripDirectory, context.guardian);
  if (!directory) return directory.Error();
  const auto measure = interpreter::MeasureFirstPage(std::move(*request), *directory,
                                                     context.reporter, context.guardian);
  if (!measure) return measure.Error();
  std::error_code error;
  std::filesystem::remove_all(directory->Path(), error);
  if (error) return Failure{"remove", directory->Path(), error.value()};
  if (!context.guardian.Release(directory->Path())) {
    return Failure{"release", directory->Path(), errno};
  }
  return *measure;
}

}  // namespace rastrel::jobspool
