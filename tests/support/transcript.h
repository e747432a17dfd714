#pragma once

#include <atomic>
#include <cstdarg>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/job/job_messaging.h"
#include "rastrel/job/job_ticket.h"
#include "rastrel/job/printf_text.h"
#include "rastrel/platform/os/text.h"
#include "tests/support/job_code_names.h"

namespace rastrel::test {

using Lines = std::vector<std::string>;

/// A ticket's messages, in order, as lines: `Info 7 system`, `Error 18 system`, `Error "words"
/// rip`, `Warning "words" rip`, `Progress 42 odalis`, `Log Printing done`. Any thread.
class Transcript {
 public:
  /// Keeps the line, then calls the listener, if there is one, on the same thread.
  void Add(const std::string& line) {
    {
      const std::scoped_lock lock(m_Mutex);
      if (m_Lines.size() < MaximumLines) m_Lines.push_back(line);
      ++m_Count;
    }
    if (m_Listener) m_Listener(line);
  }
  void Add(const char* kind, int code, JT_ORIGINATOR originator) {
    Add(std::string(kind) + ' ' + std::to_string(code) + ' ' + NameOf(originator));
  }
  void Add(const char* kind, const wchar_t* text, JT_ORIGINATOR originator) {
    Add(std::string(kind) + " \"" + os::Utf8FromWide(text) + "\" " + NameOf(originator));
  }
  /// Called for every line. Set it while none is added.
  void Listen(std::function<void(const std::string& line)> listener) {
    m_Listener = std::move(listener);
  }

  [[nodiscard]] Lines All() const {
    const std::scoped_lock lock(m_Mutex);
    return m_Lines;
  }
  [[nodiscard]] std::size_t Count() const {
    const std::scoped_lock lock(m_Mutex);
    return m_Count;
  }
  /// The lines that begin so, in order, without that beginning.
  [[nodiscard]] Lines Behind(std::string_view beginning) const {
    Lines found;
    for (const std::string& line : All())
      if (line.starts_with(beginning)) found.push_back(line.substr(beginning.size()));
    return found;
  }
  /// Everything but the messages of a child and its lines of the job log.
  [[nodiscard]] Lines OfTheLibrary() const {
    Lines found;
    for (const std::string& line : All()) {
      const bool childs = line.ends_with(" rip") || line.ends_with(" odalis") ||
                          line.starts_with("Log [Rip]") || line.starts_with("Log [Odalis]");
      if (!childs) found.push_back(line);
    }
    return found;
  }
  /// The names of all `Info` calls of the printing thread, as "started, ripping, ripped".
  [[nodiscard]] std::string Stages() const {
    std::string stages;
    for (const std::string& line : Behind("Info "))
      if (line.ends_with(" system"))
        stages += (stages.empty() ? "" : ", ") + NameOfCode(StageNames, std::stoi(line));
    return stages;
  }

 private:
  static std::string NameOf(JT_ORIGINATOR originator) {
    switch (originator) {
      case JTO_RIP: return "rip";
      case JTO_ODALIS: return "odalis";
      case JTO_SYSTEM: return "system";
    }
    return std::to_string(static_cast<int>(originator));
  }
  static constexpr std::size_t MaximumLines = 100'000;
  mutable std::mutex m_Mutex;
  Lines m_Lines;
  std::size_t m_Count = 0;
  std::function<void(const std::string&)> m_Listener;
};

/// Keeps the calls and does nothing else.
class RecordingMessaging : public CJobMessaging {
 public:
  virtual ~RecordingMessaging() = default;
  void Warning(const wchar_t* text, JT_ORIGINATOR who) override {
    m_Told.Add("Warning", text, who);
  }
  void Error(const wchar_t* text, JT_ORIGINATOR who) override { m_Told.Add("Error", text, who); }
  void Error(JT_ERROR code, JT_ORIGINATOR who) override { m_Told.Add("Error", code, who); }
  void Info(JT_INFO code, JT_ORIGINATOR who) override { m_Told.Add("Info", code, who); }
  void Progress(unsigned short percent, JT_ORIGINATOR who) override {
    m_Told.Add("Progress", percent, who);
  }
  void Log(const wchar_t* format, ...) override {
    std::va_list arguments;
    va_start(arguments, format);
    const std::wstring line = job::FormatVariableList(format, arguments);
    va_end(arguments);
    m_Told.Add("Log " + os::Utf8FromWide(line));
  }

  Transcript m_Told;
};

/// A ticket that keeps the calls and then acts as any ticket. Its job log lines are kept too,
/// without their line end, while this is the last one made.
class RecordingTicket : public CJobTicket {
 public:
  RecordingTicket() { Attach(); }
  ~RecordingTicket() override {
    RecordingTicket::EndPrint();
    Present() = nullptr;
  }
  RecordingTicket(const RecordingTicket&) = delete;
  RecordingTicket& operator=(const RecordingTicket&) = delete;

  /// Takes the job log again, which SetDefaults lets go of.
  void Attach() {
    Present() = this;
    OpenLog([](const wchar_t* text) {
      const std::string line = os::Utf8FromWide(text);
      const bool ended = line.ends_with("\r\n");
      const std::string shown = ended ? line.substr(0, line.size() - 2) : line + "(no end)";
      if (RecordingTicket* ticket = Present()) ticket->m_Told.Add("Log " + shown);
    });
  }

  void Warning(const wchar_t* text, JT_ORIGINATOR who) override {
    m_Told.Add("Warning", text, who);
    CJobTicket::Warning(text, who);
  }
  void Error(const wchar_t* text, JT_ORIGINATOR who) override {
    m_Told.Add("Error", text, who);
    CJobTicket::Error(text, who);
  }
  void Error(JT_ERROR code, JT_ORIGINATOR who) override {
    m_Told.Add("Error", code, who);
    CJobTicket::Error(code, who);
  }
  void Info(JT_INFO code, JT_ORIGINATOR who) override {
    m_Told.Add("Info", code, who);
    CJobTicket::Info(code, who);
  }
  void Progress(unsigned short percent, JT_ORIGINATOR who) override {
    m_Told.Add("Progress", percent, who);
    CJobTicket::Progress(percent, who);
  }

  Transcript m_Told;

 private:
  static std::atomic<RecordingTicket*>& Present() {
    static std::atomic<RecordingTicket*> present;
    return present;
  }
};

}  // namespace rastrel::test
