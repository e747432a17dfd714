#include "rastrel/prefix/prefix_name.h"

#include <cerrno>
#include <utility>

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/prefix/path_names.h"
#include "rastrel/prefix/selection.h"

namespace rastrel::prefix {

namespace {

constexpr std::wstring_view Extension = L".psp";
constexpr int Attempts = 10'000;

// Whether it is the job's own file, in whatever case. Only a job of that extension can be, and only
// for it the directory is searched.
bool IsJob(const std::string& path, const std::wstring& jobPath) {
  return os::LowerAscii(jobPath).ends_with(Extension) && os::ToNative(jobPath) == path;
}

// A job that is a kept prefix begins as one, and must stay all the same.
Expected<os::ClaimedFile> ClaimRequired(const std::string& path, const std::wstring& jobPath) {
  if (IsJob(path, jobPath)) return Failure{"open", path, EEXIST};
  auto file = os::ClaimedFile::TakeOver(path, ExitServer);
  if (!file && file.Error().error == ENOENT) return os::ClaimedFile::Create(path);
  return file;
}

}  // namespace

Expected<NamedPrefix> ClaimPrefix(const std::wstring& jobPath) {
  const std::wstring required = PrefixPathOf(jobPath);
  const std::string native = os::ToNative(required);
  auto first = ClaimRequired(native, jobPath);
  if (first) return NamedPrefix{required, *std::move(first)};
  if (first.Error().error != EEXIST) return first.Error();
  const std::wstring stem = required.substr(0, required.size() - Extension.size());
  for (int number = 1; number <= Attempts; ++number) {
    std::wstring path = stem + L"-rastrel-" + std::to_wstring(number) + std::wstring(Extension);
    auto file = os::ClaimedFile::Create(os::ToNative(path));
    if (file) return NamedPrefix{std::move(path), *std::move(file)};
    if (file.Error().error != EEXIST) return file.Error();
  }
  return Failure{"open", native, EEXIST};
}

}  // namespace rastrel::prefix
