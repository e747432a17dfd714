// The description of a page's directory out of any text: a page that was read is written so that it
// reads the same again, and names no file outside its directory.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "pages/page_info.h"

namespace {

void Check(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace rastrel::pages;
  const auto info = ParsePageInfo(std::string(reinterpret_cast<const char*>(bytes), size));
  if (!info) {
    Check(info.Error().line > 0 && !info.Error().why.empty());
    return 0;
  }
  Check(info->page > 0 && info->width > 0 && info->height > 0);
  Check(std::isfinite(info->xResolution) && info->xResolution > 0);
  for (const PageFile& file : info->files) {
    Check(!file.name.empty() && file.name != "." && file.name != "..");
    Check(file.name.find('/') == file.name.npos && file.name.find('\0') == file.name.npos);
  }
  for (const PagePlane& plane : info->planes)
    for (const double part : plane.ink.value_or(InkColor{})) Check(part >= 0 && part <= 1);
  const std::string text = FormatPageInfo(*info);
  const auto again = ParsePageInfo(text);
  Check(again && FormatPageInfo(*again) == text);
  Check(again->job == info->job && again->mode == info->mode && again->access == info->access);
  Check(again->planes.size() == info->planes.size() && again->files.size() == info->files.size());
  return 0;
}
