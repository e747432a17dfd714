#include "cli/server/queued_input.h"

#include <algorithm>
#include <utility>

#include "cli/input/input_file.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"
#include "server/printer/byte_file.h"
#include "server/printer/document_format.h"
#include "server/printer/picture_file.h"

namespace rastrel::cli {

std::string PictureKindOf(const std::string& path) {
  const auto file = server::ByteFile::Open(path);
  if (!file) return {};
  const auto head = file->Read(
      0, static_cast<std::size_t>(std::min<std::uint64_t>(server::DocumentHeadSize, file->Size())));
  if (!head) return {};
  const auto format = server::FormatOfDocument(*head);
  const bool isPicture =
      format == server::DocumentFormat::Png || format == server::DocumentFormat::Jpeg;
  return isPicture ? server::ExtensionOfDocument(*head) : "";
}

Expected<void> CheckQueuedInput(const std::string& path) {
  if (!PictureKindOf(path).empty()) return {};
  const auto input = InspectInput(path);
  return input ? Expected<void>() : input.Error();
}

Expected<QueuedInput> QueuedInput::Prepare(const std::string& path, const std::string& pagePath) {
  QueuedInput input;
  input.m_Path = path;
  const std::string kind = PictureKindOf(path);
  if (kind.empty()) return input;
  input.m_Page = pagePath;
  const auto made =
      kind == "png" ? server::PdfFromPng(path, pagePath) : server::PdfFromJpeg(path, pagePath);
  if (!made) return made.Error();
  input.m_Path = pagePath;
  return input;
}

QueuedInput::~QueuedInput() {
  if (!m_Page.empty()) static_cast<void>(os::RemoveFile(os::FromNative(m_Page)));
}

QueuedInput::QueuedInput(QueuedInput&& other) noexcept
    : m_Path(std::move(other.m_Path)), m_Page(std::exchange(other.m_Page, {})) {}

}  // namespace rastrel::cli
