#include "cli/converting/page_size_command.h"

#include <array>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cli/console/error_message.h"
#include "cli/console/files_at_once.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/console/stop_signals.h"
#include "cli/converting/queue_diagnosis.h"
#include "cli/input/input_file.h"
#include "cli/input/page_bounds.h"
#include "cli/input/pdf_options.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "rastrel/conversion/measure_page.h"
#include "rastrel/platform/mfc/sync.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/psscan/ps_parser.h"

namespace rastrel::cli {
namespace {

constexpr double PointCm = 2.54 / 72.0;

// A library path by which the file may be reached; names that such a path can't spell lead to a
// copy.
struct Reachable {
  std::wstring path;
  std::optional<JobDirectory> copied;  ///< holds the copy
};

Reachable Reach(const InputFile& input) {
  Reachable reachable;
  reachable.path = os::FromNative(input.path);
  if (os::ToNative(reachable.path) == input.path) return reachable;
  reachable.copied.emplace(OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(false)));
  reachable.path = os::FromNative(
      OrEndByCode(ExitStatus::JobFailed,
                  reachable.copied->CopyIn(input.path, input.safeName + input.extension)));
  return reachable;
}

std::optional<BOUNDS> BoundsOfComments(const wchar_t* path) {
  CRect points;
  if (!CPSParser(path).GetBounds(points)) return std::nullopt;
  return InCentimetres(points);
}

// The signals that ask for an end stop all measuring that runs, and let none follow.
class Stop {
 public:
  /// Begins to take them. The failure is a message for the user.
  [[nodiscard]] Expected<void> Start() {
    auto signals = TakeStopSignals([this](int) { Make(); });
    if (!signals) return signals.Error();
    m_Signals = *std::move(signals);
    return {};
  }

  /// A measuring that runs as long as this object lives.
  class Stoppable {
   public:
    explicit Stoppable(Stop& stop) : m_Stop(stop) {
      const std::scoped_lock lock(m_Stop.m_Mutex);
      m_Stop.m_Running.insert(&m_Semaphore);
      if (m_Stop.m_Made) m_Semaphore.Unlock();
    }
    ~Stoppable() {
      const std::scoped_lock lock(m_Stop.m_Mutex);
      m_Stop.m_Running.erase(&m_Semaphore);
    }
    Stoppable(const Stoppable&) = delete;
    Stoppable& operator=(const Stoppable&) = delete;
    [[nodiscard]] CSemaphore* Semaphore() { return &m_Semaphore; }
    [[nodiscard]] bool IsStopped() const { return m_Stop.m_Made; }

   private:
    Stop& m_Stop;
    CSemaphore m_Semaphore{0, 1};
  };

 private:
  void Make() {
    const std::scoped_lock lock(m_Mutex);
    m_Made = true;
    for (CSemaphore* running : m_Running) running->Unlock();
  }
  std::atomic<bool> m_Made = false;
  std::mutex m_Mutex;
  std::set<CSemaphore*> m_Running;
  std::unique_ptr<os::StopSignals> m_Signals;  // last: its thread uses the others
};

BOUNDS Measured(const wchar_t* path, Stop& stop, QueueMessages& messages) {
  BOUNDS bounds;
  Stop::Stoppable running(stop);
  const auto onLine = [&messages](const std::wstring& line) { messages.Add(line); };
  if (running.IsStopped() ||
      conversion::MeasurePage(path, bounds, running.Semaphore(), onLine) == 0) {
    if (running.IsStopped()) throw CommandError(ExitStatus::Cancelled, "cancelled");
    const std::string& why = messages.LastError();
    throw CommandError(ExitStatus::JobFailed, why.empty() ? "its page can't be measured"
                                                          : "its page can't be measured: " + why);
  }
  return bounds;
}

bool Differ(const BOUNDS& one, const BOUNDS& other) {
  return std::abs(one.xmin - other.xmin) > PointCm || std::abs(one.xmax - other.xmax) > PointCm ||
         std::abs(one.ymin - other.ymin) > PointCm || std::abs(one.ymax - other.ymax) > PointCm;
}

std::string Number(double number, int decimals) {
  // A rounded -0.000 has no sign to show.
  const double scale = std::pow(10.0, decimals);
  const double rounded = std::round(number * scale) / scale;
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals, rounded == 0 ? 0.0 : rounded);
  return text.data();
}

void WriteBounds(const std::string& file, const BOUNDS& bounds, const char* source, bool json) {
  const double width = bounds.xmax - bounds.xmin;
  const double height = bounds.ymax - bounds.ymin;
  if (json) {
    JsonLine line("pagesize");
    line.Add("path", file).Add("source", source);
    line.AddNumber("xmin", bounds.xmin).AddNumber("ymin", bounds.ymin);
    line.AddNumber("xmax", bounds.xmax).AddNumber("ymax", bounds.ymax);
    line.AddNumber("width", width).AddNumber("height", height).Write();
    return;
  }
  WriteOutLine(file + ": " + Number(width, 3) + " x " + Number(height, 3) + " cm at " +
               Number(bounds.xmin, 3) + ", " + Number(bounds.ymin, 3) + " (" +
               Number(width / PointCm, 2) + " x " + Number(height / PointCm, 2) + " pt), " +
               source);
}

void WriteWarnings(const std::string& file, const QueueMessages& messages, bool json) {
  for (const std::string& warning : messages.Warnings()) {
    if (json) {
      JsonLine("warning").Add("path", file).Add("text", warning).Write();
    } else {
      WriteErrorLine("rastrel: " + file + ": warning: " + warning);
    }
  }
}

void MeasureFile(const std::string& file, const Invocation& invocation, Stop& stop) {
  const bool json = invocation.Has(OptionId::Json);
  const InputFile input = OrEnd(ExitStatus::BadInput, InspectInput(file, "measure"));
  const Reachable reachable = Reach(input);
  std::optional<BOUNDS> declared;
  if (invocation.Has(OptionId::Dsc)) declared = BoundsOfComments(reachable.path.c_str());
  if (declared) WriteBounds(file, *declared, "comments", json);
  QueueMessages messages;
  const BOUNDS measured = Measured(reachable.path.c_str(), stop, messages);
  if (!declared || Differ(*declared, measured)) WriteBounds(file, measured, "measured", json);
  WriteWarnings(file, messages, json);
}

}  // namespace

ExitStatus PageSizeCommand(const Invocation& invocation) {
  const unsigned atOnce = OrEnd(ExitStatus::WrongUse, FilesAtOnce(invocation));
  const PdfOptions pdf = OrEnd(ExitStatus::WrongUse, PdfOptions::Apply(invocation));
  const bool json = invocation.Has(OptionId::Json);
  Stop stop;
  OrEnd(ExitStatus::JobFailed, stop.Start());
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  OrEnd(ExitStatus::NotInstalled, CheckQueueProgram());
  ExitStatus status = ExitStatus::Done;
  const std::vector<std::string>& files = invocation.operands;
  const auto failed = [&](std::size_t index, const CommandError& error) {
    if (error.Status() == ExitStatus::Cancelled) throw CommandError(error);
    WriteErrorMessage({error.Status(), files[index] + ": " + error.what()}, json);
    if (status != ExitStatus::BadInput) status = error.Status();
  };
  const auto measure = [&](std::size_t index) { MeasureFile(files[index], invocation, stop); };
  WorkOnFiles(files.size(), atOnce, {.work = measure, .failed = failed});
  return status;
}

}  // namespace rastrel::cli
