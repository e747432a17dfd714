// The operations of a job's page list on the disk. The list itself is in job/cfm_file.h.

#include "rastrel/cfm/directories.h"
#include "rastrel/cfm/page_directory.h"
#include "rastrel/job/app_log.h"
#include "rastrel/job/cfm_file.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cfm {

CString PageDirectory(const CCFMFileEntry& entry) {
  const CString& directory =
      entry.Directory == L"default" ? CExePaths::Instance().m_OutputDir : entry.Directory;
  return os::WithClosingBackslash(directory) + entry.FileName;
}

}  // namespace rastrel::cfm

using rastrel::cfm::PageDirectory;

namespace {

// A rename, if its result is the same as that of the copy and removal. A source that
// DeleteDirectory would refuse must not vanish either.
bool MovePage(const CString& source, const CString& target) {
  if (source.size() >= ShortestRemovablePath && rastrel::os::TryRenameTree(source, target))
    return true;
  // A page that is moved to where it is has just been removed as its own target, and making the
  // target would make the source anew: there is nothing to copy all the same.
  const bool hasSource = rastrel::os::Exists(source);
  if (!CopyTree(source.c_str(), target.c_str()) || !hasSource) {
    DeleteDirectory(target.c_str());
    return false;
  }
  return DeleteDirectory(source.c_str());
}

// Of a link only the name goes: the pages would be copied into the directory that it leads to.
void RemoveTarget(const CString& target) {
  if (rastrel::os::IsLink(target)) {
    static_cast<void>(rastrel::os::RemoveFile(target));
  } else {
    DeleteDirectory(target.c_str());
  }
}

}  // namespace

std::int64_t CCFMFile::GetSizeOnDisk() {
  if (TotalSize != 0) return TotalSize;
  for (const CCFMFileEntry& entry : Entries)
    TotalSize += static_cast<std::int64_t>(GetTreeSize(PageDirectory(entry).c_str()));
  return TotalSize;
}

bool CCFMFile::DeletePages() {
  bool result = true;
  for (const CCFMFileEntry& entry : Entries)
    result = DeleteDirectory(PageDirectory(entry).c_str()) && result;
  // The job's own directory goes with its pages: the spool's ".cfm", or where the RIP put them. The
  // text is taken unchanged, even if it is "default".
  if (!Entries.empty()) result = DeleteDirectory(Entries.front().Directory.c_str()) && result;
  Entries.clear();
  TotalSize = 0;
  return result;
}

bool CCFMFile::MovePages(const CString& destination) {
  for (CCFMFileEntry& entry : Entries) {
    const CString source = PageDirectory(entry);
    const CString target = rastrel::os::WithClosingBackslash(destination) + entry.FileName;
    if (rastrel::os::Exists(target)) {
      CAppLog::Instance().Printf(
          L"Warning: Spool: Destination directory already exists: '%s'. Overwriting.", target);
      RemoveTarget(target);
    }
    if (!MovePage(source, target)) {
      CAppLog::Instance().Printf(L"Move dir '%s' to '%s' failed.", source, target);
      return false;
    }
    entry.Directory = destination;
  }
  return true;
}
