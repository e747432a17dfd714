#include "host/graphics/picture.h"

namespace rastrel::graphics {

using document::GraphicKind;

namespace {

// How far into a file a PDF's and an SVG's beginning may lie.
constexpr std::size_t HeadLength = 1024;
constexpr std::size_t SvgHeadLength = 65'536;

// An SVG is an XML document whose first element is svg, whatever prefix that has.
bool IsSvg(std::string_view bytes) {
  std::string_view rest = bytes.substr(0, SvgHeadLength);
  if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
  while (true) {
    const std::size_t begin = rest.find_first_not_of(" \t\r\n");
    if (begin == std::string_view::npos || rest[begin] != '<') return false;
    rest.remove_prefix(begin);
    const bool comment = rest.starts_with("<!--");
    const bool instruction = rest.starts_with("<?");
    if (!comment && !instruction && !rest.starts_with("<!")) break;
    std::size_t end = rest.find(comment ? "-->" : instruction ? "?>" : ">");
    // A document type may bring declarations of its own, in brackets.
    const std::size_t bracket = rest.find('[');
    if (!comment && !instruction && bracket < end) end = rest.find("]>", bracket);
    if (end == std::string_view::npos) return false;
    rest.remove_prefix(rest.find('>', end) + 1);
  }
  std::string_view name = rest.substr(1, rest.find_first_of(" \t\r\n/>") - 1);
  if (const std::size_t colon = name.find(':'); colon != std::string_view::npos) {
    name.remove_prefix(colon + 1);
  }
  return name == "svg";
}

bool IsEps(std::string_view bytes) {
  if (bytes.starts_with("\xC5\xD0\xD3\xC6")) return true;
  if (!bytes.starts_with("%!PS-Adobe-")) return false;
  return bytes.substr(0, bytes.find_first_of("\r\n")).find("EPSF-") != std::string_view::npos;
}

}  // namespace

std::optional<GraphicKind> KindOf(std::string_view bytes) {
  if (bytes.starts_with("\x89PNG\r\n\x1A\n")) return GraphicKind::Png;
  if (bytes.starts_with("\xFF\xD8\xFF")) return GraphicKind::Jpeg;
  using namespace std::string_view_literals;
  for (const std::string_view start : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv}) {
    if (bytes.starts_with(start)) return GraphicKind::Tiff;
  }
  if (IsEps(bytes)) return GraphicKind::Eps;
  if (bytes.substr(0, HeadLength).find("%PDF-") != std::string_view::npos) {
    return GraphicKind::Pdf;
  }
  if (IsSvg(bytes)) return GraphicKind::Svg;
  return std::nullopt;
}

}  // namespace rastrel::graphics
