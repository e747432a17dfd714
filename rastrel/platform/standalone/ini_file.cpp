#include "rastrel/platform/standalone/ini_file.h"

#include <cerrno>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_lock.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/trusted_file.h"
#include "rastrel/platform/standalone/ini_text.h"
#include "rastrel/platform/standalone/kept_text.h"

namespace rastrel::standalone {
namespace {

// Far beyond any settings file; a larger file is not read.
constexpr std::uint64_t LargestFile = std::uint64_t{16} << 20;

}  // namespace

// Settings name the directory that programs are started from. A missing file is nobody's.
bool IniFile::MayBeUsed() const {
  return !os::Exists(m_Path) || os::CheckTrusted(os::ToNative(m_Path), os::DataRoot());
}

// Null if the file can't be read.
std::shared_ptr<const std::string> IniFile::Text() const {
  if (m_Kept != nullptr) return m_Kept->Read(os::ToNative(m_Path), LargestFile);
  Expected<std::string> text = os::ReadWholeFile(m_Path, LargestFile);
  return text ? std::make_shared<const std::string>(std::move(*text)) : nullptr;
}

std::optional<std::wstring> IniFile::Read(const std::wstring& section,
                                          const std::wstring& key) const {
  if (!MayBeUsed()) return std::nullopt;
  const std::shared_ptr<const std::string> text = Text();
  if (!text) return std::nullopt;
  const std::optional<std::string> value =
      FindIniValue(*text, os::Utf8FromWide(section), os::Utf8FromWide(key));
  if (!value) return std::nullopt;
  return os::WideFromUtf8(*value);
}

bool IniFile::Write(const std::wstring& section, const std::wstring& key,
                    const std::wstring& value) const {
  const std::string bytes = os::Utf8FromWide(value);
  if (os::WideFromUtf8(bytes) != value) return false;
  const Expected<os::FileLock> lock = os::FileLock::Acquire(m_Lock);
  if (!lock || !MayBeUsed()) return false;
  Expected<std::string> text = os::ReadWholeFile(m_Path, LargestFile);
  if (!text) {
    if (text.Error().error != ENOENT) return false;
    text = std::string();
  }
  const std::optional<std::string> changed =
      WithIniValue(*text, os::Utf8FromWide(section), os::Utf8FromWide(key), bytes);
  return changed && changed->size() <= LargestFile &&
         os::ReplaceFile(m_Path, *changed, os::Access::Private);
}

}  // namespace rastrel::standalone
