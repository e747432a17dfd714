#include "interpreter/spot_ink.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "rastrel/platform/os/text.h"

namespace rastrel::interpreter {
namespace {

constexpr std::string_view Start = "%%SeparationColor: \"";
constexpr std::string_view Middle = "\" 100% ink = ";
constexpr std::string_view End = "CMYK";
constexpr int FullInk = 32760;

// Takes "NUMBER " off the text; four decimals are finer than any plane's 255 steps.
bool TakePart(std::string_view& text, double& part) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || number < 0 || number > FullInk) return false;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  if (!text.starts_with(' ')) return false;
  text.remove_prefix(1);
  part = std::round(number * 10000.0 / FullInk) / 10000;
  return true;
}

}  // namespace

std::size_t FindSpotInk(std::string_view line) { return line.find(Start); }

std::optional<SpotInk> ReadSpotInk(std::string_view line) {
  if (!line.starts_with(Start)) return std::nullopt;
  line.remove_prefix(Start.size());
  // A name may hold the text that follows it.
  const std::size_t middle = line.rfind(Middle);
  if (middle == line.npos || middle == 0) return std::nullopt;
  SpotInk ink{os::Utf8FromUtf8OrAnsi(std::string(line.substr(0, middle)))};
  line.remove_prefix(middle + Middle.size());
  for (double& part : ink.color)
    if (!TakePart(line, part)) return std::nullopt;
  const bool hasInk = std::ranges::any_of(ink.color, [](double part) { return part > 0; });
  if (line != End || !hasInk) return std::nullopt;
  return ink;
}

}  // namespace rastrel::interpreter
