#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// The settings of the shop's server: "server.toml" of the data root. People write it; the
/// server reads it when it starts. docs/formats/server-settings.md has its keys.
namespace rastrel::server {

/// How finished pages come to a device.
enum class DeviceWay {
  Files,       ///< as devices.txt says of the name: a file, or a program
  Folder,      ///< into the directory `address`, by another machine's folder say
  Program,     ///< to the program `address`
  Socket,      ///< to `address`, "host:port"
  PrintQueue,  ///< to the system's print queue `address`
};

/// A [[device]] of the file. A section of devices.txt without one has these defaults.
struct DeviceSettings {
  std::string name;
  DeviceWay way = DeviceWay::Files;
  std::string address;            ///< empty for Files
  int timeoutSeconds = 600;       ///< without progress; 0: never
  int retries = 3;                ///< after the first attempt, of deliveries that sent nothing
  int pauseSeconds = 10;          ///< before the first retry; twice as long before each next
  bool againAfterCutOff = false;  ///< a cut-off delivery is sent again, and is not Uncertain
};

/// How long jobs that have ended are kept. 0 is no limit.
struct Retention {
  int days = 30;
  int jobs = 10000;
  int megabytes = 0;  ///< of their files
};

/// The printer on the network.
struct NetworkPrinterSettings {
  bool on = false;                    ///< true if the file has the section [printer]
  std::string address = "127.0.0.1";  ///< other machines reach it only at another one, with TLS
  int port = 8631;
};

/// The HTTP interface.
struct WebSettings {
  bool on = false;                    ///< true if the file has the section [web]
  std::string address = "127.0.0.1";  ///< another than this machine's own needs TLS
  int port = 8632;
  std::string certificate;         ///< full native path, PEM; empty: no TLS
  std::string key;                 ///< ...
  std::vector<std::string> names;  ///< host names that browsers may use, besides the address
  std::string templates;  ///< directory, full native path; empty: "templates" of the data root
};

struct ServerSettings {
  int workers = 0;          ///< jobs interpreted at a time; 0: as many as processors
  int readyJobs = 8;        ///< interpreted ahead for each device
  int quarantineAfter = 3;  ///< failures; 0: never
  int jobMegabytes = 0;     ///< largest file of a job; 0: no limit
  Retention retention;
  NetworkPrinterSettings printer;
  WebSettings web;
  std::vector<DeviceSettings> devices;

  /// The device of that name, or the defaults under it.
  [[nodiscard]] DeviceSettings DeviceNamed(const std::string& name) const;
  /// Names of the devices that get a delivery again.
  [[nodiscard]] std::set<std::string> AgainAfterCutOff() const;
};

/// Reads the text of a settings file; `name` is the file's name in failures, which have line and
/// column.
[[nodiscard]] Expected<ServerSettings> ReadSettings(std::string_view text, const std::string& name);

/// Those of a data root; the defaults if it has no file. Refuses a file that others may change,
/// since it names programs.
[[nodiscard]] Expected<ServerSettings> SettingsOf(const std::string& dataRoot);

}  // namespace rastrel::server
