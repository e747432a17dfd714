#include "rastrel/job/job_file.h"

#include "rastrel/job/format_string.h"
#include "rastrel/job/record_version.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/os/file.h"

RASTREL_IMPLEMENT_DYNCREATE(CJTSFile, CObject)

namespace {

CString WithoutAll(CString text, const CString& part) {
  if (part.empty()) return text;
  for (auto at = text.find(part); at != CString::npos; at = text.find(part, at))
    text.erase(at, part.size());
  return text;
}

}  // namespace

CJTSFile::~CJTSFile() = default;

void CJTSFile::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    archive << rastrel::job::RecordVersion << FileName;
    return;
  }
  CString text;
  if (rastrel::job::ReadRecordVersion(archive)) archive >> text;
  FileName = WithoutAll(std::move(text), Directory);
  GetFullPath();
}

void CJTSFile::SetDefaults() {
  Directory.clear();
  FileName.clear();
}

const CString& CJTSFile::GetFullPath() {
  formatstringT<wchar_t> joined;
  joined.Format(L"%s%s", Directory, FileName);
  // The printing thread asks while the host may ask too: nothing is written where nothing changes.
  if (FullPath != joined) FullPath = joined;
  return FullPath;
}

std::int64_t CJTSFile::GetSize() {
  return static_cast<std::int64_t>(rastrel::os::FileSize(GetFullPath()));
}
