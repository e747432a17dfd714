#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "children/devices/pattern.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/output_file.h"
#include "server/delivery/way.h"

namespace rastrel::server {
namespace {

constexpr unsigned MaximumNumber = 9999;
constexpr std::size_t MaximumExtension = 8;

/// "JOB.tif", and from the second file on "JOB-2.tif".
std::string NameFor(const std::string& job, const std::string& file, std::size_t index) {
  const std::string name = file.substr(file.rfind('/') + 1);
  const std::size_t dot = name.rfind('.');
  const bool hasExtension =
      dot != std::string::npos && dot > 0 && name.size() - dot <= MaximumExtension;
  std::string result = devices::SafeName(job);
  if (index > 0) result += "-" + std::to_string(index + 1);
  return hasExtension ? result + name.substr(dot) : result;
}

/// Reads until the block is full or the file's end. -1: it can't be read.
ssize_t ReadBlock(int file, char* bytes, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = ::read(file, bytes + done, size - done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return -1;
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return static_cast<ssize_t>(done);
}

bool HaveSameContent(const std::string& one, const std::string& other) {
  const os::FileDescriptor first(::open(one.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  const os::FileDescriptor second(
      ::open(other.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
  if (!first.IsOpen() || !second.IsOpen()) return false;
  std::array<char, 65536> left;
  std::array<char, 65536> right;
  for (;;) {
    const ssize_t count = ReadBlock(first.Get(), left.data(), left.size());
    if (count < 0 || ReadBlock(second.Get(), right.data(), right.size()) != count) return false;
    const auto size = static_cast<std::size_t>(count);
    if (std::string_view(left.data(), size) != std::string_view(right.data(), size)) return false;
    if (size < left.size()) return true;
  }
}

/// One file, whole and on the disk under its name, or not there. The failure ECANCELED: `cancel`.
Expected<void> WriteOne(const std::string& source, const std::string& target,
                        const WayRequest& request, std::int64_t& sent) {
  const os::FileDescriptor file(::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (!file.IsOpen()) return Failure{"open", source, errno};
  auto output = os::OutputFile::Create(target, os::Existing::Refused);
  if (!output) return output.Error();
  std::string block(std::size_t{1} << 20, '\0');
  for (;;) {
    if (IsReadable(request.cancel)) return Failure{"write", target, ECANCELED};
    const ssize_t count = ReadBlock(file.Get(), block.data(), block.size());
    if (count < 0) return Failure{"read", source, errno};
    if (count == 0) break;
    const auto piece = std::string_view(block).substr(0, static_cast<std::size_t>(count));
    if (auto written = output->Write(piece); !written) return written;
    sent += count;
    request.progress.OnSent(sent);
  }
  return output->Commit();
}

/// The path that the file has now. One of this job's name with the same bytes is the file itself,
/// of a delivery that was cut off.
Expected<std::string> Place(const std::string& source, const std::string& first,
                            const WayRequest& request, std::int64_t& sent) {
  const std::int64_t before = sent;
  for (unsigned number = 1; number <= MaximumNumber; ++number) {
    const std::string path = number == 1 ? first : os::NumberedPath(first, number);
    const auto free = os::CheckPlace(path, os::Existing::Refused);
    if (!free && free.Error().error != EEXIST) return free.Error();
    if (!free && HaveSameContent(source, path)) return path;
    if (!free) continue;
    const auto written = WriteOne(source, path, request, sent);
    if (written) return path;
    if (written.Error().error != EEXIST) return written.Error();
    sent = before;
  }
  return FailureOf("'" + first + "' and " + std::to_string(MaximumNumber) +
                   " names after it are taken");
}

}  // namespace

WayEnd DeliverToFolder(const WayRequest& request) {
  WayEnd end;
  const std::string& directory = request.device.path;
  const std::string prefix = directory + (directory.ends_with('/') ? "" : "/");
  for (std::size_t i = 0; i < request.delivery.files.size(); ++i) {
    const std::string& file = request.delivery.files[i];
    const std::string first = prefix + NameFor(request.delivery.name, file, i);
    auto placed = Place(file, first, request, end.sentBytes);
    if (!placed) {
      // Whole files that are there already are found again, so nothing is uncertain.
      end.fate = placed.Error().error == ECANCELED ? DeliveryFate::Canceled : DeliveryFate::Failed;
      end.message = Describe(placed.Error());
      return end;
    }
    end.paths.push_back(std::move(*placed));
  }
  end.fate = DeliveryFate::Delivered;
  return end;
}

}  // namespace rastrel::server
