#include "cli/document/view_command.h"

#include <cstdlib>
#include <filesystem>

#include "cli/document/document_summary.h"
#include "cli/document/drawing.h"
#include "cli/document/template_file.h"
#include "cli/programs.h"
#include "cli/standard_streams.h"
#include "host/document/document.h"
#include "host/document/notices.h"

namespace rastrel::cli {
namespace {

// A file for a viewer, which may still read it when this program has ended: the system's temporary
// files are its end.
std::string TemporaryPicture(const std::string& input) {
  std::string folder = (std::filesystem::temp_directory_path() / "rastrel-view-XXXXXX").string();
  if (::mkdtemp(folder.data()) == nullptr)
    throw CommandError(ExitStatus::JobFailed, "no folder can be made for the picture in " +
                                                  std::filesystem::temp_directory_path().string());
  return folder + "/" + std::filesystem::path(input).stem().string() + ".png";
}

bool HasDesktop() {
  return std::getenv("DISPLAY") != nullptr || std::getenv("WAYLAND_DISPLAY") != nullptr;
}

// True if the desktop's viewer was started.
bool OpenInViewer(const std::string& picture) {
  if (!HasDesktop()) return false;
  const std::string opener = FindProgram("xdg-open");
  return !opener.empty() && StartAndForget(opener, {"xdg-open", picture});
}

}  // namespace

ExitStatus ViewCommand(const Invocation& invocation) {
  std::string output = invocation.ValueOr(OptionId::OutputFile, "");
  DrawingRequest request = DrawingRequestOf(invocation, output);
  const OpenedFile file = OpenTemplate(invocation);
  const bool shown = output.empty();
  if (shown) {
    output = TemporaryPicture(invocation.operand);
    request.kind = DrawingKind::Png;
    if (request.page == 0) request.page = 1;
  }
  const std::vector<std::string> files = WriteDrawing(*file.host, request, output);
  TellDocument(file, invocation.operand, files, invocation.Has(OptionId::Json));
  if (shown) OpenInViewer(files.front());
  return file.host->GetNotices().Losses().empty() ? ExitStatus::Done : ExitStatus::JobFailed;
}

}  // namespace rastrel::cli
