#include "cli/server/server_health.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>

#include "children/devices/devices.h"
#include "cli/console/shell_word.h"
#include "cli/installation/installation.h"
#include "cli/installation/printers.h"
#include "cli/server/certificate_dates.h"
#include "cli/server/job_filter.h"
#include "cli/server/queue_health.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/trusted_file.h"
#include "server/delivery/delivery.h"
#include "server/delivery/delivery_device.h"
#include "server/folders/folder_list.h"
#include "server/folders/folder_settings.h"
#include "server/queue/server_lock.h"
#include "server/web/access/secret_file.h"
#include "server/web/http/listening_socket.h"

namespace rastrel::cli {
namespace {

using State = HealthCheck::State;
using Checks = std::vector<HealthCheck>;

constexpr std::uint64_t FileLimit = 1 << 20;  // bytes, of a certificate, a key or settings
constexpr std::int64_t Soon = 30LL * 86400;   // seconds

std::int64_t Milliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

HealthCheck Bad(HealthCheck check, std::string text, std::string mend) {
  check.state = State::Bad;
  check.text = std::move(text);
  check.mend = std::move(mend);
  return check;
}

HealthCheck CheckSettings(const std::string& root, const Expected<server::ServerSettings>& read) {
  HealthCheck check{"server settings", State::Good, "read", root + "/server.toml", {}};
  if (!read)
    return Bad(check, Describe(read.Error()), "mend that line; the server does not start before");
  if (!os::Exists(os::FromNative(check.path))) check.text = "none: every key has its default";
  return check;
}

// A program's name as a delivery finds it: by its full path.
HealthCheck CheckProgramOf(HealthCheck check, const std::string& program) {
  check.path = program;
  if (!program.starts_with('/'))
    return Bad(check, "no full path", "name the program by its full path");
  if (!os::Exists(os::FromNative(program)))
    return Bad(check, "the program is missing", "install it, or name another in server.toml");
  if (!os::IsProgram(program))
    return Bad(check, "not executable", "chmod +x " + ShellWord(program));
  if (const auto trusted = os::CheckTrustedFile(program); !trusted)
    return Bad(check, Describe(trusted.Error()),
               "take the right to write there from others (chmod)");
  check.text = "the program is there";
  return check;
}

HealthCheck CheckFolderOf(HealthCheck check, const std::string& folder) {
  check.path = folder;
  if (!os::IsDirectory(os::FromNative(folder)))
    return Bad(check, "the folder is missing", "make or mount it, or name another in server.toml");
  if (const std::string why = WhyNotWritable(folder); !why.empty())
    return Bad(check, why, "give the server's user the right to write there (chown, chmod)");
  check.text = "the folder is writable";
  return check;
}

server::DeviceKind KindOf(server::DeviceWay way) {
  switch (way) {
    case server::DeviceWay::Program: return server::DeviceKind::Program;
    case server::DeviceWay::Socket: return server::DeviceKind::Socket;
    case server::DeviceWay::PrintQueue: return server::DeviceKind::Queue;
    default: return server::DeviceKind::Folder;
  }
}

Expected<server::FolderSettings> SettingsOfFolder(const std::string& folder) {
  const std::string path = folder + "/" + std::string(server::FolderSettingsName);
  const auto text = os::ReadWholeFile(os::FromNative(path), FileLimit);
  if (!text) return FailureAt(path, text.Error());
  if (auto trusted = os::CheckTrustedFile(path); !trusted) return trusted.Error();
  return server::ReadFolderSettings(*text, path);
}

void CheckHotFolders(Checks& checks, const std::string& root,
                     const Expected<server::ServerSettings>& settings) {
  const auto folders = server::FoldersOf(root);
  if (!folders) {
    checks.push_back({"hot folders", State::Bad, Describe(folders.Error()),
                      server::FolderListPath(root), "mend that line"});
    return;
  }
  const auto sections = ReadPrinters();
  const auto known = [&](const std::string& name) {
    if (!settings || !sections) return true;  // other rows say why
    return devices::FindDevice(*sections, name) != nullptr ||
           std::ranges::find(settings->devices, name, &server::DeviceSettings::name) !=
               settings->devices.end();
  };
  for (const std::string& folder : *folders) checks.push_back(CheckHotFolder(folder, known));
}

// The directory that server.toml names; without one, that of the data root need not be there.
HealthCheck CheckTemplates(const std::string& folder) {
  HealthCheck check{"templates", State::Good, "the folder is there", folder, {}};
  const std::wstring path = os::FromNative(folder);
  if (!os::IsDirectory(path))
    return Bad(check, "the folder is missing", "make or mount it, or name another in server.toml");
  if (!os::IsReadable(path))
    return Bad(check, "it can't be read", "give the server's user the right to read there (chmod)");
  return check;
}

void CheckParts(Checks& checks, const std::string& root, const server::ServerSettings& settings) {
  const bool isServing = server::IsServerRunning(root);
  if (settings.printer.on)
    checks.push_back(
        CheckPort("printer's port", settings.printer.address, settings.printer.port, isServing));
  if (settings.web.on)
    checks.push_back(CheckPort("page's port", settings.web.address, settings.web.port, isServing));
  if (settings.web.on && !settings.web.certificate.empty())
    checks.push_back(CheckCertificate(settings.web, Milliseconds() / 1000));
  if (settings.web.on && !settings.web.templates.empty())
    checks.push_back(CheckTemplates(settings.web.templates));
  for (const server::DeviceSettings& device : settings.devices)
    checks.push_back(CheckDevice(device));
}

}  // namespace

HealthCheck CheckPort(const char* name, const std::string& address, int port, bool isServing) {
  const std::string place = address + " port " + std::to_string(port);
  HealthCheck check{name, State::Good, place + " is free", {}, {}};
  const auto socket = server::web::ListenAt(address, port);
  if (socket) return check;
  if (socket.Error().error != EADDRINUSE)
    return Bad(check, Describe(socket.Error()), "name another address or port in server.toml");
  if (!isServing)
    return Bad(check, place + " is held by another program",
               "end that, or name another port in server.toml");
  check.text = place + " is in use, while this data root's server runs";
  return check;
}

HealthCheck CheckCertificate(const server::WebSettings& web, std::int64_t now) {
  HealthCheck check{"certificate", State::Good, {}, web.certificate, {}};
  const char* const renew = "renew it, and restart the server";
  const auto text = os::ReadWholeFile(os::FromNative(web.certificate), FileLimit);
  if (!text) return Bad(check, Describe(text.Error()), "name a file that this user can read");
  const auto dates = DatesOfCertificate(*text);
  if (!dates) return Bad(check, Describe(dates.Error()), "name a certificate as PEM");
  if (const auto key = server::web::ReadSecretFile(web.key, FileLimit); !key) {
    check.path = web.key;
    return Bad(check, "the key: " + Describe(key.Error()),
               "let this user alone read it: chmod 600");
  }
  const std::string until = TimeText(dates->until * 1000);
  if (now < dates->from)
    return Bad(check, "it counts from " + TimeText(dates->from * 1000) + " on",
               "set the clock, or wait");
  if (now > dates->until) return Bad(check, "it ended at " + until, renew);
  check.text = "it counts until " + until;
  if (dates->until - now < Soon) {
    check.state = State::Warning;
    check.mend = renew;
  }
  return check;
}

HealthCheck CheckHotFolder(const std::string& folder,
                           const std::function<bool(const std::string&)>& known) {
  HealthCheck check{"hot folder", State::Good, {}, folder, {}};
  std::error_code error;
  const auto state = std::filesystem::symlink_status(folder, error);
  const std::string remove = "or take it off the list: rastrel folder remove " + ShellWord(folder);
  if (std::filesystem::is_symlink(state))
    return Bad(check, "a link, which is left alone", "name the directory itself, " + remove);
  if (!std::filesystem::is_directory(state))
    return Bad(check, "missing", "make or mount it, " + remove);
  if (const std::string why = WhyNotWritable(folder); !why.empty())
    return Bad(check, why, "give the server's user the right to write there (chown, chmod)");
  const auto settings = SettingsOfFolder(folder);
  if (!settings)
    return Bad(check, "files wait: " + Describe(settings.Error()), "mend its settings");
  if (!known(settings->device))
    return Bad(check, "its device, '" + settings->device + "', is not known",
               "name one of server.toml or devices.txt");
  check.text = "files go to '" + settings->device + "'";
  return check;
}

HealthCheck CheckDevice(const server::DeviceSettings& settings) {
  HealthCheck check{"device", State::Good, {}, {}, {}};
  const auto examine = [&]() -> HealthCheck {
    if (settings.way == server::DeviceWay::Files) {
      check.text = "files as devices.txt says";
      return check;
    }
    const auto device =
        server::DeviceWithAddress(settings.name, KindOf(settings.way), settings.address);
    if (!device) return Bad(check, Describe(device.Error()), "mend its address in server.toml");
    switch (device->kind) {
      case server::DeviceKind::Folder: return CheckFolderOf(check, device->path);
      case server::DeviceKind::Program:
        return CheckProgramOf(check, device->command.empty() ? "" : device->command.front());
      case server::DeviceKind::Socket:
        // Not asked: a device may take a connection for a job.
        check.text = device->host + " port " + std::to_string(device->port) + ", not asked";
        return check;
      case server::DeviceKind::Queue: break;
    }
    if (const auto found = server::FindPrintQueue(*device); !found)
      return Bad(check, Describe(found.Error()), "set it up in the print system, or name another");
    check.text = "the print system has the queue";
    return check;
  };
  HealthCheck done = examine();
  done.text = "'" + settings.name + "': " + done.text;
  return done;
}

ExitStatus ServerHealthCommand(const Invocation& invocation) {
  const std::string root = os::DataRoot();
  const auto settings = server::SettingsOf(root);
  Checks checks{CheckSettings(root, settings)};
  if (settings) CheckParts(checks, root, *settings);
  CheckHotFolders(checks, root, settings);
  if (os::Exists(os::FromNative(root + "/server/queue.db"))) {
    const auto queue = ExamineQueue(root, Milliseconds());
    checks.insert(checks.end(), queue.begin(), queue.end());
  } else {
    checks.push_back({"queue", State::Good, "none yet", root + "/server", {}});
  }
  return WriteChecks(checks, invocation.Has(OptionId::Json)) ? ExitStatus::NotInstalled
                                                             : ExitStatus::Done;
}

}  // namespace rastrel::cli
