#pragma once

#include <string>
#include <string_view>

#include "interpreter/interpreter.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::children {

/// Writes report lines to standard error, one whole line a write
/// (docs/formats/stderr-protocol.md), of a run of the interpreter too. A text never breaks its
/// line.
class Reporter : public interpreter::RunListener {
 public:
  void Info(std::string_view keyword);
  void Warning(std::string_view text);
  void Error(std::string_view text);
  /// The failure as a sentence, with its full stop.
  void Error(const Failure& failure);
  /// A percentage from 1 to 100. Only one that is higher than the last is written.
  void Progress(unsigned percent);
  /// That a page is complete, counted from 1.
  void Page(unsigned number);
  /// A plain line for the log. REQUIRES: the text's beginning is a word of ours, not a report's
  /// tag.
  void Note(std::string_view text);
  /// A line of the interpreter or the job. It can't be taken for a report, whatever it holds, and
  /// after TextLimit bytes of such lines no more are passed on.
  void Text(std::string_view line);

  static constexpr std::size_t TextLimit = 262144;

  void StateReached(interpreter::RunState state) override;
  void Progressed(unsigned percent) override { Progress(percent); }
  void PageMade(unsigned number) override { Page(number); }
  void Warned(const std::string& sentence) override { Warning(sentence); }
  void Noted(const std::string& text) override { Note(text); }
  void Printed(const std::string& line) override { Text(line); }
  [[nodiscard]] int Pipe() const override;

 private:
  unsigned m_Percent = 0;
  std::size_t m_TextBytes = 0;
};

/// The first 2,000 bytes of the text, cleaned (os::CleanLine). The library's reader drops all after
/// a zero byte.
[[nodiscard]] std::string OneLine(std::string_view text);

}  // namespace rastrel::children
