// Document files of any bytes: read, saved, read again, and drawn.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "host/document/document_file.h"
#include "host/document/notices.h"
#include "host/render/document_images.h"
#include "host/text/font_catalog.h"

namespace {

using namespace rastrel;

void Draw(const document::Document& document) {
  document::Notices notices;
  static document::Notices fontNotices;
  static const text::FontCatalog fonts(fontNotices);
  for (const auto format : {render::ImageFormat::Svg, render::ImageFormat::Pdf}) {
    render::ImageOptions options;
    options.outlines = format == render::ImageFormat::Pdf;
    options.page = 1;
    const auto first = render::DrawDocument({document, fonts, notices}, format, options);
    const auto second = render::DrawDocument({document, fonts, notices}, format, options);
    if (static_cast<bool>(first) != static_cast<bool>(second)) std::abort();
    if (first && *first != *second) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // No other program is started, whatever the document holds.
  static const int noPrograms = setenv("PATH", "/nowhere", 1);
  if (noPrograms != 0) std::abort();
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const auto read = document::ReadDocumentText({reinterpret_cast<const char*>(data), size});
  if (!read) {
    if (read.Error().where.empty() || read.Error().why.empty()) std::abort();
    return 0;
  }
  const std::string text = document::DocumentText(**read);
  const auto again = document::ReadDocumentText(text);
  if (!again || document::DocumentText(**again) != text) std::abort();
  Draw(**read);
  return 0;
}
