#include "cli/sheet/workspace.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "cli/console/error_message.h"
#include "cli/console/exit_status.h"
#include "cli/console/standard_streams.h"
#include "cli/console/stop_signals.h"
#include "cli/installation/installation.h"
#include "cli/job/progress_line.h"
#include "rastrel/platform/os/deliver_file.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/signals.h"
#include "rastrel/platform/os/terminal.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli::sheet {
namespace {

namespace fs = std::filesystem;

Failure CantWrite(const std::string& target, const std::string& why) {
  return FailureOf("can't write '" + target + "': " + why);
}

}  // namespace

Expected<std::unique_ptr<Workspace>> Workspace::Create(bool json) {
  std::unique_ptr<Workspace> workspace(new Workspace(json));
  auto signals = TakeStopSignals([made = workspace.get()](int) { made->Stop(); });
  if (!signals) return signals.Error();
  workspace->m_Signals = *std::move(signals);
  return workspace;
}

Workspace::Workspace(bool json) : m_Json(json) {}

Expected<void> Workspace::MakeDirectory() {
  if (auto laidOut = MakeSureOfDataRoot(); !laidOut) return laidOut;
  const std::lock_guard<std::mutex> guard(m_Mutex);
  auto directory = JobDirectory::Create(false);
  if (!directory) return directory.Error();
  m_Directory.emplace(*std::move(directory));
  return {};
}

Workspace::~Workspace() {
  const std::lock_guard<std::mutex> guard(m_Mutex);
  m_Directory.reset();
}

void Workspace::Stop() {
  const std::lock_guard<std::mutex> guard(m_Mutex);
  std::error_code ignored;
  if (!m_Unfinished.empty()) fs::remove(m_Unfinished, ignored);
  if (m_Directory) {
    // The other thread may be making a file in it while its neighbours are removed.
    constexpr int attempts = 1000;
    const std::wstring path = os::FromNative(m_Directory->Path());
    for (int attempt = 0; attempt < attempts && os::Exists(path); ++attempt)
      static_cast<void>(os::RemoveTree(path));
  }
  // The progress line may be there, followed by the terminal's echo of the key.
  if (!m_Json && os::IsTerminal(os::StandardHandle(os::StandardStream::Error))) ClearProgress();
  WriteErrorMessage({ExitStatus::Cancelled, "cancelled; what was unpacked has been removed"},
                    m_Json);
  std::_Exit(static_cast<int>(ExitStatus::Cancelled));
}

Expected<std::string> Workspace::MakeFolder(const std::string& name) const {
  std::string path = Path(name);
  if (const auto made = os::MakeDirectory(os::FromNative(path)); !made)
    return FailureAt(path, made.Error());
  return path;
}

void Workspace::SetUnfinished(const std::string& path) {
  const std::lock_guard<std::mutex> guard(m_Mutex);
  m_Unfinished = path;
}

Expected<void> Workspace::Deliver(const std::string& source, const std::string& target,
                                  unsigned access) {
  // Before the file leaves this directory, which is its user's alone.
  std::error_code error;
  fs::permissions(source, static_cast<fs::perms>(access & ~os::CurrentUmask()), error);
  if (error) return CantWrite(target, DescribeError(error.value()));
  const auto delivered =
      os::DeliverFile(source, target, [this](const std::string& hidden) { SetUnfinished(hidden); });
  if (delivered) return {};
  const int number = delivered.Error().error;
  return CantWrite(target, number == EISDIR ? "it is a directory" : DescribeError(number));
}

}  // namespace rastrel::cli::sheet
