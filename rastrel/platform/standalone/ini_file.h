#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

/// A settings file on the disk (ini_text.h has its text): looked at in every call, so that a change
/// by another program counts at once, and replaced as a whole under a lock that other processes
/// honour. A file that others may write to (os::CheckTrusted) has no values, and gets none.
namespace rastrel::standalone {

class KeptText;

class IniFile {
 public:
  /// A file at or below the data root, with the file by which it is locked. With `kept`, which must
  /// outlive this, its text is read again only if the file changed; by default in every call.
  IniFile(std::wstring path, std::wstring lock, KeptText* kept = nullptr)
      : m_Path(std::move(path)), m_Lock(std::move(lock)), m_Kept(kept) {}

  /// The value under section and key; nothing if there is none, or the file can't be read.
  [[nodiscard]] std::optional<std::wstring> Read(const std::wstring& section,
                                                 const std::wstring& key) const;
  /// Stores a value; a missing file is made. False if the value would not read back as it is, or
  /// the file can't be written: the old value is then kept.
  [[nodiscard]] bool Write(const std::wstring& section, const std::wstring& key,
                           const std::wstring& value) const;

 private:
  [[nodiscard]] bool MayBeUsed() const;
  [[nodiscard]] std::shared_ptr<const std::string> Text() const;

  std::wstring m_Path;
  std::wstring m_Lock;
  KeptText* m_Kept;  // or null
};

}  // namespace rastrel::standalone
