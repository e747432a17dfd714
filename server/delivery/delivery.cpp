#include "server/delivery/delivery.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

#include "children/devices/pattern.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/tree.h"
#include "server/delivery/way.h"

namespace rastrel::server {
namespace {

constexpr auto LockInterval = std::chrono::milliseconds(100);
/// A week: no device is waited for longer.
constexpr int UnlimitedSeconds = 604800;

Expected<std::int64_t> SizeOfAll(const std::vector<std::string>& files) {
  std::int64_t total = 0;
  for (const std::string& file : files) {
    struct stat state {};
    if (::stat(file.c_str(), &state) != 0) return Failure{"open", file, errno};
    if (!S_ISREG(state.st_mode)) return Failure{"open", file, EINVAL};
    total += state.st_size;
  }
  return total;
}

/// Waits so long. False if `cancel` came to be readable.
bool Pause(std::chrono::nanoseconds time, int cancel) {
  const os::Deadline deadline = os::Deadline::After(time);
  while (!deadline.HasPassed()) {
    pollfd entry{cancel, POLLIN, 0};
    static_cast<void>(::poll(&entry, 1, deadline.PollTimeout()));
    if (entry.revents != 0) return false;
  }
  return !IsReadable(cancel);
}

/// The lock of a device: open while it is held. Not open: canceled.
Expected<os::FileDescriptor> LockDevice(const std::string& dataRoot, const std::string& name,
                                        int cancel) {
  const std::string directory = dataRoot + "/server/devices";
  const auto made = os::MakePath(os::FromNative(directory), os::Access::Private);
  if (!made) return made.Error();
  const std::string path = directory + "/" + devices::SafeName(name) + ".lock";
  os::FileDescriptor file(
      ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW, 0600));
  if (!file.IsOpen()) return Failure{"open", path, errno};
  while (::flock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return Failure{"flock", path, errno};
    if (!Pause(LockInterval, cancel)) return os::FileDescriptor();
  }
  return file;
}

WayEnd Attempt(const WayRequest& request) {
  switch (request.device.kind) {
    case DeviceKind::Folder: return DeliverToFolder(request);
    case DeviceKind::Program: return DeliverToProgram(request);
    case DeviceKind::Socket: return DeliverToSocket(request);
    case DeviceKind::Queue: return DeliverToQueue(request);
  }
  return {};
}

DeliveryEnd EndOf(WayEnd way, const WayRequest& request, int attempts) {
  return {.fate = way.fate,
          .sentBytes = way.sentBytes,
          .totalBytes = request.totalBytes,
          .attempts = attempts,
          .message = os::CleanLine(way.message),
          .paths = std::move(way.paths)};
}

bool MayBeMadeAgain(const WayEnd& way, const DeliveryDevice& device) {
  if (way.fate == DeliveryFate::Failed) return !way.isFinal;
  return way.fate == DeliveryFate::Uncertain && device.againAfterCutOff;
}

DeliveryEnd DeliverLocked(const WayRequest& request) {
  int pause = request.device.pauseSeconds;
  for (int attempt = 1;; ++attempt) {
    if (IsReadable(request.cancel)) return EndOf(CanceledEnd(), request, attempt - 1);
    WayEnd way = Attempt(request);
    const bool isLast = attempt > request.device.retries || IsReadable(request.cancel);
    if (isLast || !MayBeMadeAgain(way, request.device)) {
      return EndOf(std::move(way), request, attempt);
    }
    request.progress.OnMessage(
        os::CleanLine(way.message) + "; attempt " + std::to_string(attempt + 1) + " of " +
        std::to_string(request.device.retries + 1) + " in " + std::to_string(pause) + " seconds");
    // What went stays uncertain, whoever ends the pause.
    if (!Pause(std::chrono::seconds(pause), request.cancel)) {
      if (way.fate == DeliveryFate::Failed) way = CanceledEnd();
      return EndOf(std::move(way), request, attempt);
    }
    pause = std::min(pause * 2, MaximumPauseSeconds);
  }
}

}  // namespace

bool IsReadable(int descriptor) {
  pollfd entry{descriptor, POLLIN, 0};
  return ::poll(&entry, 1, 0) > 0;
}

WayEnd CanceledEnd(std::string message) {
  return {.fate = DeliveryFate::Canceled, .message = std::move(message)};
}

Expected<DeliveryEnd> Deliver(const std::string& dataRoot, const DeliveryDevice& device,
                              const Delivery& delivery, DeliveryProgress& progress, int cancel) {
  const auto total = SizeOfAll(delivery.files);
  if (!total) return total.Error();
  DeliveryDevice limited = device;
  if (limited.timeoutSeconds == 0) limited.timeoutSeconds = UnlimitedSeconds;
  const WayRequest request{limited, delivery, *total, progress, cancel};
  const auto lock = LockDevice(dataRoot, device.name, cancel);
  if (!lock) return lock.Error();
  if (!lock->IsOpen()) return EndOf(CanceledEnd(), request, 0);
  return DeliverLocked(request);
}

}  // namespace rastrel::server
