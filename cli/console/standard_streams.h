#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// All that the command writes to standard output and standard error goes through these functions,
/// and each call is written whole. Texts come from jobs, documents and file systems, so they are
/// cleaned here (os::CleanLine): none can steer a terminal or look like another line. A reader that
/// is gone or a full disk is no failure and no signal: the work goes on. Any thread.
namespace rastrel::cli {

/// The name of an output file that means standard output.
inline constexpr const char* StandardOutputName = "-";

/// One line, on standard output or standard error. Cleaned, tabs and line ends included; a line
/// feed is added.
void WriteOutLine(std::string_view line);
void WriteErrorLine(std::string_view line);

/// One row of a table on standard output: each cell cleaned, with tabs between, and a line feed
/// added.
void WriteOutRow(const std::vector<std::string>& cells);

/// Several lines with their line feeds, as the command made them: help, JSON, a report. Cleaned but
/// for line ends and tabs. REQUIRES: foreign text in them was cleaned or escaped.
void WriteOutLines(std::string_view text);
void WriteErrorLines(std::string_view text);

/// Data that the user asked for. A file or a pipe gets its bytes unchanged; on a terminal it is
/// cleaned but for line ends and tabs. REQUIRES: it ends with a whole character and a whole line
/// end (LongOutput cares for that).
void WriteOutData(std::string_view bytes);

/// The path of a result on a line of its own: unchanged in a file or a pipe, cleaned on a terminal.
void WriteOutPath(const std::string& path);

/// Shows one line on standard error in place of the one before it, cleaned. For terminals.
void ShowProgress(std::string_view line);
/// Takes that line away.
void ClearProgress();

/// Control sequences that the command made itself, on standard output, unchanged. REQUIRES:
/// standard output is a terminal that knows them, and foreign text among them was cleaned.
void WriteOutControl(std::string_view bytes);

/// From now on lines, rows and paths have `name` wherever a text has that path, such as that of a
/// private copy. Before other threads write.
void ShowPathAs(const std::string& path, const std::string& name);

/// From now on all of these write to standard error: standard output is for one result, and no
/// message goes there. Fails with a message for the user if it is a terminal, since the result is
/// no text.
[[nodiscard]] Expected<void> KeepOutputForResult();
/// Writes a file, by native path, or bytes to standard output, after KeepOutputForResult. A reader
/// that is gone is no failure. Fails with a message for the user.
[[nodiscard]] Expected<void> WriteResultFile(const std::string& path);
[[nodiscard]] Expected<void> WriteResult(std::string_view bytes);

/// Texts of one thread in their order, for later.
struct HeldText {
  struct Piece {
    bool isError = false;  ///< for standard error, else for standard output
    std::string bytes;
  };
  std::vector<Piece> pieces;
};

/// Holds back all that its thread writes by the functions above, so that the lines of several
/// threads don't mix. On the stack of that thread, one at a time.
class HeldOutput {
 public:
  /// Bytes that are held, about.
  static constexpr std::size_t Limit = std::size_t{1} << 20;

  /// `turn` is called when more than the limit is held: it waits until this thread's texts are due,
  /// and they are written then. If it returns false, they are dropped. Without it all is held.
  explicit HeldOutput(std::function<bool()> turn = {});
  ~HeldOutput();
  HeldOutput(const HeldOutput&) = delete;
  HeldOutput& operator=(const HeldOutput&) = delete;

  /// Adds a text; the functions above call it.
  void Hold(bool isError, std::string_view text);
  /// The texts so far; later ones are held anew.
  [[nodiscard]] HeldText Take();

 private:
  std::function<bool()> m_Turn;
  HeldText m_Text;
  std::size_t m_Bytes = 0;
};

/// Writes held texts, each to its stream.
void WriteHeld(const HeldText& text);

/// Whether a text could not be written to standard output, other than for a reader that is gone.
[[nodiscard]] bool OutputFailed();

}  // namespace rastrel::cli
