#include "rastrel/platform/standalone/data_root.h"

#include <cerrno>
#include <map>
#include <mutex>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_lock.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/platform/standalone/install_record.h"

namespace rastrel::standalone {
namespace {

constexpr const wchar_t* Folders[] = {L"Queue/rip/System/pmodes",
                                      L"Queue/rip/System/c-out",
                                      L"Queue/rip/CFM",
                                      L"drive_c/tmp",
                                      L"jobs",
                                      L"warm"};
constexpr const wchar_t* RecordName = L"Queue/.installed";
constexpr std::uint64_t LargestRecord = std::uint64_t{16} << 20;
// The maximum depth of shipped folders. Those that ship are three deep.
constexpr int DeepestFolder = 16;

constexpr std::uint64_t LargestShipped = std::uint64_t{64} << 20;

// Whether the file has the content of the shipped one.
bool IsCopy(const std::wstring& shipped, const os::FileStamp& ofShipped, const std::wstring& path,
            const os::FileStamp& ofPath) {
  if (ofShipped == ofPath) return true;  // a copy keeps the time
  if (ofShipped.size != ofPath.size) return false;
  const auto content = os::ReadWholeFile(shipped, LargestShipped);
  const auto present = os::ReadWholeFile(path, LargestShipped);
  return content && present && *content == *present;
}

// Brings one root up to date. Keeps the first failure and goes on.
class RootLayout {
 public:
  explicit RootLayout(const std::string& root) : m_Root(os::FromNative(root) + L"/") {}

  Expected<void> Run() {
    MakeFolder(L"");
    const Expected<os::FileLock> lock = os::FileLock::Acquire(m_Root + L".lock");
    if (!lock) KeepFirst(m_Result, lock.Error());
    for (const wchar_t* folder : Folders) MakeFolder(folder);
    // Without the lock another process may be in the middle of the same work.
    if (lock) Install();
    return m_Result;
  }

 private:
  void Install() {
    const std::wstring recordPath = m_Root + RecordName;
    const Expected<std::string> text = os::ReadWholeFile(recordPath, LargestRecord);
    if (text) m_Record = ParseInstallRecord(*text);
    const InstallRecord before = m_Record;
    InstallShipped(FindResources());
    if (m_Record == before) return;
    const Expected<void> written =
        os::ReplaceFile(recordPath, FormatInstallRecord(m_Record), os::Access::Private);
    if (!written) KeepFirst(m_Result, written.Error());
  }

  void InstallShipped(const Resources& shipped) {
    if (!shipped.programs.empty()) InstallPrograms(os::FromNative(shipped.programs) + L"/");
    if (shipped.files.empty()) return;
    const std::wstring files = os::FromNative(shipped.files) + L"/";
    InstallFolder(files + L"rip/", L"Queue/rip/", 0);
    InstallFolder(files + L"tmp/", L"drive_c/tmp/", 0);
    if (os::Exists(files + L"devices.txt")) InstallFile(files + L"devices.txt", L"devices.txt");
  }

  void InstallPrograms(const std::wstring& source) {
    const Expected<std::vector<std::wstring>> names = os::ListDirectory(source);
    if (!names) return KeepFirst(m_Result, names.Error());
    for (const std::wstring& name : *names) {
      // The children find it there (interpreter/warm_place.h).
      if (name == L"rastrel-warm") InstallFile(source + name, L"warm/" + name);
      if (!name.ends_with(L".exe")) continue;
      const bool queue = name == L"JobSpool.exe";
      InstallFile(source + name, (queue ? L"Queue/" : L"Queue/rip/") + name);
    }
  }

  void InstallFolder(const std::wstring& source, const std::wstring& target, int depth) {
    if (!os::IsDirectory(source) || depth > DeepestFolder) return;
    MakeFolder(target);
    const Expected<std::vector<std::wstring>> names = os::ListDirectory(source);
    if (!names) return KeepFirst(m_Result, names.Error());
    for (const std::wstring& name : *names) {
      if (os::IsDirectory(source + name)) {
        InstallFolder(source + name + L"/", target + name + L"/", depth + 1);
      } else {
        InstallFile(source + name, target + name);
      }
    }
  }

  // Copies one file where there is none, or one that this library installed, untouched and of
  // another version.
  void InstallFile(const std::wstring& source, const std::wstring& target) {
    const Expected<os::FileStamp> shipped = os::StampOf(source);
    if (!shipped) return KeepFirst(m_Result, shipped.Error());
    const std::wstring path = m_Root + target;
    const std::string name = os::ToNative(path).substr(os::ToNative(m_Root).size());
    const Expected<os::FileStamp> present = os::StampOf(path);
    if (present) {
      // The record is written last, so that a first use that was cut off leaves copies without it.
      if (!m_Record.contains(name) && IsCopy(source, *shipped, path, *present))
        m_Record[name] = *present;
      const auto recorded = m_Record.find(name);
      const bool ours = recorded != m_Record.end() && recorded->second == *present;
      if (!ours || *present == *shipped) return;
    } else if (present.Error().error != ENOENT) {
      return KeepFirst(m_Result, present.Error());
    }
    CopyWhole(source, path, name);
  }

  void CopyWhole(const std::wstring& source, const std::wstring& target, const std::string& name) {
    // Beside the target, so that a program that runs is replaced and never written to.
    const std::wstring temporary = target + L".new";
    const Expected<void> copied = os::CopyFileOver(source, temporary, os::Access::Private);
    if (!copied) return KeepFirst(m_Result, copied.Error());
    if (const auto renamed = os::RenameFile(temporary, target); !renamed) {
      KeepFirst(m_Result, renamed.Error());
      static_cast<void>(os::RemoveFile(temporary));
      return;
    }
    const Expected<os::FileStamp> stamp = os::StampOf(target);
    if (stamp) m_Record[name] = *stamp;
  }

  void MakeFolder(const std::wstring& folder) {
    if (const auto made = os::MakePath(m_Root + folder, os::Access::Private); !made)
      KeepFirst(m_Result, FailureAt(os::ToNative(m_Root + folder), made.Error()));
  }

  std::wstring m_Root;
  InstallRecord m_Record;
  Expected<void> m_Result;  // or the first failure
};

}  // namespace

Expected<void> LayOutDataRoot() {
  const std::string root = os::DataRoot();
  if (auto named = os::CheckForCommandLine(root); !named) return named;
  return RootLayout(root).Run();
}

void EnsureDataRoot() { static_cast<void>(DataRootState()); }

Expected<void> DataRootState() {
  static std::mutex mutex;
  static auto* const states = new std::map<std::string, Expected<void>>;
  const std::scoped_lock lock(mutex);
  const std::string root = os::DataRoot();
  const auto known = states->find(root);
  if (known != states->end()) return known->second;
  return states->emplace(root, LayOutDataRoot()).first->second;
}

}  // namespace rastrel::standalone
