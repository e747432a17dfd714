#include "server/web/access/audit_log.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <nlohmann/json.hpp>
#include <string_view>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/shown_text.h"

namespace rastrel::server::web {
namespace {

constexpr std::size_t TextLimit = 1024;

std::string Clean(std::string_view text) { return os::CleanLine(text.substr(0, TextLimit)); }

std::string PresentTime() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  std::array<char, 32> text{};
  if (::gmtime_r(&now, &parts) == nullptr) return {};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

std::string LineOf(const Request& request, int status) {
  nlohmann::ordered_json line;
  line["time"] = PresentTime();
  line["user"] = Clean(request.caller.name);
  line["role"] = NameOf(request.caller.role);
  line["from"] = Clean(request.address);
  line["method"] = NameOf(request.method);
  line["path"] = Clean(request.path);
  line["status"] = status;
  return line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace

Expected<void> AuditLog::Add(const Request& request, int status) {
  const std::string line = LineOf(request, status);
  const std::lock_guard lock(m_Mutex);
  const std::wstring path = os::FromNative(m_Path);
  if (static_cast<std::int64_t>(os::FileSize(path)) > m_SizeLimit)
    if (auto renamed = os::RenameFile(path, os::FromNative(m_Path + ".1")); !renamed)
      return renamed;
  const os::FileDescriptor file(::open(
      m_Path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY, 0600));
  if (!file.IsOpen()) return Failure{"open", m_Path, errno};
  if (auto written = os::WriteAll(file.Get(), line); !written)
    return FailureAt(m_Path, written.Error());
  return {};
}

}  // namespace rastrel::server::web
