#include "cli/document/view_command.h"

#include <cstdlib>

#include "cli/console/other_programs.h"
#include "cli/document/document_summary.h"
#include "cli/document/drawing.h"
#include "cli/document/open_template.h"
#include "cli/document/shown_picture.h"
#include "host/document/document.h"
#include "host/document/notices.h"
#include "rastrel/platform/os/program_search.h"

namespace rastrel::cli {
namespace {

bool HasDesktop() {
  return std::getenv("DISPLAY") != nullptr || std::getenv("WAYLAND_DISPLAY") != nullptr;
}

// True if the desktop's viewer was started.
bool OpenInViewer(const std::string& picture) {
  if (!HasDesktop()) return false;
  const std::string opener = os::FindProgram("xdg-open");
  return !opener.empty() && StartAndForget(opener, {"xdg-open", picture});
}

void Show(const OpenedFile& file, const DrawingRequest& request, const Invocation& invocation) {
  const bool json = invocation.Has(OptionId::Json);
  ShownPicture picture =
      OrEnd(ExitStatus::JobFailed, ShownPicture::Create(*file.host, request, file.name));
  if (!json && picture.ShowOnTerminal()) return WriteSummary(file, file.name, {}, json);
  picture.Keep();
  WriteSummary(file, file.name, {picture.Path()}, json);
  OpenInViewer(picture.Path());
}

}  // namespace

ExitStatus ViewCommand(const Invocation& invocation) {
  const std::string output = invocation.ValueOr(OptionId::OutputFile, "");
  const DrawingRequest request = OrEnd(ExitStatus::WrongUse, DrawingRequestOf(invocation, output));
  const OpenedFile file = OpenTemplate(invocation);
  if (output.empty()) {
    Show(file, request, invocation);
  } else {
    const std::vector<std::string> files = DrawOrEnd(*file.host, request, output);
    WriteSummary(file, file.name, files, invocation.Has(OptionId::Json));
  }
  return file.host->GetNotices().Losses().empty() ? ExitStatus::Done : ExitStatus::JobFailed;
}

}  // namespace rastrel::cli
