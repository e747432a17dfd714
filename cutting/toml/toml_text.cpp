#include "cutting/toml/toml_text.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace rastrel::cutting {
namespace {

constexpr int KeyPartLimit = 16;
// Words of settings are short; a longer one is no slip of the hand.
constexpr std::size_t MaximumMisspelt = 32;

bool IsKeyByte(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '-' || c == '"' || c == '\'';
}

/// The line with a key of too many parts; 0 if there is none.
int LineOfDeepKey(std::string_view text) {
  int line = 1;
  int joints = 0;
  char before = ' ';
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\n') ++line;
    if (c == '\n' || c == ',' || c == '=' || c == '[' || c == '{') joints = 0;
    if (c == '.' && IsKeyByte(before) && ++joints >= KeyPartLimit) return line;
    if (c != ' ' && c != '\t') before = c;
  }
  return 0;
}

// Insertions, deletions and replacements from one to the other.
std::size_t EditDistance(std::string_view one, std::string_view other) {
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < one.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < other.size(); ++j) {
      const std::size_t replaced = diagonal + (one[i] == other[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

}  // namespace

Expected<void> CheckTomlDepth(std::string_view text, const std::string& name) {
  const int line = LineOfDeepKey(text);
  if (line == 0) return {};
  Failure failure = FailureOf("a key has more than " + std::to_string(KeyPartLimit) + " parts",
                              FailureCode::BadInput);
  failure.where = name;
  failure.line = line;
  failure.column = 1;
  return failure;
}

std::string Suggestion(std::string_view word, const std::vector<std::string_view>& names) {
  if (word.size() > MaximumMisspelt) return "";
  std::string_view nearest;
  // Less than the whole word.
  std::size_t least = std::min(word.size(), std::max<std::size_t>(2, word.size() / 3) + 1);
  for (const std::string_view name : names) {
    const std::size_t distance = EditDistance(word, name);
    if (distance >= least) continue;
    least = distance;
    nearest = name;
  }
  return nearest.empty() ? "" : "; did you mean '" + std::string(nearest) + "'?";
}

}  // namespace rastrel::cutting
