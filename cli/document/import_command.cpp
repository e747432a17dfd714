#include "cli/document/import_command.h"

#include <algorithm>

#include "cli/console/exit_status.h"
#include "cli/console/terminal_picture.h"
#include "cli/document/document_summary.h"
#include "cli/document/drawing.h"
#include "cli/document/open_template.h"
#include "cli/document/shown_picture.h"
#include "host/document/document.h"
#include "host/document/notices.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::cli {
namespace {

// Pixels of a picture that nobody asked for, which terminals show smaller anyway.
constexpr double MaximumPixelsAcross = 1600;

// At a terminal that takes pictures the result is shown.
void ShowOnTerminal(const OpenedFile& file, DrawingRequest request, const std::string& input) {
  if (!ShowsPictures()) return;
  const document::SignBlank& blank = file.host->GetDocument().Blank();
  const double inches = std::max({blank.width, blank.height, 1.0}) / host::CentimetresPerInch;
  request.dpi = std::clamp(static_cast<int>(MaximumPixelsAcross / inches), 1, request.dpi);
  // A document that is too much for a picture is imported all the same.
  if (const auto picture = ShownPicture::Create(*file.host, request, input))
    static_cast<void>(picture->ShowOnTerminal());
}

}  // namespace

ExitStatus ImportCommand(const Invocation& invocation) {
  const std::string output = invocation.ValueOr(OptionId::OutputFile, "");
  const DrawingRequest request = OrEnd(ExitStatus::WrongUse, DrawingRequestOf(invocation, output));
  const OpenedFile file = OpenTemplate(invocation);
  std::vector<std::string> files;
  const bool json = invocation.Has(OptionId::Json);
  if (!output.empty()) {
    files = DrawOrEnd(*file.host, request, output);
  } else if (!json) {
    ShowOnTerminal(file, request, file.name);
  }
  WriteSummary(file, file.name, files, json);
  if (!file.host->GetNotices().Losses().empty()) return ExitStatus::JobFailed;
  return file.findings.empty() ? ExitStatus::Done : ExitStatus::BadInput;
}

}  // namespace rastrel::cli
