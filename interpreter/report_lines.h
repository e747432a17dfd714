#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace rastrel::interpreter {

/// One report of the prolog.
struct Report {
  std::string key;    ///< "SIZE", "PAGE", ...
  std::string value;  ///< any bytes
};

/// Reads one line of the interpreter's error stream. It is a report only if it has the form
/// "<word> <KEY> <hexadecimal digits>" or "<word> <KEY> =<text>" with the run's secret word.
[[nodiscard]] std::optional<Report> ReadReport(std::string_view line, std::string_view word);

/// Cuts a stream into lines at line feeds and carriage returns. A line longer than Limit comes in
/// pieces, so the memory that it takes is bounded.
class LineCutter {
 public:
  static constexpr std::size_t Limit = 4096;

  /// Adds bytes of the stream.
  void Add(std::string_view bytes);
  /// The next whole line, without its end, or nothing. Empty lines are left out.
  [[nodiscard]] std::optional<std::string> Next();
  /// The text after the last line end, once the stream has ended; may be empty.
  [[nodiscard]] std::string Last() const { return m_Text.substr(m_Start); }

 private:
  std::string m_Text;
  std::size_t m_Start = 0;  // the text before it has been returned
};

}  // namespace rastrel::interpreter
