#include "rastrel/readers/cell_value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

#include "rastrel/platform/os/number_text.h"

namespace rastrel::readers {
namespace {

constexpr std::size_t Decimals = 6;  // that "%f" prints
constexpr std::int64_t Million = 1'000'000;

bool IsDigit(char character) { return character >= '0' && character <= '9'; }
bool AreDigits(std::string_view text) { return std::all_of(text.begin(), text.end(), IsDigit); }

std::string_view WithoutMinus(std::string_view text) {
  return text.starts_with('-') ? text.substr(1) : text;
}

void AppendInteger(SheetText& text, std::string_view number) {
  const std::string_view digits = WithoutMinus(number);
  const bool isPlain = !digits.empty() && digits.size() <= 18 && AreDigits(digits) &&
                       (digits.front() != '0' || number == "0");
  if (isPlain) return text.Append(number);
  std::array<char, 24> buffer{};
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), os::Int64FromText(number));
  text.Append(std::string_view(buffer.data(), end.ptr));
}

std::int64_t ValueOf(std::string_view digits) {
  std::int64_t value = 0;
  for (const char digit : digits) value = value * 10 + (digit - '0');
  return value;
}

// The first `count` decimals as a number; decimals that are not there are zeros.
std::int64_t FirstDecimals(std::string_view decimals, std::size_t count) {
  std::int64_t value = ValueOf(decimals.substr(0, count));
  for (std::size_t at = decimals.size(); at < count; ++at) value *= 10;
  return value;
}

// A plain decimal number, in millionths, rounded as its nearest double would be. That double lies
// within 2^-24 of a number below 10^9, and within 2^-34 of one below 10^6. The one is far less than
// half a millionth, so six decimals come back as they are. The other is less than a ten-thousandth
// of a millionth, so more decimals show the direction of the rounding unless the four after the
// sixth are next to a half. None where that is not enough.
std::optional<std::int64_t> Millionths(std::string_view digits) {
  const std::size_t point = digits.find('.');
  const std::string_view whole = digits.substr(0, point);
  const std::string_view decimals = digits.substr(point + 1);
  if (whole.empty() || whole.size() > 9 || !AreDigits(whole) || !AreDigits(decimals)) return {};
  const std::int64_t value = ValueOf(whole) * Million + FirstDecimals(decimals, Decimals);
  if (decimals.size() <= Decimals) return value;
  const std::int64_t rest = FirstDecimals(decimals.substr(Decimals), 4);
  if (whole.size() > 6 || (rest > 4998 && rest < 5001)) return {};
  return rest >= 5001 ? value + 1 : value;
}

void AppendMillionths(SheetText& text, bool isNegative, std::int64_t value) {
  std::array<char, 32> buffer{};
  char* end = buffer.data();
  if (isNegative) *end++ = '-';
  end = std::to_chars(end, buffer.data() + buffer.size(), value / Million).ptr;
  std::int64_t rest = value % Million;
  *end = '.';
  for (std::size_t place = Decimals; place > 0; --place, rest /= 10)
    end[place] = static_cast<char>('0' + rest % 10);
  text.Append(std::string_view(buffer.data(), end + 1 + Decimals));
}

void AppendFraction(SheetText& text, std::string_view number) {
  const std::string_view digits = WithoutMinus(number);
  if (const auto value = Millionths(digits))
    return AppendMillionths(text, digits.size() < number.size(), *value);
  std::array<char, 340> buffer{};  // sign, 309 digits, point, 6 digits
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), os::DoubleFromText(number),
                    std::chars_format::fixed, static_cast<int>(Decimals));
  text.Append(std::string_view(buffer.data(), end.ptr));
}

// All at once from left to right, without looking again at the replacements.
void ReplaceAll(std::string& text, std::string_view what, char by) {
  std::size_t from = text.find(what);
  if (from == std::string::npos) return;
  std::size_t to = from;
  while (from < text.size()) {
    if (std::string_view(text).substr(from).starts_with(what)) {
      text[to++] = by;
      from += what.size();
    } else {
      text[to++] = text[from++];
    }
  }
  text.resize(to);
}

}  // namespace

void AppendNumber(SheetText& text, std::string_view number) {
  if (number.find('.') == std::string_view::npos)
    AppendInteger(text, number);
  else
    AppendFraction(text, number);
}

bool ReplaceEntities(std::string_view value, std::string& scratch) {
  if (value.find('&') == std::string_view::npos) return false;
  scratch.assign(value);
  using Entity = std::pair<std::string_view, char>;
  for (const auto& [entity, character] :
       {Entity{"&quot;", '"'}, Entity{"&amp;", '&'}, Entity{"&lt;", '<'}, Entity{"&gt;", '>'},
        Entity{"&apos;", '\''}})
    ReplaceAll(scratch, entity, character);
  return true;
}

std::string_view CleanedValue(std::string_view value, std::string& scratch) {
  const bool hasBreak = value.find('\n') != std::string_view::npos;
  if (!ReplaceEntities(value, scratch)) {
    if (!hasBreak) return value;
    scratch.assign(value);
  }
  if (hasBreak) std::replace(scratch.begin(), scratch.end(), '\n', CellLineBreak);
  return scratch;
}

}  // namespace rastrel::readers
