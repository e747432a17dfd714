#include "cli/document/shown_picture.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "cli/console/exit_status.h"
#include "cli/console/terminal_picture.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

std::string MakeFolder() {
  std::string folder = (std::filesystem::temp_directory_path() / "rastrel-view-XXXXXX").string();
  if (::mkdtemp(folder.data()) == nullptr)
    throw CommandError(ExitStatus::JobFailed, "no folder can be made for the picture in " +
                                                  std::filesystem::temp_directory_path().string());
  return folder;
}

void Remove(const std::string& folder) {
  std::error_code error;
  if (!folder.empty()) std::filesystem::remove_all(folder, error);
}

}  // namespace

ShownPicture::ShownPicture(document::DocumentHost& host, DrawingRequest request,
                           const std::string& input)
    : m_Folder(MakeFolder()) {
  request.kind = DrawingKind::Png;
  if (request.page == 0) request.page = 1;
  const std::string name = std::filesystem::path(input).stem().string() + ".png";
  try {
    m_Path = WriteDrawing(host, request, m_Folder + "/" + name).front();
  } catch (...) {
    Remove(m_Folder);
    throw;
  }
}

ShownPicture::~ShownPicture() { Remove(m_Folder); }

bool ShownPicture::ShowOnTerminal() const { return ShowPicture(os::FromNative(m_Path)); }

}  // namespace rastrel::cli
