#include "children/jobspool/queue_run.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <vector>

#include "children/jobspool/anonymous_file.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::jobspool {
namespace {

using interpreter::ExitStatus;
using interpreter::RunFailure;

RunFailure Failed(const Failure& failure) { return {ExitStatus::Failed, Describe(failure) + "."}; }

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
    if (!os::WriteAll(copy->Get(), {buffer.data(), static_cast<std::size_t>(count)})) {
      return Failure{"write", "a copy of the job", errno};
    }
    offset += static_cast<std::uint64_t>(count);
  }
}

}  // namespace

std::variant<interpreter::RipRun::Parts, RunFailure> PartsOf(const JobSource& source,
                                                             const QueueContext& context) {
  interpreter::RipRun::Parts parts;
  parts.ripDirectory = context.ripDirectory;
  parts.settings = context.settings;
  parts.picture = true;
  parts.description.job = source.title;
  parts.job.layout = source.job.layout;
  const bool shifted =
      source.job.layout.kind == interpreter::JobKind::Pdf && source.job.layout.offset > 0;
  if (shifted) {
    auto copy = CopyRest(source.job.file.Get(), source.job.layout.offset, context.ripDirectory);
    if (!copy) return Failed(copy.Error());
    parts.job.file = std::move(*copy);
  } else {
    parts.job.file = os::FileDescriptor(fcntl(source.job.file.Get(), F_DUPFD_CLOEXEC, 3));
    if (!parts.job.file.IsOpen()) return Failed({"dup", "the job", errno});
  }
  return parts;
}

std::variant<PageMeasure, RunFailure> Measure(const JobSource& source,
                                              const QueueContext& context) {
  auto parts = PartsOf(source, context);
  if (auto* const failure = std::get_if<RunFailure>(&parts)) return std::move(*failure);
  auto& measuring = std::get<interpreter::RipRun::Parts>(parts);
  measuring.measure = true;
  const auto directory = interpreter::RunDirectory::Make(context.ripDirectory, context.guardian);
  if (!directory) return Failed(directory.Error());
  interpreter::RipRun run(std::move(measuring), *directory, context.reporter, context.guardian);
  if (auto failure = run.Run()) return std::move(*failure);
  std::error_code error;
  std::filesystem::remove_all(directory->Path(), error);
  if (error) return Failed({"remove", directory->Path(), error.value()});
  if (!context.guardian.Release(directory->Path())) {
    return Failed({"release", directory->Path(), errno});
  }
  const auto page = MeasuredPage(run.Box(), source.declared);
  if (!page) return RunFailure{ExitStatus::Failed, "The interpreter's measure can't be read."};
  return *page;
}

}  // namespace rastrel::jobspool
