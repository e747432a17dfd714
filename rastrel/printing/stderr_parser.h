#pragma once

#include <cstdint>
#include <string>

#include "rastrel/job/job_messaging.h"
#include "rastrel/printing/pipe_reader.h"
#include "rastrel/printing/string_map.h"

/// Splits a child's standard error into lines, at carriage return or line feed, and passes each to
/// ParseLine without its end. Empty lines are skipped; a last line without an end is dropped.
class CBaseStderrParser : public CPipeReader {
 public:
  using CPipeReader::CPipeReader;
  ~CBaseStderrParser() override;
  void OnData(const char* bytes, unsigned count) override;
  /// Passes on the complete lines of m_Line. Always true.
  virtual bool ProcessLines();
  /// One line, never empty.
  virtual void ParseLine(const std::wstring& line) = 0;

  /// The maximum length of a line, in characters. A longer one is truncated: a child that never
  /// ends its line must not take all memory.
  static constexpr std::size_t LineLimit = std::size_t{1} << 20;

 protected:
  std::wstring m_Line;  ///< the text since the last complete line

 private:
  std::size_t m_Searched = 0;  // this many characters of m_Line have no line end
};

/// Reads the line protocol of the RIP and the output engine (docs/formats/stderr-protocol.md) and
/// turns it into reports on a job. Every line goes to the job log first. Several PROGRESS lines
/// that arrive in one piece make one report, of the last one.
class CStderrParser : public CBaseStderrParser {
 public:
  /// `messaging` is not owned and must outlive the thread. The originator is one of JT_ORIGINATOR,
  /// or another number for a child without a tag in the log.
  CStderrParser(CJobMessaging* messaging, HANDLE* pipe, JT_ORIGINATOR originator);
  ~CStderrParser() override;
  bool ProcessLines() override;
  void ParseLine(const std::wstring& line) override;

 private:
  void ParseError(const std::wstring& text);
  void ParseInfo(const std::wstring& keyword);
  void ParseProgress(std::wstring_view rest);

  JT_ORIGINATOR m_Originator;
  CJobMessaging* m_pMessaging;
  InfoStringMap m_InfoMap;
  ErrorStringMap m_ErrorMap;
  std::uint16_t m_ProgressValue = 0;  // of the present piece
};
