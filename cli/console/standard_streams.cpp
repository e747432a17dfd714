#include "cli/console/standard_streams.h"

#include <atomic>
#include <cerrno>
#include <mutex>

#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/quiet_write.h"

namespace rastrel::cli {
namespace {

std::atomic<bool> s_OutputFailed{false};

bool WriteWhole(os::StandardStream stream, std::string_view text) {
  static std::mutex mutex;
  const std::lock_guard<std::mutex> guard(mutex);
  while (!text.empty()) {
    const auto written =
        os::WriteWithoutSignal(os::StandardHandle(stream), text.data(), text.size());
    if (written <= 0) return written < 0 && errno == EPIPE;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

void WriteOut(std::string_view text) {
  if (!WriteWhole(os::StandardStream::Output, text)) s_OutputFailed = true;
}

void WriteError(std::string_view text) { WriteWhole(os::StandardStream::Error, text); }

bool OutputFailed() { return s_OutputFailed; }

}  // namespace rastrel::cli
