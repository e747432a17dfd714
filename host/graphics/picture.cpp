#include "host/graphics/picture.h"

#include <algorithm>
#include <array>

#include "host/document/document_format.h"
#include "rastrel/platform/os/dos_eps.h"

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

// PostScript, encapsulated or not. Printer drivers put an end of transmission in front.
bool IsPostScript(std::string_view bytes) {
  if (os::IsDosEps(bytes)) return true;
  if (bytes.starts_with('\x04')) bytes.remove_prefix(1);
  return bytes.starts_with("%!");
}

constexpr std::string_view Whitespace = " \t\r\n";

std::string_view NextLine(std::string_view& rest) {
  const std::size_t end = std::min(rest.find('\n'), rest.size());
  std::string_view line = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  line.remove_prefix(std::min(line.find_first_not_of(Whitespace), line.size()));
  return line.substr(0, line.find_last_not_of(Whitespace) + 1);
}

// Pairs of a group code and a value, of which the first but for comments begins a section.
bool IsDxf(std::string_view rest) {
  rest = rest.substr(0, HeadLength * 16);
  while (!rest.empty()) {
    const std::string_view code = NextLine(rest);
    const std::string_view value = NextLine(rest);
    if (code == "0") return value == "SECTION";
    if (code != "999") return false;
  }
  return false;
}

// Without the sequences to the device that a plotter file may begin with.
std::string_view SkipToInstructions(std::string_view rest) {
  while (!rest.empty()) {
    if (rest.front() == '\x1B') {
      // A letter between two kinds of parameters.
      const std::size_t letter = rest.find_first_not_of("%&*().0123456789+-", 1);
      if (letter == std::string_view::npos) return {};
      rest.remove_prefix(std::min(rest.find_first_not_of("0123456789;:", letter + 1), rest.size()));
    } else if (rest.front() == ';' || Whitespace.find(rest.front()) != std::string_view::npos) {
      rest.remove_prefix(1);
    } else {
      break;
    }
  }
  return rest;
}

// Three instructions of two letters with numbers, or all that there are.
bool IsHpgl(std::string_view rest) {
  constexpr std::array<std::string_view, 34> known = {
      "IN", "DF", "SP", "PU", "PD", "PA", "PR", "AA", "AR", "CI", "EA", "ER",
      "RA", "RR", "IP", "SC", "PW", "PC", "VS", "LT", "IW", "RO", "PS", "NP",
      "BP", "TR", "WU", "FS", "SI", "SR", "DI", "QL", "CO", "LB"};
  rest = SkipToInstructions(rest);
  int count = 0;
  for (; count < 3 && !rest.empty(); ++count) {
    const std::string_view name = rest.substr(0, 2);
    if (std::ranges::find(known, name) == known.end()) return false;
    rest.remove_prefix(2);
    // Free text follows.
    if (name == "CO" || name == "LB") return count > 0;
    rest.remove_prefix(std::min(rest.find_first_not_of("0123456789+-.,; \t\r\n"), rest.size()));
    if (rest.starts_with('\x1B')) rest = SkipToInstructions(rest);
  }
  return count > 0;
}

}  // namespace

std::optional<GraphicKind> KindOf(std::string_view bytes) {
  if (bytes.starts_with("\x89PNG\r\n\x1A\n")) return GraphicKind::Png;
  if (bytes.starts_with("\xFF\xD8\xFF")) return GraphicKind::Jpeg;
  using namespace std::string_view_literals;
  for (const std::string_view start : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv}) {
    if (bytes.starts_with(start)) return GraphicKind::Tiff;
  }
  if (IsPostScript(bytes)) return GraphicKind::Eps;
  if (bytes.substr(0, HeadLength).find("%PDF-") != std::string_view::npos) {
    return GraphicKind::Pdf;
  }
  if (IsSvg(bytes)) return GraphicKind::Svg;
  return std::nullopt;
}

std::optional<PathFileKind> PathFileKindOf(std::string_view bytes) {
  if (IsDxf(bytes)) return PathFileKind::Dxf;
  if (IsHpgl(bytes)) return PathFileKind::Hpgl;
  return std::nullopt;
}

bool IsDocumentFile(std::string_view bytes) {
  const std::size_t begin = bytes.find_first_not_of(Whitespace);
  return begin != std::string_view::npos && bytes[begin] == '{' &&
         bytes.substr(0, HeadLength).find(document::DocumentFormatName) != std::string_view::npos;
}

}  // namespace rastrel::graphics
