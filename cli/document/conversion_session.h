#pragma once

#include <memory>

#include "cli/console/options.h"
#include "cli/document/conversion_host.h"
#include "cli/document/conversion_place.h"
#include "cli/document/conversion_report.h"
#include "cli/document/conversion_request.h"
#include "cli/document/conversion_result.h"
#include "cli/document/conversion_views.h"
#include "cli/input/input_file.h"
#include "cli/input/pdf_options.h"
#include "cli/installation/job_directory.h"
#include "rastrel/platform/os/signals.h"

namespace rastrel::cli {

/// One run of `rastrel convert` or `rastrel cut` around the conversion itself: its options, the
/// input, the place of the result, and a host with an empty document, which is the host in force
/// while this lives. On the thread that the library's host is used on; one at a time.
class ConversionSession {
 public:
  /// Reads the options and the input, and takes the signals that ask to end: the conversion is
  /// cancelled by them. Throws CommandError, also if the result can't be had where it is to be.
  explicit ConversionSession(const Invocation& invocation);
  ~ConversionSession();
  ConversionSession(const ConversionSession&) = delete;
  ConversionSession& operator=(const ConversionSession&) = delete;

  [[nodiscard]] const ConversionRequest& Request() const { return m_Request; }
  [[nodiscard]] const InputFile& Input() const { return m_Input; }
  [[nodiscard]] const ResultPlace& Target() const { return m_Target; }
  [[nodiscard]] ConversionViews& Views() { return m_Views; }
  [[nodiscard]] ConversionHost& Host() { return m_Host; }

  /// The report on a conversion that has ended. The usual RIP's directory is in force from now on.
  [[nodiscard]] ConversionReport End(ConversionEnd end);
  /// Makes the result of the document's objects. Throws CommandError.
  void Write(const ConvertedObjects& objects);

 private:
  [[nodiscard]] JobDirectory MakeDirectory();

  ConversionRequest m_Request;
  PdfOptions m_Pdf;
  ConversionViews m_Views;
  std::unique_ptr<os::StopSignals> m_Signals;
  ConversionPlace m_Place;
  InputFile m_Input;
  ResultPlace m_Target;
  ConversionHost m_Host;
};

}  // namespace rastrel::cli
