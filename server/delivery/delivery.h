#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "server/delivery/delivery_device.h"

/// The last step of a job: its finished files on their way to a device. The same files never go
/// twice by themselves: where bytes may have gone and the device did not confirm them, the delivery
/// ends as Uncertain, and a person decides.
namespace rastrel::server {

/// The files of one job.
struct Delivery {
  /// Names the job for ever, "42-poster": files in a folder are named by it, so that a delivery
  /// that is begun again after a kill makes none twice. Its characters need not be safe.
  std::string name;
  std::string title{};             ///< for people, at a queue; may be empty
  std::string user{};              ///< whom a queue notes as the job's owner; may be empty
  std::vector<std::string> files;  ///< full native paths, in order; stay as they are
};

enum class DeliveryFate {
  Delivered,  ///< the device has all and confirmed it in its way
  Canceled,   ///< by the caller's descriptor before a byte went
  Failed,     ///< no byte went; it may be tried again
  Uncertain,  ///< bytes went, or may have gone, and the rest is not confirmed
};

struct DeliveryEnd {
  DeliveryFate fate = DeliveryFate::Failed;
  std::int64_t sentBytes = 0;  ///< that left this machine as far as is known; -1 is unknown
  std::int64_t totalBytes = 0;
  int attempts = 0;
  std::string message;             ///< why it is not Delivered; one clean line
  std::vector<std::string> paths;  ///< the files that were made, where the device is a folder
};

/// Whoever watches a delivery. All is called on the thread that delivers.
class DeliveryProgress {
 public:
  virtual ~DeliveryProgress() = default;
  /// Before the first byte goes to a device that can't take it back; at each attempt. A failure
  /// ends the delivery as Canceled, with its text: JobQueue::SetSending fits here. A folder never
  /// calls it, since its files are whole or not there.
  [[nodiscard]] virtual Expected<void> OnSending(std::int64_t totalBytes) = 0;
  /// So many bytes went so far. Never fewer than before within one attempt.
  virtual void OnSent(std::int64_t bytes) = 0;
  /// A line for the job's story: a device's own message, a failed attempt, a pause.
  virtual void OnMessage(const std::string& line) = 0;
};

/// Brings the files to the device and returns how that ended. Waits while another process delivers
/// to the same device; the lock is `server/devices/NAME.lock` in the data root and ends with its
/// process. An attempt that failed before a byte went is made again as often as the settings say,
/// after pauses that double; one that was cut off only where the settings allow it.
///
/// `cancel` is a descriptor that becomes readable, and stays so, when the delivery is to end; -1:
/// none. Fails only if a file can't be read or the lock can't be had.
[[nodiscard]] Expected<DeliveryEnd> Deliver(const std::string& dataRoot,
                                            const DeliveryDevice& device, const Delivery& delivery,
                                            DeliveryProgress& progress, int cancel);

/// Whether a device of the kind Queue is there: its print system can be reached within five seconds
/// and has the queue, which leads to no file. Fails with the reason.
[[nodiscard]] Expected<void> FindPrintQueue(const DeliveryDevice& device);

}  // namespace rastrel::server
