#include "host/graphics/eps_parts.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "host/graphics/picture.h"
#include "rastrel/platform/os/dos_eps.h"

namespace rastrel::graphics {

namespace {

// The first line, without its end, which is taken off with it.
std::string_view TakeLine(std::string_view& rest) {
  const std::size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(std::min(rest.find_first_not_of("\r\n", end), rest.size()));
  return line;
}

}  // namespace

std::optional<std::string_view> PostScriptPart(std::string_view file) {
  if (!os::IsDosEps(file)) {
    if (KindOf(file) == document::GraphicKind::Eps) return file;
    return std::nullopt;
  }
  if (file.size() < os::DosEpsHeadSize) return std::nullopt;
  const auto [place, size] = os::ReadDosEpsHead(file).postScript;
  if (place < os::DosEpsHeadSize || place > file.size() || size > file.size() - place) {
    return std::nullopt;
  }
  const std::string_view part = file.substr(place, size);
  return part.starts_with("%!") ? std::optional(part) : std::nullopt;
}

bool NamesPlates(std::string_view postScript) {
  constexpr std::array<std::string_view, 5> names = {
      "%%PlateFile:", "%%CyanPlate:", "%%MagentaPlate:", "%%YellowPlate:", "%%BlackPlate:"};
  if (postScript.starts_with('\x04')) postScript.remove_prefix(1);
  // The head ends with the first line that is no comment.
  while (postScript.starts_with('%')) {
    const std::string_view line = TakeLine(postScript);
    if (line.starts_with("%%EndComments")) return false;
    if (std::ranges::any_of(names, [&](std::string_view name) { return line.starts_with(name); })) {
      return true;
    }
  }
  return false;
}

std::optional<document::GraphicKind> PlacedKindOf(std::string_view file) {
  const auto kind = KindOf(file);
  if (kind == document::GraphicKind::Pdf) return kind;
  if (kind != document::GraphicKind::Eps) return std::nullopt;
  if (os::IsDosEps(file)) return kind;
  const bool encapsulated = TakeLine(file).find("EPSF") != std::string_view::npos;
  return encapsulated ? kind : document::GraphicKind::PostScript;
}

}  // namespace rastrel::graphics
