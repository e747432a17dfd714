#include "server/settings/server_settings.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

#include "cutting/toml/strict_toml.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/trusted_file.h"

namespace rastrel::server {
namespace {

using cutting::TomlTable;

constexpr std::size_t MaximumDevices = 1000;
constexpr std::size_t MaximumName = 1024;
constexpr std::size_t MaximumNames = 100;
constexpr int MaximumSeconds = 604800;
// In the order of DeviceWay.
constexpr std::array<std::string_view, 5> Ways{"files", "folder", "program", "socket", "queue"};

void TakeWhole(TomlTable& table, std::string_view key, int least, int greatest, int& value) {
  value = table.Whole(key, least, greatest).value_or(value);
}

// "host:port", with a port from 1 to 65535.
bool IsSocketAddress(const std::string& address) {
  const std::size_t colon = address.rfind(':');
  if (colon == address.npos || colon == 0) return false;
  const std::string port = address.substr(colon + 1);
  if (port.empty() || port.size() > 5 || port.find_first_not_of("0123456789") != port.npos)
    return false;
  return std::stoi(port) >= 1 && std::stoi(port) <= 65535;
}

void CheckAddress(TomlTable& table, const DeviceSettings& device) {
  const bool isProgram = device.way == DeviceWay::Program;
  const bool isPath = device.way == DeviceWay::Folder || isProgram;
  // A program may be a word in quotation marks (WordsOf in server/delivery).
  const bool isQuoted = isProgram && device.address.starts_with('"');
  if (device.way == DeviceWay::Files) {
    if (table.Has("address")) table.Fail("address", "a device of kind 'files' has no address");
  } else if (device.address.empty()) {
    table.Fail("address", "the device needs an address");
  } else if (isPath && !std::string_view(device.address).substr(isQuoted).starts_with('/')) {
    table.Fail("address", "the address is to be a full path");
  } else if (isProgram && std::ranges::count(device.address, '"') % 2 != 0) {
    table.Fail("address", "a quotation mark of the address has no end");
  } else if (device.way == DeviceWay::Socket && !IsSocketAddress(device.address)) {
    table.Fail("address", "the address is to be host:port");
  }
}

DeviceSettings DeviceOf(TomlTable& table) {
  DeviceSettings device;
  device.name = table.Text("name").value_or("");
  if (device.name.empty() || device.name.size() > MaximumName)
    table.Fail("name", "the device needs a name of 1 to 1024 bytes");
  device.way = static_cast<DeviceWay>(table.Choice("kind", Ways).value_or(0));
  device.address = table.Text("address").value_or("");
  CheckAddress(table, device);
  TakeWhole(table, "timeout", 0, MaximumSeconds, device.timeoutSeconds);
  TakeWhole(table, "retries", 0, 1000, device.retries);
  TakeWhole(table, "pause", 0, 86400, device.pauseSeconds);
  device.againAfterCutOff = table.Truth("again-after-cut-off").value_or(false);
  table.Finish();
  return device;
}

void TakeDevices(TomlTable& root, ServerSettings& settings) {
  for (TomlTable& table : root.Tables("device", MaximumDevices)) {
    DeviceSettings device = DeviceOf(table);
    if (std::ranges::find(settings.devices, device.name, &DeviceSettings::name) !=
        settings.devices.end())
      table.Fail("name", "there is a device of that name already");
    settings.devices.push_back(std::move(device));
  }
}

void TakeRetention(TomlTable& root, Retention& retention) {
  auto table = root.Table("retention");
  if (!table) return;
  TakeWhole(*table, "days", 0, 36500, retention.days);
  TakeWhole(*table, "jobs", 0, 1'000'000, retention.jobs);
  TakeWhole(*table, "megabytes", 0, 1'000'000'000, retention.megabytes);
  table->Finish();
}

// "127.0.0.1", "::1", "0.0.0.0", a host's name: what a listener is bound to.
bool IsListenAddress(const std::string& address) {
  constexpr std::string_view Allowed =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-:";
  return !address.empty() && address.size() <= 255 &&
         address.find_first_not_of(Allowed) == address.npos;
}

void TakePrinter(TomlTable& root, NetworkPrinterSettings& printer) {
  auto table = root.Table("printer");
  if (!table) return;
  printer.on = table->Truth("on").value_or(true);
  printer.address = table->Text("address").value_or(printer.address);
  if (!IsListenAddress(printer.address))
    table->Fail("address", "the address is to be a host's name or number");
  TakeWhole(*table, "port", 1024, 65535, printer.port);
  table->Finish();
}

bool IsThisMachine(const std::string& address) {
  return address == "localhost" || address == "::1" ||
         (address.starts_with("127.") && address.find_first_not_of("0123456789.") == address.npos);
}

// Host names are compared in lower case.
void TakeNames(TomlTable& table, WebSettings& web) {
  web.names = table.Texts("names", MaximumNames).value_or(web.names);
  for (std::string& name : web.names) {
    if (!IsListenAddress(name)) table.Fail("names", "each is to be a host's name or number");
    for (char& one : name)
      if (one >= 'A' && one <= 'Z') one = static_cast<char>(one - 'A' + 'a');
  }
}

void TakeWeb(TomlTable& root, WebSettings& web) {
  auto table = root.Table("web");
  if (!table) return;
  web.on = table->Truth("on").value_or(true);
  web.address = table->Text("address").value_or(web.address);
  if (!IsListenAddress(web.address))
    table->Fail("address", "the address is to be a host's name or number");
  TakeWhole(*table, "port", 1024, 65535, web.port);
  web.certificate = table->Text("certificate").value_or("");
  web.key = table->Text("key").value_or("");
  web.templates = table->Text("templates").value_or("");
  TakeNames(*table, web);
  for (const auto& [key, path] : {std::pair("certificate", web.certificate), {"key", web.key}})
    if (!path.empty() && path.front() != '/')
      table->Fail(key, "the file is to be named by its full path");
  if (!web.templates.empty() && web.templates.front() != '/')
    table->Fail("templates", "the directory is to be named by its full path");
  if (web.certificate.empty() != web.key.empty())
    table->Fail(web.key.empty() ? "certificate" : "key", "TLS needs both certificate and key");
  if (web.certificate.empty() && !IsThisMachine(web.address))
    table->Fail("address", "an address that other machines reach needs certificate and key");
  table->Finish();
}

}  // namespace

DeviceSettings ServerSettings::DeviceNamed(const std::string& name) const {
  const auto found = std::ranges::find(devices, name, &DeviceSettings::name);
  if (found != devices.end()) return *found;
  DeviceSettings device;
  device.name = name;
  return device;
}

std::set<std::string> ServerSettings::AgainAfterCutOff() const {
  std::set<std::string> names;
  for (const DeviceSettings& device : devices)
    if (device.againAfterCutOff) names.insert(device.name);
  return names;
}

Expected<ServerSettings> ReadSettings(std::string_view text, const std::string& name) {
  auto file = cutting::TomlFile::Parse(text, name);
  if (!file) return file.Error();
  ServerSettings settings;
  TomlTable root = file->Root();
  TakeWhole(root, "workers", 0, 256, settings.workers);
  TakeWhole(root, "ready-jobs", 1, 1000, settings.readyJobs);
  TakeWhole(root, "quarantine-after", 0, 1000, settings.quarantineAfter);
  TakeWhole(root, "job-megabytes", 0, 1'000'000'000, settings.jobMegabytes);
  TakeRetention(root, settings.retention);
  TakePrinter(root, settings.printer);
  TakeWeb(root, settings.web);
  TakeDevices(root, settings);
  root.Finish();
  if (auto fine = file->Check(); !fine) return fine.Error();
  return settings;
}

Expected<ServerSettings> SettingsOf(const std::string& dataRoot) {
  const std::string path = dataRoot + "/server.toml";
  const std::wstring wide = os::FromNative(path);
  if (!os::Exists(wide) && !os::IsLink(wide)) return ServerSettings();
  if (auto trusted = os::CheckTrusted(path, dataRoot); !trusted) return trusted.Error();
  const auto text = os::ReadWholeFile(wide, cutting::TomlFileLimit + 1);
  if (!text) return FailureAt(path, text.Error());
  return ReadSettings(*text, path);
}

}  // namespace rastrel::server
