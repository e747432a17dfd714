#include "rastrel/job/format_string.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cwctype>
#include <optional>

#include "rastrel/platform/os/text.h"

namespace rastrel::job {

namespace {

// Widths and precisions beyond this would only ever be an accident.
constexpr std::size_t NumberLimit = 1'000'000;

struct Conversion {
  wchar_t fill = L' ';
  bool left = false;
  std::size_t width = 0;
  std::optional<std::size_t> precision;
  wchar_t letter = 0;
};

bool IsDigit(wchar_t character) { return character >= L'0' && character <= L'9'; }

std::size_t TakeNumber(std::wstring_view format, std::size_t& at) {
  std::size_t number = 0;
  for (; at < format.size() && IsDigit(format[at]); ++at)
    number = std::min(NumberLimit, number * 10 + static_cast<std::size_t>(format[at] - L'0'));
  return number;
}

void TakeFlags(std::wstring_view format, std::size_t& at, Conversion& conversion) {
  for (; at < format.size(); ++at) {
    switch (format[at]) {
      case L' ': conversion.fill = L' '; break;
      case L'0': conversion.fill = L'0'; break;
      case L'-': conversion.left = true; break;
      case L'+': conversion.left = false; break;
      case L'#': break;
      default: return;
    }
  }
}

void SkipModifiers(std::wstring_view format, std::size_t& at) {
  while (at < format.size() && std::wstring_view(L"hlN").find(format[at]) != format.npos) ++at;
}

// Reads a conversion whose "%" is before `at`. Nothing if the format ends inside it.
std::optional<Conversion> TakeConversion(std::wstring_view format, std::size_t& at) {
  Conversion conversion;
  TakeFlags(format, at, conversion);
  conversion.width = TakeNumber(format, at);
  if (at < format.size() && format[at] == L'.') {
    conversion.precision = TakeNumber(format, ++at);
    if (!conversion.left) conversion.fill = L'0';
  }
  SkipModifiers(format, at);
  if (at >= format.size()) return std::nullopt;
  conversion.letter = format[at++];
  return conversion;
}

std::wstring Widen(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

std::wstring Padded(std::wstring text, std::size_t width, bool left, wchar_t fill) {
  if (text.size() >= width) return text;
  text.insert(left ? text.size() : 0, width - text.size(), fill);
  return text;
}

template <typename Number>
std::wstring Digits(Number number, int base) {
  std::array<char, 66> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, base);
  return Widen({buffer.data(), static_cast<std::size_t>(result.ptr - buffer.data())});
}

// The number that an unsigned conversion prints: a negative one as its 32 bits.
std::optional<std::uint64_t> AsUnsigned(const FormatArgument::Value& value) {
  if (const auto* number = std::get_if<std::uint64_t>(&value)) return *number;
  if (const auto* number = std::get_if<std::int64_t>(&value))
    return *number < 0 ? static_cast<std::uint32_t>(*number) : static_cast<std::uint64_t>(*number);
  return std::nullopt;
}

std::wstring Upper(std::wstring text) {
  for (wchar_t& character : text)
    if (character >= L'a' && character <= L'z')
      character = static_cast<wchar_t>(character - L'a' + L'A');
  return text;
}

std::wstring Floating(double number, std::chars_format form, std::size_t precision) {
  std::string buffer(precision + 400, '\0');  // the largest double has 309 digits before the point
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, form,
                                    static_cast<int>(precision));
  return Widen({buffer.data(), static_cast<std::size_t>(result.ptr - buffer.data())});
}

std::wstring Plain(const FormatArgument::Value& value) {
  struct Printer {
    std::wstring operator()(std::int64_t number) const { return Digits(number, 10); }
    std::wstring operator()(std::uint64_t number) const { return Digits(number, 10); }
    std::wstring operator()(double number) const {
      return Floating(number, std::chars_format::general, 6);
    }
    std::wstring operator()(wchar_t character) const { return std::wstring(1, character); }
    std::wstring operator()(std::wstring_view text) const { return std::wstring(text); }
    std::wstring operator()(std::string_view text) const { return os::WideFromUtf8(text); }
    std::wstring operator()(FormatArgument::Pointer pointer) const {
      return L"0x" + Digits(reinterpret_cast<std::uintptr_t>(pointer.value), 16);
    }
  };
  return std::visit(Printer{}, value);
}

std::wstring FloatingText(const Conversion& conversion, const FormatArgument::Value& value) {
  const auto* number = std::get_if<double>(&value);
  if (number == nullptr) return Plain(value);
  const std::size_t precision = conversion.precision.value_or(6);
  switch (conversion.letter) {
    case L'f': return Floating(*number, std::chars_format::fixed, precision);
    case L'F': return Upper(Floating(*number, std::chars_format::fixed, precision));
    case L'e': return Floating(*number, std::chars_format::scientific, precision);
    case L'E': return Upper(Floating(*number, std::chars_format::scientific, precision));
    case L'g': return Floating(*number, std::chars_format::general, precision);
    default: return Upper(Floating(*number, std::chars_format::general, precision));
  }
}

std::wstring Hexadecimal(const Conversion& conversion, const FormatArgument::Value& value) {
  const auto number = AsUnsigned(value);
  if (!number) return Padded(Plain(value), conversion.width, conversion.left, L' ');
  std::wstring digits = Digits(*number, 16);
  if (conversion.letter == L'X') digits = Upper(std::move(digits));
  digits = Padded(std::move(digits), conversion.precision.value_or(0), false, L'0');
  return Padded(std::move(digits), conversion.width, conversion.left, L' ');
}

std::wstring Converted(const Conversion& conversion, const FormatArgument& argument) {
  const auto& value = argument.Get();
  std::wstring text;
  switch (conversion.letter) {
    case L'x':
    case L'X': return Hexadecimal(conversion, value);
    case L'u':
    case L'o': {
      const auto number = AsUnsigned(value);
      text = number ? Digits(*number, conversion.letter == L'o' ? 8 : 10) : Plain(value);
      break;
    }
    case L'e':
    case L'E':
    case L'g':
    case L'G':
    case L'f':
    case L'F': text = FloatingText(conversion, value); break;
    case L's':
      text = Plain(value);
      if (conversion.precision) text.resize(std::min(text.size(), *conversion.precision));
      break;
    default: text = Plain(value); break;
  }
  return Padded(std::move(text), conversion.width, conversion.left, conversion.fill);
}

}  // namespace

std::wstring FormatText(std::wstring_view format, std::span<const FormatArgument> arguments) {
  std::wstring result;
  std::size_t used = 0;
  std::size_t at = 0;
  while (at < format.size()) {
    const std::size_t percent = std::min(format.find(L'%', at), format.size());
    result.append(format.substr(at, percent - at));
    at = percent + 1;
    if (at >= format.size()) break;
    if (format[at] == L'%') {
      result += L'%';
      ++at;
      continue;
    }
    const auto conversion = TakeConversion(format, at);
    if (!conversion) break;
    if (used < arguments.size()) result += Converted(*conversion, arguments[used++]);
  }
  return result;
}

}  // namespace rastrel::job
