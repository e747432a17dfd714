#include <array>
#include <cmath>
#include <optional>

#include "cutting/frame/mark_layout.h"
#include "rastrel/platform/os/number_text.h"

namespace rastrel::cutting {
namespace {

struct Unit {
  std::string_view name;
  double millimetres;
};

constexpr std::array Units{Unit{"mm", 1}, Unit{"cm", 10}, Unit{"in", 25.4}, Unit{"pt", 25.4 / 72}};

Failure Wrong(std::string_view part, std::string_view why) {
  std::string shown(part.substr(0, 40));
  if (part.size() > 40) shown += "...";
  return FailureOf("'" + shown + "' is wrong for marks: " + std::string(why),
                   FailureCode::BadInput);
}

// Digits, and perhaps a point and digits.
std::optional<double> DecimalOf(std::string_view text) {
  bool hasDigit = false;
  bool hasPoint = false;
  for (const char c : text) {
    if (c == '.' && !hasPoint) {
      hasPoint = true;
    } else if (c >= '0' && c <= '9') {
      hasDigit = true;
    } else {
      return std::nullopt;
    }
  }
  if (!hasDigit) return std::nullopt;
  return os::DoubleFromText(text);
}

std::optional<double> LengthOf(std::string_view text) {
  for (const Unit& unit : Units) {
    if (!text.ends_with(unit.name)) continue;
    const auto number = DecimalOf(text.substr(0, text.size() - unit.name.size()));
    if (!number) return std::nullopt;
    return *number * unit.millimetres;
  }
  return DecimalOf(text);
}

std::optional<RegistrationMark::Shape> ShapeOf(std::string_view name) {
  if (name == "corner") return RegistrationMark::Shape::Corner;
  if (name == "cross") return RegistrationMark::Shape::Cross;
  if (name == "circle") return RegistrationMark::Shape::Circle;
  return std::nullopt;
}

Expected<void> ReadShape(MarkOptions& options, std::string_view part) {
  const auto colon = part.find(':');
  const auto shape = ShapeOf(part.substr(0, colon));
  if (!shape) return Wrong(part, "the shape is corner, cross or circle");
  options.shape = *shape;
  if (colon == part.npos) return {};
  const auto size = LengthOf(part.substr(colon + 1));
  if (!size) return Wrong(part, "the size is a length in mm, cm, in or pt");
  options.size = *size;
  return {};
}

Expected<void> ReadCount(MarkOptions& options, std::string_view part, std::string_view value) {
  if (value.size() != 1 || value[0] < '3' || value[0] > '8')
    return Wrong(part, "the count is 3 to 8");
  options.count = value[0] - '0';
  return {};
}

Expected<void> ReadInk(MarkOptions& options, std::string_view part, std::string_view value) {
  if (value != "black" && value != "all") return Wrong(part, "the ink is black or all");
  options.inAllInks = value == "all";
  return {};
}

Expected<void> ReadPart(MarkOptions& options, std::string_view part) {
  const auto equals = part.find('=');
  const std::string_view key = part.substr(0, equals);
  const std::string_view value = equals == part.npos ? "" : part.substr(equals + 1);
  if (key == "count") return ReadCount(options, part, value);
  if (key == "ink") return ReadInk(options, part, value);
  double* length = nullptr;
  if (key == "gap") length = &options.gap;
  if (key == "spacing") length = &options.spacing;
  if (key == "edge") length = &options.edge;
  if (length == nullptr) return Wrong(part, "gap, count, spacing, edge and ink are known");
  const auto read = LengthOf(value);
  if (!read) return Wrong(part, "a length in mm, cm, in or pt is needed");
  *length = *read;
  return {};
}

}  // namespace

Expected<MarkOptions> ParseMarks(std::string_view text) {
  MarkOptions options;
  bool isFirst = true;
  for (;;) {
    const auto comma = text.find(',');
    const std::string_view part = text.substr(0, comma);
    const auto read = isFirst ? ReadShape(options, part) : ReadPart(options, part);
    if (!read) return read.Error();
    if (comma == text.npos) return options;
    text.remove_prefix(comma + 1);
    isFirst = false;
  }
}

}  // namespace rastrel::cutting
