#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>

#include "rastrel/job/format_argument.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/recursive_lock.h"

/// The library's diagnostic file, `Rastrel-<process id>.log` in the RIP directory, one a process.
/// Entries follow each other: "[day/month/year, time]", the thread's id, the text in UTF-8. Only
/// Printf ends a line. A failure is never reported to the caller. docs/formats/application-log.md
/// has the format.
///
/// All threads of the library write; an entry is written whole, in one call under one lock. If the
/// file could not be opened, the text goes to the standard error stream (SetLostTextHandler) and
/// the lock **stays entered**: the first thread that logs goes on, and every other thread that logs
/// waits for ever. A program that must not hang asks before it prints (CheckPrintFiles in
/// job/print_check.h).
class CAppLog {
 public:
  /// The one object, made at first use. Making it opens the file and removes the logs of processes
  /// that live no more.
  static CAppLog& Instance();
  /// Deletes the object, if there is one. The file stays; the next use makes a new object and
  /// truncates it. No other thread may be logging.
  static void DeleteInstance();

  /// The state of the object: there is none yet, or it has its file, or it could not open it.
  enum class State { None, Open, Failed };
  /// Makes no object and does not log. Any thread.
  [[nodiscard]] static State GetState();

  /// Receives each text that could not be written to the file, and why, on the thread that logs. It
  /// must not log.
  using LostTextHandler = void (*)(std::string_view text, const rastrel::Failure& why);
  /// Replaces the default, which writes the text to the standard error stream. For a program that
  /// has a message of its own for that. Before the first use of the log.
  static void SetLostTextHandler(LostTextHandler handler);

  /// Library path of the file, whether or not it could be opened.
  [[nodiscard]] const std::wstring& GetFileName() const { return m_FileName; }

  virtual ~CAppLog();
  CAppLog(const CAppLog&) = delete;
  CAppLog& operator=(const CAppLog&) = delete;

  /// Writes one entry, its bytes unchanged. No line end is added.
  void Write(const char* text);
  /// Writes one entry, as UTF-8. No line end is added.
  void Write(const wchar_t* text);
  /// Writes one formatted entry (the rules of printf_text.h), and CR and LF after it.
  template <typename... Arguments>
  void Printf(const wchar_t* format, const Arguments&... arguments) {
    const std::array<rastrel::job::FormatArgument, sizeof...(Arguments)> list{
        rastrel::job::FormatArgument(arguments)...};
    PrintArguments(format, list);
  }

 private:
  CAppLog();
  void Open();
  void WriteEntry(std::string_view text);
  void PrintArguments(const wchar_t* format,
                      std::span<const rastrel::job::FormatArgument> arguments);

  std::wstring m_FileName;     // full path
  int m_File = -1;             // descriptor; -1 if the file could not be opened
  rastrel::Failure m_Failure;  // why not
  rastrel::os::RecursiveLock m_Lock;
};
