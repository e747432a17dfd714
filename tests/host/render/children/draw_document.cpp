#include <cstdio>
#include <string>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/document_host.h"
#include "host/render/document_images.h"
#include "rastrel/platform/os/path.h"

// usage: draw_document DOCUMENT PICTURE, the extension of which says the format.
int main(int count, char** arguments) {
  using namespace rastrel;
  if (count != 3) return 2;
  const std::string target = arguments[2];
  const auto host = document::DocumentHost::Open(os::FromNative(arguments[1]));
  if (!host) return 3;
  const auto format = target.ends_with(".svg")   ? render::ImageFormat::Svg
                      : target.ends_with(".pdf") ? render::ImageFormat::Pdf
                                                 : render::ImageFormat::Png;
  const auto written = render::SaveImages(
      {(*host)->GetDocument(), (*host)->GetFonts(), (*host)->GetNotices()}, format, {}, target);
  return written ? 0 : 4;
}
