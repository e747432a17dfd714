#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/document/shapes.h"
#include "host/graphics/drawing_records.h"
#include "interpreter/interpreter.h"
#include "rastrel/platform/os/expected.h"

/// The drawing of foreign files in a process of its own: the program `rastrel-draw`, which lies
/// beside the reference children. Nothing here looks into a foreign file.
namespace rastrel::graphics {

/// The limits of one run of the drawing program.
struct DrawingLimits {
  /// Processor time of reading or drawing one foreign file, once. Counted in seconds.
  std::chrono::seconds fileTime{60};
  std::chrono::seconds time{600};     ///< processor time of the whole run
  std::chrono::seconds silence{600};  ///< time without a record, whatever the processor does
  /// Time for all EPS files of one drawing to become PDF; each may take interpreter::EpsLimits.
  std::chrono::milliseconds epsTime{120'000};
  std::uint64_t memory = std::uint64_t{3} << 30;       ///< bytes of address space
  std::uint64_t resultBytes = std::uint64_t{1} << 30;  ///< of an image and the records before it
};

/// Takes a record of a result: none of those that begin or end a file or the stream. A failure ends
/// the run, and is its result.
using TakeRecord = std::function<Expected<void>(DrawingRecord kind, std::string body)>;

/// Runs the program on a task. It gets `input` as its standard input, and neither a file, a
/// directory nor a terminal of this process. `subject` names the drawing in a failure ("the page
/// can't be drawn"); empty: the failure is the reason alone.
///
/// The failure is a sentence for the user: the program's own, or that it passed a limit or ended by
/// a signal, with the name of the foreign file that it was at. The program is gone when this
/// returns. On any thread; blocks.
[[nodiscard]] Expected<void> RunDrawing(const std::vector<std::string>& task,
                                        const std::string& input, const std::string& subject,
                                        const DrawingLimits& limits, const TakeRecord& take);

/// Which part of a PostScript file is drawn.
enum class EpsPart {
  Page,  ///< the page, or of EPS its bounding box (interpreter::PdfFromEps)
  Area,  ///< that of which a conversion makes a picture (interpreter::PictureArea)
};

/// A placed file in the form that is drawn.
struct DrawableFile {
  document::GraphicKind kind = document::GraphicKind::Png;
  std::shared_ptr<const std::string> bytes;
};
/// EPS and PostScript as PDF, by the interpreter in its own process and in that time, or a minute
/// if that is less; all else as it is. Of an Area letters are
/// kept. The failure is a sentence.
[[nodiscard]] Expected<DrawableFile> DrawableOf(
    document::GraphicKind kind, std::shared_ptr<const std::string> bytes,
    std::chrono::milliseconds time = DrawingLimits().epsTime,
    interpreter::EpsLetters letters = interpreter::EpsLetters::Keep, EpsPart part = EpsPart::Page);

}  // namespace rastrel::graphics
