#pragma once

#include <pappl/pappl.h>

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "server/printer/ipp/shop_printer.h"
#include "server/printer/print_modes.h"
#include "server/settings/server_settings.h"

namespace rastrel::server {

/// Printers of the network, one for each device, which share an address and a port. Their jobs go
/// into the queue as soon as they are whole, and an IPP job goes on until that of the queue has
/// ended. One for each process.
class NetworkPrinter {
 public:
  /// `directory` is for the printers' record and the documents on their way.
  NetworkPrinter(ShopPrinter& shop, NetworkPrinterSettings settings,
                 std::vector<std::string> devices, std::vector<OfferedMode> modes,
                 std::string directory);

  /// Serves until Stop is called by another thread, or a signal's. Fails if the port can't be had.
  [[nodiscard]] Expected<void> Run();
  /// Writes the record. For who ends the process next.
  void Save();

  /// Steps of a job, by the library's threads.
  [[nodiscard]] bool RunDocument(pappl_job_t* job);
  [[nodiscard]] bool EndRaster(pappl_job_t* job, const std::string& path);
  void DescribeDriver(pappl_pr_driver_data_t& data, ipp_t** attributes) const;
  [[nodiscard]] ShopPrinter& Shop() { return m_Shop; }

 private:
  using JobKey = std::pair<int, int>;  // of a printer and its job

  void Load();
  [[nodiscard]] std::string RecordPath() const;
  void MakePrinters();
  void AddFilters();
  [[nodiscard]] Expected<JobId> Submit(pappl_job_t* job);
  void Wake();
  void SubmitAhead();
  void CancelLost();
  [[nodiscard]] bool Follow(pappl_job_t* job, JobId id);

  ShopPrinter& m_Shop;
  NetworkPrinterSettings m_Settings;
  std::vector<std::string> m_Devices;
  std::vector<OfferedMode> m_Modes;
  std::string m_Directory;
  pappl_system_t* m_System = nullptr;
  bool m_Awake = false;
  std::mutex m_SaveMutex;
  std::mutex m_Mutex;
  std::set<JobKey> m_Held;              // by their senders; of the thread that looks
  std::map<JobKey, JobId> m_Submitted;  // jobs that wait for their turn at the printer
};

}  // namespace rastrel::server
