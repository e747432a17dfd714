#pragma once

#include <string>
#include <string_view>

namespace rastrel::interpreter {

/// Writes report lines to standard error, one whole line a write. A text never breaks its line.
class Reporter {
 public:
  void Info(std::string_view keyword);
  void Warning(std::string_view text);
  void Error(std::string_view text);
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

 private:
  unsigned m_Percent = 0;
  std::size_t m_TextBytes = 0;
};

/// The text with control characters replaced by '?', and cut at 2,000 bytes. The library's reader
/// drops what follows a zero byte.
[[nodiscard]] std::string OneLine(std::string_view text);

}  // namespace rastrel::interpreter
