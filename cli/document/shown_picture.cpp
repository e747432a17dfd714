#include "cli/document/shown_picture.h"

#include <filesystem>
#include <utility>

#include "cli/console/terminal_picture.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {

Expected<ShownPicture> ShownPicture::Create(document::DocumentHost& host, DrawingRequest request,
                                            const std::string& input) {
  auto folder = os::PrivateDirectory::Make("rastrel-view-");
  if (!folder)
    return FailureOf("no folder can be made for the picture in " +
                     std::filesystem::path(folder.Error().where).parent_path().string());
  request.kind = DrawingKind::Png;
  if (request.page == 0) request.page = 1;
  const std::string name = std::filesystem::path(input).stem().string() + ".png";
  auto files = WriteDrawing(host, request, folder->Path() + "/" + name);
  if (!files) return files.Error();
  return ShownPicture(*std::move(folder), std::move(files->front()));
}

bool ShownPicture::ShowOnTerminal() const { return ShowPicture(os::FromNative(m_Path)); }

}  // namespace rastrel::cli
