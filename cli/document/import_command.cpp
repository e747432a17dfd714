#include "cli/document/import_command.h"

#include "cli/document/document_summary.h"
#include "cli/document/drawing.h"
#include "cli/document/template_file.h"
#include "host/document/notices.h"

namespace rastrel::cli {

ExitStatus ImportCommand(const Invocation& invocation) {
  const std::string output = invocation.ValueOr(OptionId::OutputFile, "");
  const DrawingRequest request = DrawingRequestOf(invocation, output);
  const OpenedFile file = OpenTemplate(invocation);
  std::vector<std::string> files;
  if (!output.empty()) files = WriteDrawing(*file.host, request, output);
  TellDocument(file, invocation.operand, files, invocation.Has(OptionId::Json));
  if (!file.host->GetNotices().Losses().empty()) return ExitStatus::JobFailed;
  return file.findings.empty() ? ExitStatus::Done : ExitStatus::BadInput;
}

}  // namespace rastrel::cli
