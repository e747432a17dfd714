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
  int longs = 0;        // how many "l"
  bool half = false;    // "h"
  bool size = false;    // "z"
  bool wide64 = false;  // "I64"
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

// The modifiers of a variable list that formatted text does not know are letters there.
void TakeModifiers(std::wstring_view format, std::size_t& at, bool variableList,
                   Conversion& conversion) {
  for (; at < format.size(); ++at) {
    const wchar_t letter = format[at];
    if (letter == L'h') {
      conversion.half = true;
    } else if (letter == L'l') {
      ++conversion.longs;
    } else if (letter == L'N') {
      continue;
    } else if (variableList && letter == L'z') {
      conversion.size = true;
    } else if (variableList && format.substr(at, 3) == L"I64") {
      conversion.wide64 = true;
      at += 2;
    } else {
      return;
    }
  }
}

// Reads a conversion whose "%" is before `at`. Nothing if the format ends inside it.
std::optional<Conversion> TakeConversion(std::wstring_view format, std::size_t& at,
                                         bool variableList) {
  Conversion conversion;
  TakeFlags(format, at, conversion);
  conversion.width = TakeNumber(format, at);
  if (at < format.size() && format[at] == L'.') {
    conversion.precision = TakeNumber(format, ++at);
    if (!conversion.left) conversion.fill = L'0';
  }
  TakeModifiers(format, at, variableList, conversion);
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

// Walks the format; `next` returns the argument of a conversion or null.
template <typename Next>
std::wstring Walk(std::wstring_view format, bool variableList, Next next) {
  std::wstring result;
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
    const auto conversion = TakeConversion(format, at, variableList);
    if (!conversion) break;
    if (const FormatArgument* argument = next(*conversion))
      result += Converted(*conversion, *argument);
  }
  return result;
}

std::int64_t TakeSigned(const Conversion& conversion, std::va_list& list) {
  if (conversion.wide64 || conversion.longs > 1) return va_arg(list, long long);
  if (conversion.size || conversion.longs == 1) return va_arg(list, long);
  const int number = va_arg(list, int);
  return conversion.half ? static_cast<short>(number) : number;
}

std::uint64_t TakeUnsigned(const Conversion& conversion, std::va_list& list) {
  if (conversion.wide64 || conversion.longs > 1) return va_arg(list, unsigned long long);
  if (conversion.size || conversion.longs == 1) return va_arg(list, unsigned long);
  const unsigned number = va_arg(list, unsigned);
  return conversion.half ? static_cast<unsigned short>(number) : number;
}

FormatArgument TakeArgument(const Conversion& conversion, std::va_list& list) {
  switch (conversion.letter) {
    case L'u':
    case L'o':
    case L'x':
    case L'X': return TakeUnsigned(conversion, list);
    case L'e':
    case L'E':
    case L'g':
    case L'G':
    case L'f':
    case L'F': return va_arg(list, double);
    case L's':
      if (conversion.half) return static_cast<const char*>(va_arg(list, const char*));
      return static_cast<const wchar_t*>(va_arg(list, const wchar_t*));
    case L'S': return static_cast<const char*>(va_arg(list, const char*));
    case L'c': return static_cast<wchar_t>(va_arg(list, int));
    case L'p': return static_cast<const void*>(va_arg(list, const void*));
    default: return TakeSigned(conversion, list);
  }
}

}  // namespace

std::wstring FormatText(std::wstring_view format, std::span<const FormatArgument> arguments) {
  std::size_t used = 0;
  return Walk(format, false, [&](const Conversion&) -> const FormatArgument* {
    return used < arguments.size() ? &arguments[used++] : nullptr;
  });
}

std::wstring FormatVariableList(const wchar_t* format, std::va_list list) {
  std::va_list arguments;
  va_copy(arguments, list);
  std::optional<FormatArgument> argument;
  std::wstring text =
      Walk(format, true, [&](const Conversion& conversion) -> const FormatArgument* {
        argument.emplace(TakeArgument(conversion, arguments));
        return &*argument;
      });
  va_end(arguments);
  return text;
}

}  // namespace rastrel::job
