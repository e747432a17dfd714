#include "server/printer/ipp/network_printer.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/shown_text.h"
#include "server/printer/ipp/job_attributes.h"
#include "server/printer/ipp/printer_driver.h"
#include "server/printer/job_options.h"
#include "server/printer/printer_record.h"

namespace rastrel::server {
namespace {

constexpr auto LookPause = std::chrono::milliseconds(200);
constexpr std::uint64_t RecordLimit = 64 << 20;
constexpr int MaximumHistory = 1000;
constexpr int LookSeconds = 1;

using Jobs = std::vector<pappl_job_t*>;

bool IsLoopback(const std::string& address) {
  return address == "localhost" || address == "::1" || address.starts_with("127.");
}

void SetMessage(pappl_job_t* job, const std::string& text) {
  ::papplJobSetMessage(job, "%s", os::CleanLine(text).c_str());
}

std::pair<int, int> KeyOf(pappl_job_t* job) {
  return {::papplPrinterGetID(::papplJobGetPrinter(job)), ::papplJobGetID(job)};
}

bool Refuse(pappl_job_t* job, const Failure& failure) {
  SetMessage(job, Describe(failure));
  if (failure.code == FailureCode::BadInput)
    ::papplJobSetReasons(job, PAPPL_JREASON_DOCUMENT_FORMAT_ERROR, PAPPL_JREASON_NONE);
  return false;
}

// Whether the whole document has come, and nothing of the job has begun.
bool IsWaiting(pappl_job_t* job) {
  return ::papplJobGetState(job) == IPP_JSTATE_PENDING && ::papplJobGetFilename(job) &&
         (::papplJobGetReasons(job) & PAPPL_JREASON_JOB_INCOMING) == 0;
}

void ShowState(pappl_job_t* job, const Job& row, JobState& shown) {
  if (row.state == shown) return;
  shown = row.state;
  const bool waits = row.state == JobState::Held || row.state == JobState::Uncertain ||
                     row.state == JobState::Quarantined;
  ::papplJobSetReasons(job, waits ? PAPPL_JREASON_JOB_HOLD_UNTIL_SPECIFIED : PAPPL_JREASON_NONE,
                       waits ? PAPPL_JREASON_NONE : PAPPL_JREASON_JOB_HOLD_UNTIL_SPECIFIED);
  std::string text = "job " + std::to_string(row.id) + ": " + NameOf(row.state);
  if (!row.message.empty()) text += ", " + row.message;
  SetMessage(job, text);
}

}  // namespace

NetworkPrinter::NetworkPrinter(ShopPrinter& shop, NetworkPrinterSettings settings,
                               std::vector<std::string> devices, std::vector<OfferedMode> modes,
                               std::string directory)
    : m_Shop(shop),
      m_Settings(std::move(settings)),
      m_Devices(std::move(devices)),
      m_Modes(std::move(modes)),
      m_Directory(std::move(directory)) {}

Expected<void> NetworkPrinter::Run() {
  const bool isLocal = IsLoopback(m_Settings.address);
  // No page of the library's own: the server's is the page. Other machines must use TLS.
  const pappl_soptions_t options =
      PAPPL_SOPTIONS_MULTI_QUEUE | (isLocal ? PAPPL_SOPTIONS_NO_TLS : PAPPL_SOPTIONS_NONE);
  m_System =
      ::papplSystemCreate(options, "Rastrel", m_Settings.port, "_print,_universal",
                          m_Shop.Spool().c_str(), "-", PAPPL_LOGLEVEL_WARN, nullptr, !isLocal);
  if (!m_System) return FailureOf("the network printer can't be made");
  // Without one, each page that the library answers with ends the process.
  ::papplSystemSetFooterHTML(m_System, "Rastrel");
  if (!::papplSystemAddListeners(m_System, m_Settings.address.c_str()))
    return FailureOf("port " + std::to_string(m_Settings.port) + " of " + m_Settings.address +
                     " can't be had");
  AddFilters();
  MakePrinters();
  ::papplSystemAddTimerCallback(
      m_System, 0, LookSeconds,
      [](pappl_system_t*, void* data) {
        auto& self = *static_cast<NetworkPrinter*>(data);
        self.Wake();
        self.SubmitAhead();
        self.CancelLost();
        return true;
      },
      this);
  ::papplSystemRun(m_System);
  return {};
}

// The library writes its file in place, so it writes another one, which then takes the name.
void NetworkPrinter::Save() {
  const std::lock_guard lock(m_SaveMutex);
  const std::string record = RecordPath();
  const std::string fresh = record + ".new";
  if (!m_System || !::papplSystemSaveState(m_System, fresh.c_str())) return;
  static_cast<void>(os::RenameFile(os::FromNative(fresh), os::FromNative(record)));
}

void NetworkPrinter::Load() {
  const std::string record = RecordPath();
  const auto text = os::ReadWholeFile(os::FromNative(record), RecordLimit);
  if (!text) return;  // the first start
  const auto written =
      os::ReplaceFile(os::FromNative(record), RecordWithWaitingJobs(*text), os::Access::Private);
  if (written) static_cast<void>(::papplSystemLoadState(m_System, record.c_str()));
}

std::string NetworkPrinter::RecordPath() const { return m_Directory + "/printers.conf"; }

void NetworkPrinter::AddFilters() {
  AddShopDriver(m_System, *this);
  ::papplSystemSetSaveCallback(
      m_System,
      [](pappl_system_t*, void* data) {
        static_cast<NetworkPrinter*>(data)->Save();
        return true;
      },
      this);
}

void NetworkPrinter::MakePrinters() {
  Load();
  std::vector<pappl_printer_t*> gone;
  struct Search {
    const std::vector<std::string>& devices;
    std::vector<pappl_printer_t*>& gone;
  } search{m_Devices, gone};
  ::papplSystemIteratePrinters(
      m_System,
      [](pappl_printer_t* printer, void* data) {
        auto& found = *static_cast<Search*>(data);
        const std::string device = DeviceOfAddress(::papplPrinterGetDeviceURI(printer));
        if (std::ranges::find(found.devices, device) == found.devices.end())
          found.gone.push_back(printer);
      },
      &search);
  for (pappl_printer_t* printer : gone) ::papplPrinterDelete(printer);
  for (const std::string& device : m_Devices) {
    const std::string address = DeviceAddressOf(device);
    pappl_printer_t* printer = ::papplSystemFindPrinter(m_System, nullptr, 0, address.c_str());
    const std::string base = PrinterNameOf(device);
    std::string name = base;
    for (int number = 2; !printer && number < 100; ++number) {
      printer = ::papplPrinterCreate(m_System, 0, name.c_str(), ShopDriver, "MFG:Rastrel;MDL:Sign;",
                                     address.c_str());
      name = base + "-" + std::to_string(number);
    }
    if (!printer) continue;
    ::papplPrinterSetMaxCompletedJobs(printer, MaximumHistory);
    ::papplPrinterSetMaxActiveJobs(printer, MaximumHistory);
  }
}

Expected<JobId> NetworkPrinter::Submit(pappl_job_t* job) {
  return m_Shop.Submit(DocumentOf(job, m_Modes));
}

// The library works on one job of a printer at a time. The next ones go to the queue at once all
// the same, so that they are interpreted ahead, in the order of their numbers.
void NetworkPrinter::SubmitAhead() {
  struct {
    Jobs waiting;
    std::set<JobKey> held;
  } found;
  using Found = decltype(found);
  ::papplSystemIteratePrinters(
      m_System,
      [](pappl_printer_t* printer, void* data) {
        ::papplPrinterIterateActiveJobs(
            printer,
            [](pappl_job_t* job, void* jobs) {
              if (IsWaiting(job)) static_cast<Found*>(jobs)->waiting.push_back(job);
              if (::papplJobGetState(job) == IPP_JSTATE_HELD)
                static_cast<Found*>(jobs)->held.insert(KeyOf(job));
            },
            data, 1, 0);
      },
      &found);
  std::ranges::sort(found.waiting, {}, [](pappl_job_t* job) { return ::papplJobGetID(job); });
  // A job that its sender holds is in no queue, and the library does not write it down by itself.
  bool added = m_Held != found.held;
  m_Held = std::move(found.held);
  for (pappl_job_t* job : found.waiting) {
    const JobKey key = KeyOf(job);
    {
      const std::lock_guard lock(m_Mutex);
      if (m_Submitted.contains(key)) continue;
    }
    added = true;
    // A fault of the document is reported when its turn comes.
    const auto id = Submit(job);
    const std::lock_guard lock(m_Mutex);
    m_Submitted[key] = id.ValueOr(0);
  }
  // The job and its document are found again whatever ends the process.
  if (added) Save();
}

// The library looks for jobs that wait only when one comes or a printer is resumed, and so never at
// those of its record.
void NetworkPrinter::Wake() {
  if (std::exchange(m_Awake, true)) return;
  std::vector<pappl_printer_t*> printers;
  ::papplSystemIteratePrinters(
      m_System,
      [](pappl_printer_t* printer, void* data) {
        static_cast<std::vector<pappl_printer_t*>*>(data)->push_back(printer);
      },
      &printers);
  for (pappl_printer_t* printer : printers) {
    ::papplPrinterPause(printer);
    ::papplPrinterResume(printer);
  }
}

// Jobs that were canceled while they waited for their turn, which the library does by itself.
void NetworkPrinter::CancelLost() {
  const std::lock_guard lock(m_Mutex);
  std::erase_if(m_Submitted, [this](const auto& entry) {
    pappl_printer_t* const printer =
        ::papplSystemFindPrinter(m_System, nullptr, entry.first.first, nullptr);
    pappl_job_t* const job = printer ? ::papplPrinterFindJob(printer, entry.first.second) : nullptr;
    const ipp_jstate_t state = job ? ::papplJobGetState(job) : IPP_JSTATE_COMPLETED;
    if (state == IPP_JSTATE_CANCELED && entry.second != 0)
      static_cast<void>(m_Shop.Queue().Cancel(entry.second));
    return state >= IPP_JSTATE_CANCELED;
  });
}

bool NetworkPrinter::RunDocument(pappl_job_t* job) {
  const auto id = Submit(job);
  Save();
  return id ? Follow(job, *id) : Refuse(job, id.Error());
}

// Until the queue's job has ended. Returns whether it came out.
bool NetworkPrinter::Follow(pappl_job_t* job, JobId id) {
  JobQueue& queue = m_Shop.Queue();
  bool canceled = false;
  JobState shown = JobState::Canceled;
  for (;; std::this_thread::sleep_for(LookPause)) {
    if (::papplJobIsCanceled(job) && !canceled) {
      canceled = true;
      static_cast<void>(queue.Cancel(id));
    }
    const auto row = queue.Find(id);
    if (!row) continue;  // the database is busy, or the disk is away for a moment
    if (!*row || (*row)->state == JobState::Canceled) {
      if (!canceled) ::papplJobCancel(job);
      return true;
    }
    if ((*row)->state == JobState::Failed) {
      SetMessage(job, (*row)->message);
      return false;
    }
    if ((*row)->state == JobState::Done) {
      ShowState(job, **row, shown);
      ::papplJobSetImpressions(job, (*row)->pages);
      return true;
    }
    ShowState(job, **row, shown);
  }
}

// The sender of raster is connected until this returns, and no other could send meanwhile. So its
// job ends for it as soon as the queue has it.
bool NetworkPrinter::EndRaster(pappl_job_t* job, const std::string& path) {
  ReceivedDocument document = DocumentOf(job, m_Modes);
  document.path = path;
  const auto id = m_Shop.SubmitOwn(document);
  if (!id) return Refuse(job, id.Error());
  SetMessage(job, "job " + std::to_string(*id) + " of the queue");
  return true;
}

}  // namespace rastrel::server
