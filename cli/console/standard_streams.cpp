#include "cli/console/standard_streams.h"

#include <atomic>
#include <cerrno>
#include <mutex>
#include <utility>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/quiet_write.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/terminal.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t PieceBytes = std::size_t{256} << 10;
// Moves to the line's begin, and erases from there on.
constexpr const char* LineBegin = "\r";
constexpr const char* ClearRest = "\x1b[K";

std::atomic<bool> s_OutputFailed{false};
std::atomic<bool> s_OutputIsResult{false};
thread_local HeldOutput* t_Held = nullptr;

std::vector<std::pair<std::string, std::string>>& ShownPaths() {
  static std::vector<std::pair<std::string, std::string>> paths;
  return paths;
}

std::string Shown(std::string text) {
  for (const auto& [path, name] : ShownPaths())
    for (std::size_t at = 0; (at = text.find(path, at)) != text.npos; at += name.size())
      text.replace(at, path.size(), name);
  return text;
}

bool WriteWhole(os::StandardStream stream, std::string_view text) {
  if (t_Held != nullptr) {
    t_Held->Hold(stream == os::StandardStream::Error, text);
    return true;
  }
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

// Bytes that are not the one result.
void ToOutput(std::string_view bytes) {
  const bool isOutput = !s_OutputIsResult;
  const auto stream = isOutput ? os::StandardStream::Output : os::StandardStream::Error;
  if (!WriteWhole(stream, bytes) && isOutput) s_OutputFailed = true;
}

void ToError(std::string_view bytes) { WriteWhole(os::StandardStream::Error, bytes); }

bool OutputIsShown() {
  return os::IsTerminalDevice(os::StandardHandle(os::StandardStream::Output));
}

std::string CleanedLine(std::string_view line) { return os::CleanLine(Shown(std::string(line))); }

std::string CleanedLines(std::string_view text) { return os::CleanLines(Shown(std::string(text))); }

}  // namespace

void WriteOutLine(std::string_view line) { ToOutput(CleanedLine(line) + "\n"); }

void WriteErrorLine(std::string_view line) { ToError(CleanedLine(line) + "\n"); }

void WriteOutRow(const std::vector<std::string>& cells) {
  std::string row;
  for (const std::string& cell : cells) {
    if (&cell != cells.data()) row += '\t';
    row += CleanedLine(cell);
  }
  ToOutput(row + "\n");
}

void WriteOutLines(std::string_view text) { ToOutput(CleanedLines(text)); }

void WriteErrorLines(std::string_view text) { ToError(CleanedLines(text)); }

void WriteOutData(std::string_view bytes) {
  if (OutputIsShown()) return ToOutput(os::CleanLines(bytes));
  ToOutput(bytes);
}

void WriteOutPath(const std::string& path) {
  const std::string shown = Shown(path);
  ToOutput((OutputIsShown() ? os::CleanLine(shown) : shown) + "\n");
}

void ShowProgress(std::string_view line) { ToError(LineBegin + CleanedLine(line) + ClearRest); }

void ClearProgress() { ToError(std::string(LineBegin) + ClearRest); }

void WriteOutControl(std::string_view bytes) { ToOutput(bytes); }

void ShowPathAs(const std::string& path, const std::string& name) {
  ShownPaths().emplace_back(path, name);
}

Expected<void> KeepOutputForResult() {
  if (os::IsTerminalDevice(os::StandardHandle(os::StandardStream::Output)))
    return FailureOf(
        "standard output is a terminal, which can't show the file: lead it into a "
        "file or a program");
  s_OutputIsResult = true;
  return {};
}

Expected<void> WriteResult(std::string_view bytes) {
  if (WriteWhole(os::StandardStream::Output, bytes)) return {};
  return FailureOf("standard output could not be written");
}

Expected<void> WriteResultFile(const std::string& path) {
  const auto file = os::OpenForReading(os::FromNative(path));
  if (!file) return FailureOf(Describe(file.Error()));
  std::string piece(PieceBytes, '\0');
  for (;;) {
    const auto got = os::ReadSome(file->Get(), piece.data(), piece.size());
    if (!got) return FailureOf(Describe(FailureAt(path, got.Error())));
    if (*got == 0) return {};
    if (auto written = WriteResult({piece.data(), *got}); !written) return written;
  }
}

HeldOutput::HeldOutput(std::function<bool()> turn) : m_Turn(std::move(turn)) { t_Held = this; }

HeldOutput::~HeldOutput() { t_Held = nullptr; }

void HeldOutput::Hold(bool isError, std::string_view text) {
  auto& pieces = m_Text.pieces;
  if (pieces.empty() || pieces.back().isError != isError)
    pieces.push_back({.isError = isError, .bytes = {}});
  pieces.back().bytes += text;
  m_Bytes += text.size();
  if (m_Bytes <= Limit || !m_Turn) return;
  const bool isDue = m_Turn();
  const HeldText held = Take();
  t_Held = nullptr;
  if (isDue) WriteHeld(held);
  t_Held = this;
}

HeldText HeldOutput::Take() {
  m_Bytes = 0;
  return std::exchange(m_Text, {});
}

void WriteHeld(const HeldText& text) {
  for (const HeldText::Piece& piece : text.pieces)
    piece.isError ? ToError(piece.bytes) : ToOutput(piece.bytes);
}

bool OutputFailed() { return s_OutputFailed; }

}  // namespace rastrel::cli
