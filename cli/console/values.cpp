#include "cli/console/values.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr double MaximumCentimetres = 100'000.0;  // a kilometre
constexpr double MaximumOfByte = 255.0;
constexpr int MaximumDpi = 4800;
constexpr std::int32_t MaximumCopies = 100'000;
constexpr std::size_t MaximumLetters = 100;  // of a name

struct Unit {
  const char* name;
  double centimetres;
};

constexpr std::array Units{Unit{"cm", 1.0}, Unit{"mm", 0.1}, Unit{"in", 2.54}};

Expected<double> Centimetres(std::string_view option, std::string_view number, const Unit& unit,
                             std::string_view text) {
  const auto length = NumberOf(number);
  if (!length || *length <= 0.0 || *length * unit.centimetres > MaximumCentimetres)
    return RefusedValue(option, text,
                        "'" + std::string(number) + "' is no length above 0 and up to a kilometre");
  return *length * unit.centimetres;
}

Expected<double> Component(std::string_view option, std::string_view part, std::string_view text) {
  const bool percentage = part.ends_with('%');
  const auto number = NumberOf(percentage ? part.substr(0, part.size() - 1) : part);
  const double maximum = percentage ? 100.0 : MaximumOfByte;
  if (!number || *number < 0.0 || *number > maximum)
    return RefusedValue(
        option, text,
        "'" + std::string(part) + "' is neither a number from 0 to 255 nor a percentage");
  return *number / maximum;
}

}  // namespace

Failure RefusedValue(std::string_view option, std::string_view text, const std::string& why) {
  return FailureOf(std::string(option) + " " + std::string(text) + ": " + why);
}

std::optional<double> NumberOf(std::string_view text) {
  double number = 0.0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  if (error != std::errc() || stop != end || !std::isfinite(number)) return std::nullopt;
  return number;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    parts.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

Expected<std::int32_t> WholeNumberOf(std::string_view option, std::string_view text,
                                     std::int32_t minimum, std::int32_t maximum) {
  std::int32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number < minimum || number > maximum)
    return RefusedValue(
        option, text,
        "not a number from " + std::to_string(minimum) + " to " + std::to_string(maximum));
  return number;
}

Expected<std::int32_t> ParseDpi(std::string_view text) {
  return WholeNumberOf("--dpi", text, 1, MaximumDpi);
}

Expected<std::int32_t> ParseCopies(std::string_view text) {
  return WholeNumberOf("--copies", text, 1, MaximumCopies);
}

ColorText SplitColor(std::string_view text) {
  const std::size_t colon = std::min(text.find(':'), text.size());
  return {.model = text.substr(0, colon),
          .components = text.substr(std::min(colon + 1, text.size()))};
}

Expected<Size> ParseSize(std::string_view option, std::string_view text) {
  const auto unit =
      std::ranges::find_if(Units, [text](const Unit& one) { return text.ends_with(one.name); });
  if (unit == Units.end())
    return RefusedValue(option, text, "a size has its unit behind it: cm, mm or in, as in 10x5in");
  const auto sides = Split(text.substr(0, text.size() - 2), 'x');
  if (sides.size() != 2)
    return RefusedValue(option, text, "a size is WIDTHxHEIGHT and a unit, as in 10x5in");
  const auto width = Centimetres(option, sides[0], *unit, text);
  if (!width) return width.Error();
  const auto height = Centimetres(option, sides[1], *unit, text);
  if (!height) return height.Error();
  return Size{.widthCm = *width, .heightCm = *height};
}

Expected<PartSize> ParsePartSize(std::string_view option, std::string_view text) {
  constexpr Unit point{"pt", 2.54 / 72};
  const auto* unit =
      std::ranges::find_if(Units, [text](const Unit& one) { return text.ends_with(one.name); });
  if (unit == Units.end() && text.ends_with(point.name)) unit = &point;
  if (unit == Units.end())
    return RefusedValue(option, text,
                        "a size has its unit at its end: cm, mm, in or pt, as in 10x5in");
  const auto sides = Split(text.substr(0, text.size() - 2), 'x');
  if (sides.size() != 2 || (sides[0].empty() && sides[1].empty()))
    return RefusedValue(option, text,
                        "a size is WIDTHxHEIGHT and a unit, as in 10x5in, or one of the two alone, "
                        "as in 10xin or x5in");
  PartSize size;
  for (const auto& [side, length] :
       {std::pair(sides[0], &size.widthCm), std::pair(sides[1], &size.heightCm)}) {
    if (side.empty()) continue;
    const auto centimetres = Centimetres(option, side, *unit, text);
    if (!centimetres) return centimetres.Error();
    *length = *centimetres;
  }
  return size;
}

Expected<std::vector<double>> ParseComponents(std::string_view option, std::string_view list,
                                              std::size_t count, std::string_view text) {
  const auto parts = Split(list, ',');
  if (parts.size() != count)
    return RefusedValue(option, text, "it takes " + std::to_string(count) + " components");
  std::vector<double> components;
  components.reserve(count);
  for (const std::string_view part : parts) {
    const auto component = Component(option, part, text);
    if (!component) return component.Error();
    components.push_back(*component);
  }
  return components;
}

Expected<std::wstring> ParseSpotName(std::string_view option, std::string_view name,
                                     std::string_view text) {
  if (name.empty()) return RefusedValue(option, text, "the spot colour has no name");
  const bool breaks = std::ranges::any_of(name, [](char character) {
    return static_cast<unsigned char>(character) < 32 || character == 127 || character == '(' ||
           character == ')' || character == '\\';
  });
  if (breaks || name.size() > MaximumLetters)
    return RefusedValue(
        option, text,
        "a spot colour's name holds no parentheses, backslashes or control characters, "
        "and at most " +
            std::to_string(MaximumLetters) + " bytes");
  return os::WideFromUtf8(os::Utf8FromUtf8OrAnsi(name));
}

}  // namespace rastrel::cli
