#pragma once

#include <functional>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "server/queue/job_queue.h"
#include "server/settings/server_settings.h"
#include "server/web/templates/run_merge.h"

namespace rastrel::server::web {

/// What handlers work with. One for the program; lives as long as the server. Its functions are
/// those of the commands, which this room doesn't know; each may be called by several threads.
struct Shop {
  JobQueue& queue;
  std::string dataRoot;     ///< native
  std::string pageFiles;    ///< native: the directory `web` of the installation's data
  ServerSettings settings;  ///< as they were at the start
  /// Names of the devices: of the settings, then of devices.txt, read again at each call.
  std::function<Expected<std::vector<std::string>>()> devices;
  /// Checks file, options and work of a job that is brought, by the code of `rastrel jobs add`.
  std::function<Expected<void>(const JobRequest&)> check;
  /// Pages as people write them, "1-3,5", as numbers from 1.
  std::function<Expected<std::vector<int>>(const std::string&)> pagesOf;
  /// Names of the print modes that a job may name.
  std::function<std::vector<std::string>()> modes;
  /// The table of jobs that `rastrel jobs export` writes: the row of names, and that of a job.
  std::function<std::string()> tableHead;
  std::function<std::string(const Job&)> tableRow;
  /// Removes kept pages by their name in the spool.
  std::function<void(const std::string& spool)> removePages;
  /// Runs `rastrel merge`, for templates; empty: there are none.
  RunMerge runMerge{};
  std::string spool{};  ///< native: the directory of kept pages; empty: its place in the data root
};

}  // namespace rastrel::server::web
