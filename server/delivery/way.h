#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "server/delivery/delivery.h"

/// The ways of the kinds of device: one attempt each.
namespace rastrel::server {

/// The input of one attempt. References are the caller's.
struct WayRequest {
  const DeliveryDevice& device;
  const Delivery& delivery;
  std::int64_t totalBytes;
  DeliveryProgress& progress;
  int cancel;
};

/// How an attempt ended: as DeliveryEnd. Failed: no byte went.
struct WayEnd {
  DeliveryFate fate = DeliveryFate::Failed;
  std::int64_t sentBytes = 0;
  std::string message{};
  std::vector<std::string> paths{};
  bool isFinal = false;  ///< of Failed: another attempt would fail alike
};

[[nodiscard]] WayEnd DeliverToFolder(const WayRequest& request);
[[nodiscard]] WayEnd DeliverToProgram(const WayRequest& request);
[[nodiscard]] WayEnd DeliverToSocket(const WayRequest& request);
[[nodiscard]] WayEnd DeliverToQueue(const WayRequest& request);

/// Whether the descriptor is readable now. False for -1.
[[nodiscard]] bool IsReadable(int descriptor);

/// The end of an attempt before a byte went.
[[nodiscard]] WayEnd CanceledEnd(std::string message = "the delivery was canceled");

}  // namespace rastrel::server
