#include "host/graphics/eps_parts.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "host/graphics/picture.h"

namespace rastrel::graphics {

namespace {

constexpr std::string_view BinaryMark = "\xC5\xD0\xD3\xC6";
constexpr std::size_t BinaryHeadSize = 30;

std::uint64_t NumberAt(std::string_view bytes, std::size_t place) {
  std::uint64_t number = 0;
  for (std::size_t i = 4; i > 0; --i) {
    number = number << 8 | static_cast<unsigned char>(bytes[place + i - 1]);
  }
  return number;
}

// The first line, without its end, which is taken off with it.
std::string_view TakeLine(std::string_view& rest) {
  const std::size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(std::min(rest.find_first_not_of("\r\n", end), rest.size()));
  return line;
}

}  // namespace

std::optional<std::string_view> PostScriptPart(std::string_view file) {
  if (!file.starts_with(BinaryMark)) {
    if (KindOf(file) == document::GraphicKind::Eps) return file;
    return std::nullopt;
  }
  if (file.size() < BinaryHeadSize) return std::nullopt;
  const std::uint64_t offset = NumberAt(file, 4);
  const std::uint64_t length = NumberAt(file, 8);
  if (offset < BinaryHeadSize || offset > file.size() || length > file.size() - offset) {
    return std::nullopt;
  }
  const std::string_view part = file.substr(offset, length);
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
  if (file.starts_with(BinaryMark)) return kind;
  const bool encapsulated = TakeLine(file).find("EPSF") != std::string_view::npos;
  return encapsulated ? kind : document::GraphicKind::PostScript;
}

}  // namespace rastrel::graphics
