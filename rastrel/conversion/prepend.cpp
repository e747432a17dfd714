#include "rastrel/conversion/prepend.h"

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_content.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/temporary_name.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::conversion {

namespace {

// Makes the new file. A failure to read or write leaves it where it is: it may be all that a disk
// that fails has left of the data.
bool MakeJoined(const std::wstring& joined, std::wstring_view file, const std::string& head) {
  const auto target = os::CreateForWriting(joined, os::Access::Private);
  if (!target) return false;
  const auto source = os::OpenRegularFile(file);
  if (!source) {
    static_cast<void>(os::RemoveFile(joined));
    return false;
  }
  os::PrepareCopy(target->Get(), source->Get(), head.size());
  return os::WriteAll(target->Get(), head) && os::AppendContent(target->Get(), source->Get());
}

}  // namespace

bool PrependToFile(const wchar_t* file, const std::wstring& text) {
  const auto parts = os::SplitPath(file);
  const auto joined = os::CompleteTemporaryName(parts.drive + parts.directory + L"vktmpXXXXXX");
  if (!joined || !MakeJoined(*joined, file, os::AnsiFromWide(text))) return false;
  // The rename is tried even if the old file is still there: it is then refused, and both stay.
  // Either failure is the result.
  const auto removed = os::RemoveFile(file);
  const auto renamed = os::RenameToNew(*joined, file);
  return removed && renamed;
}

}  // namespace rastrel::conversion
