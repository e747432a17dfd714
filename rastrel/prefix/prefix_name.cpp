#include "rastrel/prefix/prefix_name.h"

#include <cerrno>
#include <utility>

#include "rastrel/platform/os/path.h"
#include "rastrel/prefix/path_names.h"
#include "rastrel/prefix/selection.h"

namespace rastrel::prefix {

namespace {

constexpr std::wstring_view Extension = L".psp";
constexpr int Attempts = 10'000;

// A job that is a kept prefix begins as one, and must stay all the same.
Expected<os::ClaimedFile> ClaimRequired(const std::wstring& path, const std::wstring& jobPath) {
  const std::string native = os::ToNative(path);
  if (native == os::ToNative(jobPath)) return Failure{"open", native, EEXIST};
  auto file = os::ClaimedFile::TakeOver(path, ExitServer);
  if (!file && file.Error().error == ENOENT) return os::ClaimedFile::Create(path);
  return file;
}

}  // namespace

Expected<NamedPrefix> ClaimPrefix(const std::wstring& jobPath) {
  const std::wstring required = PrefixPathOf(jobPath);
  const std::wstring stem = required.substr(0, required.size() - Extension.size());
  for (int number = 0; number <= Attempts; ++number) {
    std::wstring path =
        number == 0 ? required
                    : stem + L"-rastrel-" + std::to_wstring(number) + std::wstring(Extension);
    auto file = number == 0 ? ClaimRequired(path, jobPath) : os::ClaimedFile::Create(path);
    if (file) return NamedPrefix{std::move(path), *std::move(file)};
    if (file.Error().error != EEXIST) return file.Error();
  }
  return Failure{"open", os::ToNative(required), EEXIST};
}

}  // namespace rastrel::prefix
