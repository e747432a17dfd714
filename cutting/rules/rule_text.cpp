#include "cutting/rules/rule_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

#include "rastrel/platform/os/hex.h"

namespace rastrel::cutting {
namespace {

constexpr std::array Lengths{Unit{"mm", 1}, Unit{"cm", 10}, Unit{"in", 25.4},
                             Unit{"pt", 25.4 / 72}};
constexpr std::array Speeds{Unit{"mm/s", 1}, Unit{"cm/s", 10}, Unit{"in/s", 25.4},
                            Unit{"m/min", 1000.0 / 60}};

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

}  // namespace rastrel::cutting
