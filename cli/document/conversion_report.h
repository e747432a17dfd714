#pragma once

#include <string>

#include "cli/console/exit_status.h"
#include "cli/document/bitmap_conversion.h"
#include "cli/document/conversion_place.h"
#include "cli/document/conversion_request.h"
#include "cli/document/conversion_views.h"
#include "cli/input/input_file.h"
#include "cli/input/pdf_options.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/values/rect.h"

namespace rastrel::cli {

/// Applies --box, --password-file and --page for the children of this process. The failure is a
/// message for the user.
[[nodiscard]] Expected<PdfOptions> ApplyPdfOptions(const Invocation& invocation,
                                                   const ConversionRequest& request);

/// The box of the page that --page chooses, or of the first, in centimetres, as the queue program
/// measures it. Ends the command (BadInput) with the reason if it can't be measured.
[[nodiscard]] BOUNDS MeasuredPage(const InputFile& input, const ConversionRequest& request);

/// Why a conversion has no result. The library returns no reason: its log, its files and the
/// dialogs that it showed name the step that failed.
class ConversionReport {
 public:
  /// `place` has left the RIP's directory.
  ConversionReport(ConversionEnd end, const ConversionViews& views, const ConversionPlace& place)
      : m_End(end), m_Views(views), m_Place(place) {}

  [[nodiscard]] bool IsCancelled() const;
  /// Ends the command with the status of the step that failed.
  [[noreturn]] void ThrowWithoutResult() const;
  /// The same for lines.
  [[noreturn]] void ThrowWithoutLines() const;
  /// Ends the command (NoCutLines) if the archive of the cut lines could not be read to its end.
  void ThrowIfArchiveIsDamaged() const;
  /// Writes a remark for the user.
  void Note(bool json, const std::string& text) const;

 private:
  ConversionEnd m_End;
  const ConversionViews& m_Views;
  const ConversionPlace& m_Place;
};

}  // namespace rastrel::cli
