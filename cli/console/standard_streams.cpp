#include "cli/console/standard_streams.h"

#include <atomic>
#include <cerrno>
#include <mutex>

#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/quiet_write.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/terminal.h"

namespace rastrel::cli {
namespace {

// Moves to the line's begin, and erases from there on.
constexpr const char* LineBegin = "\r";
constexpr const char* ClearRest = "\x1b[K";

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

void ToOutput(std::string_view bytes) {
  if (!WriteWhole(os::StandardStream::Output, bytes)) s_OutputFailed = true;
}

void ToError(std::string_view bytes) { WriteWhole(os::StandardStream::Error, bytes); }

bool OutputIsShown() { return os::IsShown(os::StandardHandle(os::StandardStream::Output)); }

}  // namespace

void WriteOutLine(std::string_view line) { ToOutput(os::CleanLine(line) + "\n"); }

void WriteErrorLine(std::string_view line) { ToError(os::CleanLine(line) + "\n"); }

void WriteOutRow(const std::vector<std::string>& cells) {
  std::string row;
  for (const std::string& cell : cells) {
    if (&cell != cells.data()) row += '\t';
    row += os::CleanLine(cell);
  }
  ToOutput(row + "\n");
}

void WriteOutLines(std::string_view text) { ToOutput(os::CleanLines(text)); }

void WriteErrorLines(std::string_view text) { ToError(os::CleanLines(text)); }

void WriteOutData(std::string_view bytes) {
  if (OutputIsShown()) return ToOutput(os::CleanLines(bytes));
  ToOutput(bytes);
}

void WriteOutPath(const std::string& path) {
  ToOutput((OutputIsShown() ? os::CleanLine(path) : path) + "\n");
}

void ShowProgress(std::string_view line) { ToError(LineBegin + os::CleanLine(line) + ClearRest); }

void ClearProgress() { ToError(std::string(LineBegin) + ClearRest); }

void WriteOutControl(std::string_view bytes) { ToOutput(bytes); }

bool OutputFailed() { return s_OutputFailed; }

}  // namespace rastrel::cli
