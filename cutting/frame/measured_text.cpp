#include <algorithm>
#include <cmath>

#include "cutting/frame/mark_fit.h"
#include "rastrel/platform/os/number_text.h"

namespace rastrel::cutting {
namespace {

constexpr double MaximumPlace = 1e6;
constexpr std::size_t MaximumShown = 40;

std::string_view Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// A sign, digits, and perhaps a point and digits.
bool IsDecimal(std::string_view text) {
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
  bool hasDigit = false;
  bool hasPoint = false;
  for (const char c : text) {
    if (c == '.' && !hasPoint) {
      hasPoint = true;
    } else if (c >= '0' && c <= '9') {
      hasDigit = true;
    } else {
      return false;
    }
  }
  return hasDigit;
}

Failure Wrong(std::string_view text, const std::string& why) {
  std::string shown(text.substr(0, MaximumShown));
  if (text.size() > MaximumShown) shown += "...";
  return FailureOf("'" + shown + "' is no measured place: " + why, FailureCode::BadInput);
}

bool EndsInUnit(std::string_view number) {
  return !number.empty() &&
         ((number.back() >= 'a' && number.back() <= 'z') ||
          (number.back() >= 'A' && number.back() <= 'Z') || number.back() == '"');
}

Expected<double> CoordinateOf(std::string_view number, std::string_view text) {
  if (number.empty()) return Wrong(text, "a number is missing");
  if (!IsDecimal(number))
    return Wrong(text,
                 EndsInUnit(number)
                     ? "places are in millimetres, without a unit, an exponent or a name"
                     : "a place is two numbers, X,Y, in millimetres, with a point for decimals");
  const double value = os::DoubleFromText(number);
  if (!(std::abs(value) <= MaximumPlace))
    return Wrong(text, "a place is at most 1000000 mm from the origin");
  return value;
}

}  // namespace

std::optional<double> ParseMillimetres(std::string_view text) {
  if (!IsDecimal(text)) return std::nullopt;
  const double value = os::DoubleFromText(text);
  if (!(std::abs(value) <= MaximumPlace)) return std::nullopt;
  return value;
}

Expected<Point> ParseMeasured(std::string_view text) {
  const auto comma = text.find(',');
  if (comma == text.npos) return Wrong(text, "two numbers with a comma between them are needed");
  const auto second = text.substr(comma + 1);
  if (second.find(',') != second.npos)
    return Wrong(text, "it has more than one comma; decimals have a point");
  const auto x = CoordinateOf(Trimmed(text.substr(0, comma)), text);
  if (!x) return x.Error();
  const auto y = CoordinateOf(Trimmed(second), text);
  if (!y) return y.Error();
  return Point{*x, *y};
}

Expected<std::vector<Point>> ParseMeasurements(std::string_view text, const std::string& name) {
  std::vector<Point> points;
  int line = 0;
  const auto at = [&](Failure failure) {
    failure.where = name;
    failure.line = line;
    failure.column = 1;
    return failure;
  };
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    std::string_view row = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    ++line;
    if (!row.empty() && row.back() == '\r') row.remove_suffix(1);
    row = Trimmed(row);
    if (row.empty() || row.front() == '#') continue;
    const auto point = ParseMeasured(row);
    if (!point) return at(point.Error());
    if (points.size() == MaximumFittedMarks)
      return at(FailureOf("at most " + std::to_string(MaximumFittedMarks) + " marks are measured",
                          FailureCode::BadInput));
    points.push_back(*point);
  }
  return points;
}

}  // namespace rastrel::cutting
