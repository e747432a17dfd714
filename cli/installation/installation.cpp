#include "cli/installation/installation.h"

#include <cerrno>

#include "cli/installation/print_modes.h"
#include "cli/installation/sweep.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/job/print_check.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::cli {
namespace {

std::string NativeDirectory(const std::wstring& path) {
  std::string native = os::ToNative(path);
  while (native.size() > 1 && native.back() == '/') native.pop_back();
  return native;
}

Failure Unusable(const std::string& why) {
  return FailureOf("the data root can't be used: " + why + "; `rastrel doctor` tells more");
}

bool LacksSpace(const Failure& failure) {
  return failure.error == ENOSPC || failure.error == EDQUOT;
}

}  // namespace

Expected<void> CheckLayout() {
  const auto laidOut = standalone::DataRootState();
  if (laidOut) return {};
  return FailureOf("the data root can't be laid out: " + Describe(laidOut.Error()) +
                   "; `rastrel doctor` tells more");
}

Expected<void> MakeSureOfDataRoot() {
  if (auto laidOut = LayOutQuietly(); !laidOut) return laidOut;
  if (const auto laidOut = standalone::DataRootState(); !laidOut) {
    const bool isIncomplete =
        !os::Exists(os::FromNative(DevicesFile())) || ListModes().modes.empty();
    if (LacksSpace(laidOut.Error()) || isIncomplete) return CheckLayout();
  }
  if (const auto files = job::CheckPrintFiles(); !files) return Unusable(Describe(files.Error()));
  if (const std::string why = WhyNotWritable(JobsDirectory()); !why.empty()) return Unusable(why);
  return {};
}

Expected<void> LayOutQuietly() {
  if (const auto named = os::CheckForCommandLine(os::DataRoot()); !named)
    return Unusable(Describe(named.Error()));
  standalone::EnsureDataRoot();
  SweepLeftovers();
  return {};
}

std::string RipDirectory() { return NativeDirectory(CExePaths::Instance().m_RipDir); }

std::string SpoolDirectory() { return NativeDirectory(CExePaths::Instance().m_CFMDir); }

std::string SeparationDirectory() { return RipDirectory() + "/Separation"; }

Expected<std::string> MakeSeparationDirectory() {
  std::string place = SeparationDirectory();
  if (os::IsDirectory(os::FromNative(place))) return place;
  if (const auto made = os::MakeDirectory(os::FromNative(place), os::Access::Private); !made)
    return FailureOf("the separation directory can't be made: " + Describe(made.Error()));
  return place;
}

std::string ModesDirectory() { return NativeDirectory(CExePaths::Instance().m_PModesDir); }

std::string PagesDirectory() { return NativeDirectory(CExePaths::Instance().m_OutputDir); }

std::string JobsDirectory() { return os::DataRoot() + "/jobs"; }

std::string DevicesFile() { return os::DataRoot() + "/devices.txt"; }

std::string WhyNotWritable(const std::string& directory) { return job::WhyNotWritable(directory); }

}  // namespace rastrel::cli
