#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "cutting/device/device_file.h"
#include "rastrel/platform/os/expected.h"

/// Bytes on their way to a cutter. No call waits longer than the device's timeout for a device that
/// takes nothing; the time in which the job is paused does not count.
namespace rastrel::cutting {

/// How far a job is.
struct SendProgress {
  std::uint64_t taken = 0;  ///< bytes that have left this machine, as far as the system says
  std::uint64_t total = 0;
  bool isPaused = false;
};

/// The wish of a person about a job that is under way.
enum class SendOrder { Go, Pause, Cancel };

/// How a job is watched and steered. All is called on the thread that sends, one at a time.
struct SendControl {
  /// Descriptors that become readable when the order may have changed; they stay the caller's.
  std::vector<int> descriptors{};
  /// The present order. Asked at the beginning, when a descriptor is readable, and at least each
  /// second; takes the bytes from a descriptor that is readable. Empty: always Go.
  std::function<SendOrder()> order{};
  /// Called when more bytes were taken, and when the job is paused or goes on.
  std::function<void(const SendProgress&)> onProgress{};
};

struct SendResult {
  SendProgress progress{};
  bool isCancelled = false;  ///< by the order; the bytes that were taken so far stay taken
  std::string path{};        ///< of the file, where the device is reached by one
};

/// Sends a whole job to the device. `name` is the job's, of which the file in a directory gets its
/// name; its characters need not be safe. The failure says how many bytes were taken of how many.
/// A file is made whole or not at all: also when the job is cancelled or fails.
///
/// Fails for a device that is reached by a program or not at all: the first is the caller's to
/// start.
[[nodiscard]] Expected<SendResult> Send(const Device& device, std::string_view bytes,
                                        const std::string& name, const SendControl& control);

/// Sends through a descriptor that is open already and does not block: a socket, a line, a pipe.
/// Waits until all bytes have left this machine as far as the system says. At a failure and when
/// cancelled, a line forgets the bytes that are not out yet. `where` is its name in failures.
[[nodiscard]] Expected<SendResult> SendThrough(int descriptor, const std::string& where,
                                               std::string_view bytes, const DeviceReach& reach,
                                               int chunk, const SendControl& control);

/// The file's name for a job in a directory: safe characters of the name, without a directory, and
/// the ending of the format.
[[nodiscard]] std::string DeviceFileName(const std::string& jobName, std::string_view format);

}  // namespace rastrel::cutting
