#include "rastrel/platform/os/temporary_name.h"

#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <string_view>

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::os {
namespace {

constexpr std::wstring_view Mark = L"XXXXXX";
constexpr std::string_view Characters = "abcdefghijklmnopqrstuvwxyz012345";  // 32: no bias
constexpr int AttemptLimit = 100;

// A link that leads nowhere takes a name too.
bool IsTaken(const std::wstring& path) {
  struct stat state {};
  return ::lstat(ToNative(path).c_str(), &state) == 0;
}

bool Draw(std::array<unsigned char, Mark.size()>& bytes) {
  ssize_t got;
  do {
    got = Calls().random(bytes.data(), bytes.size());
  } while (got < 0 && errno == EINTR);
  return got == static_cast<ssize_t>(bytes.size());
}

}  // namespace

Expected<std::wstring> CompleteTemporaryName(std::wstring pattern) {
  if (!pattern.ends_with(Mark)) return Failure{"name", ToNative(pattern), EINVAL};
  const std::size_t place = pattern.size() - Mark.size();
  for (int round = 0; round < AttemptLimit; ++round) {
    std::array<unsigned char, Mark.size()> bytes{};
    if (!Draw(bytes)) return Failure{"getrandom", {}, errno};
    for (std::size_t index = 0; index < bytes.size(); ++index)
      pattern[place + index] =
          static_cast<wchar_t>(Characters[bytes.at(index) % Characters.size()]);
    if (!IsTaken(pattern)) return pattern;
  }
  return Failure{"name", ToNative(pattern), EEXIST};
}

}  // namespace rastrel::os
