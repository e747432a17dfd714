#pragma once

#include <cstdint>
#include <string>

class CJobTicket;

/// Writes the prefix of an ordinary ticket: the PostScript file that the RIP reads ahead of the
/// job. It is beside the job file, under its name with ".psp", and is removed with this object
/// unless the setting "Keep PS Files" is on then. Used by one printing thread.
/// docs/formats/prefix.md has the file.
class PSPrefix {
 public:
  /// The ticket is not owned and may be null; Generate fails then.
  explicit PSPrefix(CJobTicket* ticket);
  PSPrefix(const PSPrefix&) = delete;
  PSPrefix& operator=(const PSPrefix&) = delete;
  virtual ~PSPrefix();

  /// Writes the file, in place of an existing one. **0 for success**, 1 if there is no ticket or
  /// the file can't be opened. A full disk is not noticed. std::length_error if the job file's path
  /// holds no dot: a ticket's job file has an extension.
  [[nodiscard]] virtual unsigned Generate();

  /// Library path of the file; empty until Generate has run.
  [[nodiscard]] const std::wstring& GetPrefixPath() const { return m_PrefixPath; }

 protected:
  /// Derives the path and opens the file.
  [[nodiscard]] bool Open();
  /// Appends bytes unchanged.
  void WriteBytes(const char* bytes) { m_Output += bytes; }
  /// Appends a section as UTF-8, up to its first null.
  void WriteSection(const std::wstring& text);
  /// Hands everything to the file and closes it.
  void Close();

  CJobTicket* m_pTicket;

 private:
  int m_File = -1;       // open only while Generate runs
  std::string m_Output;  // the file's content
  std::wstring m_PrefixPath;
};
