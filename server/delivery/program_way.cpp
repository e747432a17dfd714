#include <sys/stat.h>

#include <cerrno>

#include "children/shared/delivery_command.h"
#include "interpreter/guardian.h"
#include "server/delivery/way.h"

namespace rastrel::server {

WayEnd DeliverToProgram(const WayRequest& request) {
  auto guardian = interpreter::Guardian::Start(interpreter::HeldStreams::None);
  if (!guardian) return {.message = Describe(guardian.Error())};
  if (auto sending = request.progress.OnSending(request.totalBytes); !sending) {
    return CanceledEnd(Describe(sending.Error()));
  }
  std::int64_t before = 0;
  std::int64_t taken = 0;
  const children::CommandWatch watch{.stop = request.cancel, .onTaken = [&](std::uint64_t bytes) {
                                       const std::int64_t all =
                                           before + static_cast<std::int64_t>(bytes);
                                       if (all <= taken) return;
                                       taken = all;
                                       request.progress.OnSent(taken);
                                     }};
  bool isFirst = true;
  for (const std::string& file : request.delivery.files) {
    const auto ran =
        children::RunCommand(request.device.command, file, *guardian,
                             static_cast<unsigned>(request.device.timeoutSeconds), watch);
    if (!ran) {
      const bool isCanceled = ran.Error().error == ECANCELED;
      // A program that read none of the first file can't have delivered any of it.
      const bool isClean = isFirst && taken == 0;
      if (isClean && isCanceled) return CanceledEnd();
      return {.fate = isClean ? DeliveryFate::Failed : DeliveryFate::Uncertain,
              .sentBytes = taken,
              .message = Describe(ran.Error())};
    }
    isFirst = false;
    struct stat state {};
    if (::stat(file.c_str(), &state) == 0) before += state.st_size;
  }
  return {.fate = DeliveryFate::Delivered, .sentBytes = request.totalBytes};
}

}  // namespace rastrel::server
