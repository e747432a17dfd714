#include "cutting/rules/name_pattern.h"

#include <cstddef>
#include <string>
#include <vector>

namespace rastrel::cutting {
namespace {

std::string Lowered(std::string_view text) {
  std::string lowered(text);
  for (char& letter : lowered)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  return lowered;
}

// Position after the first occurrence, or npos. By Knuth, Morris and Pratt, since the standard
// searches take the product of the lengths on hostile text.
std::size_t EndOfFirst(std::string_view text, std::string_view piece) {
  std::vector<std::size_t> borders(piece.size(), 0);
  for (std::size_t i = 1, border = 0; i < piece.size(); ++i) {
    while (border > 0 && piece[i] != piece[border]) border = borders[border - 1];
    if (piece[i] == piece[border]) ++border;
    borders[i] = border;
  }
  for (std::size_t i = 0, matched = 0; i < text.size(); ++i) {
    while (matched > 0 && text[i] != piece[matched]) matched = borders[matched - 1];
    if (text[i] == piece[matched]) ++matched;
    if (matched == piece.size()) return i + 1;
  }
  return std::string_view::npos;
}

}  // namespace

bool FitsPattern(std::string_view name, std::string_view pattern) {
  const std::string loweredName = Lowered(name);
  const std::string loweredPattern = Lowered(pattern);
  std::string_view rest = loweredName;
  std::string_view pieces = loweredPattern;
  std::size_t star = pieces.find('*');
  if (star == std::string_view::npos) return rest == pieces;
  if (!rest.starts_with(pieces.substr(0, star))) return false;
  rest.remove_prefix(star);
  pieces.remove_prefix(star + 1);
  // Each piece between two stars as far left as it goes leaves the most for the others.
  while ((star = pieces.find('*')) != std::string_view::npos) {
    if (star > 0) {
      const std::size_t end = EndOfFirst(rest, pieces.substr(0, star));
      if (end == std::string_view::npos) return false;
      rest.remove_prefix(end);
    }
    pieces.remove_prefix(star + 1);
  }
  return rest.ends_with(pieces);
}

}  // namespace rastrel::cutting
