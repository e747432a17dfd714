#include "interpreter/password.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::interpreter {
namespace {

Failure Refused(const std::string& sentence) { return FailureOf(sentence, FailureCode::BadInput); }

Failure Unreadable(const std::string& path, int error) {
  return Refused("The file with the password can't be read: " +
                 Describe(Failure{"open", path, error}));
}

}  // namespace

Expected<std::string> ReadPassword(const std::string& path) {
  const os::FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.IsOpen()) return Unreadable(path, errno);
  std::string text(MaximumPassword + 1, '\0');
  std::size_t filled = 0;
  while (filled < text.size()) {
    const auto count = os::ReadSome(file.Get(), text.data() + filled, text.size() - filled);
    if (!count) return Unreadable(path, count.Error().error);
    if (*count == 0) break;
    filled += *count;
  }
  text.resize(std::min(text.find_first_of("\r\n"), filled));
  if (text.size() > MaximumPassword) {
    return Refused("The password is longer than " + std::to_string(MaximumPassword) + " bytes");
  }
  if (text.empty()) return Refused("The file with the password has an empty first line: " + path);
  return text;
}

// The interpreter's PDF code looks it up by name, wherever it is defined.
std::string PasswordText(std::string_view password) {
  if (password.empty()) return {};
  return "userdict /PDFPassword <" + os::HexFromBytes(password) + "> put\n";
}

Expected<SharedPassword> SharedPassword::Read(const std::string& path) {
  const auto password = ReadPassword(path);
  if (!password) return password.Error();
  os::FileDescriptor file(os::Calls().memory_file("password", MFD_CLOEXEC));
  if (!file.IsOpen()) return Failure{"memfd_create", {}, errno};
  if (const auto written = os::WriteAll(file.Get(), *password); !written) return written.Error();
  return SharedPassword(std::move(file));
}

std::string SharedPassword::Path() const {
  return "/proc/" + std::to_string(os::CurrentProcessId()) + "/fd/" + std::to_string(m_File.Get());
}

}  // namespace rastrel::interpreter
