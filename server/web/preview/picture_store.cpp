#include "server/web/preview/picture_store.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "pages/page_sum.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"
#include "server/web/preview/png_bytes.h"

namespace rastrel::server::web {
namespace {

constexpr std::uint64_t MaximumStoredBytes = 16 * 1024 * 1024;
constexpr std::string_view PngStart = "\x89PNG\r\n\x1a\n";
constexpr std::string_view PngEnd("\0\0\0\0IEND\xAE\x42\x60\x82", 12);

bool IsWholePng(std::string_view bytes) {
  return bytes.starts_with(PngStart) && bytes.ends_with(PngEnd);
}

}  // namespace

std::string StampOf(const pages::PageInfo& page) {
  pages::PageSum sum;
  const std::string text = pages::FormatPageInfo(page);
  sum.Add(std::as_bytes(std::span(text)));
  return sum.Finish();
}

Expected<std::string> DrawPng(const std::string& directory, const pages::PageInfo& page,
                              const PictureRequest& request) {
  const auto picture = DrawPart(directory, page, request);
  if (!picture) return picture.Error();
  return PngBytes(*picture);
}

Expected<std::string> WholePagePng(const std::string& directory, const pages::PageInfo& page,
                                   unsigned width, const std::string& store) {
  const bool isStored = std::ranges::find(StoredWidths, width) != std::end(StoredWidths);
  const std::string path =
      store + "/preview-" + std::to_string(width) + "-" + StampOf(page) + ".png";
  if (isStored) {
    auto bytes = os::ReadWholeFile(os::FromNative(path), MaximumStoredBytes);
    if (bytes && IsWholePng(*bytes)) return bytes;
  }
  auto bytes = DrawPng(directory, page, WholePage(page, width));
  if (!bytes || !isStored || bytes->size() > MaximumStoredBytes) return bytes;
  auto file = os::OutputFile::Create(path, os::Existing::Replaced);
  if (file && file->Write(*bytes)) static_cast<void>(file->Commit());
  return bytes;
}

}  // namespace rastrel::server::web
