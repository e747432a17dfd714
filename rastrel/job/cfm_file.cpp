#include "rastrel/job/cfm_file.h"

#include "rastrel/job/format_string.h"
#include "rastrel/job/record_version.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/os/path.h"

namespace {

// The last element with its closing separator: a saved list follows the spool to another machine.
CString WithoutParents(const CString& directory) {
  if (directory.empty()) return directory;
  const auto parts =
      rastrel::os::SplitPath(std::wstring_view(directory).substr(0, directory.size() - 1));
  const CString parents = parts.drive + parts.directory;
  return directory.starts_with(parents) ? directory.substr(parents.size()) : directory;
}

}  // namespace

CCFMFile::CCFMFile(const CCFMFile& other) : Entries(other.Entries), TotalSize(other.TotalSize) {}

CCFMFile& CCFMFile::operator=(const CCFMFile& other) {
  Entries = other.Entries;
  TotalSize = other.TotalSize;
  return *this;
}

CCFMFile::~CCFMFile() = default;

void CCFMFile::AddEntry(const CString& directory, const CString& fileName) {
  Entries.push_back({directory, fileName});
}

CArchive& operator<<(CArchive& archive, const CCFMFile& file) {
  archive << rastrel::job::RecordVersion << file.TotalSize
          << static_cast<std::uint32_t>(file.Entries.size());
  for (const CCFMFileEntry& entry : file.Entries) {
    rastrel::mfc::WriteNarrowText(archive, WithoutParents(entry.Directory));
    rastrel::mfc::WriteNarrowText(archive, entry.FileName);
  }
  return archive;
}

CArchive& operator>>(CArchive& archive, CCFMFile& file) {
  std::uint32_t version = 0;
  std::uint32_t count = 0;
  archive >> version >> file.TotalSize >> count;
  for (; count > 0; --count) {
    CString stored;
    CString title;
    rastrel::mfc::ReadNarrowText(archive, stored);
    rastrel::mfc::ReadNarrowText(archive, title);
    formatstringT<wchar_t> directory;
    directory.Format(L"%s\\%s", file.BaseDirectory, stored);
    file.AddEntry(directory, title);
  }
  return archive;
}
