#include "cutting/rules/rule_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <numeric>

#include "rastrel/platform/os/hex.h"

namespace rastrel::cutting {
namespace {

constexpr std::array Lengths{Unit{"mm", 1}, Unit{"cm", 10}, Unit{"in", 25.4},
                             Unit{"pt", 25.4 / 72}};
constexpr std::array Speeds{Unit{"mm/s", 1}, Unit{"cm/s", 10}, Unit{"in/s", 25.4},
                            Unit{"m/min", 1000.0 / 60}};

// Words of a rule file are short; a longer one is no slip of the hand.
constexpr std::size_t MaximumMisspelt = 32;

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

std::span<const Unit> LengthUnits() { return Lengths; }
std::span<const Unit> SpeedUnits() { return Speeds; }

std::optional<double> Measured(std::string_view text, std::span<const Unit> units) {
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  if (error != std::errc()) return std::nullopt;
  std::string_view unit(rest, static_cast<std::size_t>(end - rest));
  if (unit.empty()) return number;
  unit.remove_prefix(std::min(unit.find_first_not_of(' '), unit.size()));
  const auto found = std::ranges::find(units, unit, &Unit::name);
  if (found == units.end()) return std::nullopt;
  return number * found->factor;
}

std::optional<std::vector<double>> HexColor(std::string_view text) {
  if (text.size() != 7 || text.front() != '#') return std::nullopt;
  std::vector<double> components;
  for (std::size_t i = 1; i < text.size(); i += 2) {
    const auto byte = os::ByteFromHex(text[i], text[i + 1]);
    if (!byte) return std::nullopt;
    components.push_back(*byte / 255.0);
  }
  return components;
}

std::string Suggestion(std::string_view word, std::span<const std::string_view> candidates) {
  if (word.size() > MaximumMisspelt) return "";
  std::string_view nearest;
  std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
  for (const std::string_view candidate : candidates) {
    const std::size_t distance = EditDistance(word, candidate);
    if (distance >= least) continue;
    least = distance;
    nearest = candidate;
  }
  return nearest.empty() ? "" : "; did you mean '" + std::string(nearest) + "'?";
}

}  // namespace rastrel::cutting
