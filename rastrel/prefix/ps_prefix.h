#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "rastrel/platform/os/claimed_file.h"

class CJobTicket;

/// Writes the prefix of an ordinary ticket: the PostScript file that the RIP reads ahead of the
/// job. It is beside the job file, under its name with ".psp" or, where that name is not free, with
/// a number (ClaimPrefix), and is removed with this object unless the setting "Keep PS Files" is on
/// then. A file that is not this library's is neither changed nor removed. Used by one printing
/// thread. docs/formats/prefix.md has the file.
class PSPrefix {
 public:
  /// The ticket is not owned and may be null; Generate fails then.
  explicit PSPrefix(CJobTicket* ticket);
  PSPrefix(const PSPrefix&) = delete;
  PSPrefix& operator=(const PSPrefix&) = delete;
  virtual ~PSPrefix();

  /// Writes the file, in place of one that it wrote before. **0 for success**, 1 if there is no
  /// ticket or no file can be made. A full disk is not noticed: see IsWhole. std::length_error if
  /// the job file's path holds no dot: a ticket's job file has an extension.
  [[nodiscard]] virtual unsigned Generate();

  /// Library path of the file; empty until Generate has run.
  [[nodiscard]] const std::wstring& GetPrefixPath() const { return m_PrefixPath; }

  /// Whether the disk took all of it; false until Generate has run.
  [[nodiscard]] bool IsWhole() const { return m_IsWhole; }

 protected:
  /// Chooses the path and makes the file.
  [[nodiscard]] bool Open();
  /// Appends bytes unchanged.
  void WriteBytes(const char* bytes) { m_Output += bytes; }
  /// Appends a section as UTF-8, up to its first null.
  void WriteSection(const std::wstring& text);
  /// Hands everything to the file and closes it.
  void Close();

  CJobTicket* m_pTicket;

 private:
  std::optional<rastrel::os::ClaimedFile> m_File;  // from the first Generate on
  std::string m_Output;                            // the file's content while Generate runs
  bool m_IsWhole = false;
  std::wstring m_PrefixPath;
};
