#include "interpreter/declared_box.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace rastrel::interpreter {
namespace {

constexpr std::string_view BoxComment = "%%BoundingBox:";
constexpr std::string_view Whitespace = " \t\r\n\f\v";
constexpr double LargestCoordinate = 1e7;  // points

bool IsLineStart(std::string_view text, std::size_t at) {
  return at == 0 || text[at - 1] == '\n' || text[at - 1] == '\r';
}

std::string_view LineAt(std::string_view text, std::size_t at) {
  text.remove_prefix(at);
  return text.substr(0, text.find_first_of("\r\n"));
}

std::optional<std::string_view> FirstBox(std::string_view text) {
  for (std::size_t at = text.find(BoxComment); at != text.npos;
       at = text.find(BoxComment, at + 1)) {
    if (IsLineStart(text, at)) return LineAt(text, at + BoxComment.size());
  }
  return {};
}

std::optional<std::string_view> LastBox(std::string_view text) {
  for (std::size_t at = text.rfind(BoxComment); at != text.npos;
       at = at == 0 ? text.npos : text.rfind(BoxComment, at - 1)) {
    if (IsLineStart(text, at)) return LineAt(text, at + BoxComment.size());
  }
  return {};
}

std::optional<PageArea> ReadBox(std::string_view text) {
  std::array<double, 4> sides{};
  for (double& side : sides) {
    text.remove_prefix(std::min(text.find_first_not_of(Whitespace), text.size()));
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), side);
    if (error != std::errc() || !std::isfinite(side) || std::abs(side) > LargestCoordinate) {
      return {};
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  }
  const PageArea box{sides[0], sides[1], sides[2], sides[3]};
  if (box.Width() <= 0 || box.Height() <= 0) return {};
  return box;
}

}  // namespace

std::optional<PageArea> FindDeclaredBox(std::string_view head, std::string_view tail) {
  auto line = FirstBox(head);
  if (!line || line->find("(atend)") != line->npos) line = LastBox(tail);
  return line ? ReadBox(*line) : std::nullopt;
}

}  // namespace rastrel::interpreter
