#include "rastrel/job/printf_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "rastrel/platform/os/text.h"

namespace rastrel::job {
namespace {

// A width or a precision beyond this would only ever be an accident.
constexpr int NumberLimit = 1'000'000;
constexpr int UsualDigits = 6;
constexpr int UsualHexDigits = 13;
constexpr std::size_t AddressDigits = 16;

enum class Size { Int, Char, Short, Long, LongLong };

// "%" flags width "." precision size letter
struct Conversion {
  bool left = false;
  bool plus = false;
  bool space = false;
  bool zero = false;
  bool alternate = false;
  int width = 0;
  std::optional<int> precision;
  Size size = Size::Int;
  bool wide = false;  // "w"
  wchar_t letter = 0;
};

bool IsDigit(wchar_t character) { return character >= L'0' && character <= L'9'; }

bool IsOneOf(wchar_t letter, std::wstring_view letters) {
  return letters.find(letter) != letters.npos;
}

// A number in the text's parts: "-", "0x" and "1f".
struct Number {
  std::wstring sign;
  std::wstring digits;
};

std::wstring Widen(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

std::wstring Upper(std::wstring text) {
  for (wchar_t& character : text)
    if (character >= L'a' && character <= L'z')
      character = static_cast<wchar_t>(character - L'a' + L'A');
  return text;
}

// The arguments of one formatted text, in order.
class Arguments {
 public:
  virtual ~Arguments() = default;
  // The argument of a conversion; nothing if none is left.
  virtual std::optional<FormatArgument> Next(const Conversion& conversion) = 0;

  // The argument of a "*".
  std::optional<int> NextNumber() {
    Conversion star;
    star.letter = L'd';
    const auto argument = Next(star);
    if (!argument) return std::nullopt;
    const auto* number = std::get_if<std::int64_t>(&argument->Get());
    const auto* positive = std::get_if<std::uint64_t>(&argument->Get());
    if (positive != nullptr)
      return static_cast<int>(std::min<std::uint64_t>(*positive, NumberLimit));
    if (number == nullptr) return 0;
    return static_cast<int>(std::clamp<std::int64_t>(*number, -NumberLimit, NumberLimit));
  }
};

// Reads the conversions of a format.
class FormatReader {
 public:
  FormatReader(std::wstring_view format, Arguments& arguments)
      : m_Rest(format), m_Arguments(arguments) {}

  [[nodiscard]] bool IsAtEnd() const { return m_Rest.empty(); }

  // The text up to the next "%", which is taken as well.
  std::wstring_view TakePlain() {
    const std::size_t length = std::min(m_Rest.find(L'%'), m_Rest.size());
    const std::wstring_view plain = m_Rest.substr(0, length);
    m_Rest.remove_prefix(std::min(length + 1, m_Rest.size()));
    return plain;
  }

  // Nothing if the format ends inside of it.
  std::optional<Conversion> TakeConversion() {
    Conversion conversion;
    TakeFlags(conversion);
    if (const auto width = TakeNumber()) {
      conversion.left = conversion.left || *width < 0;
      conversion.width = std::abs(*width);
    }
    if (Take(L".")) {
      const int precision = TakeNumber().value_or(0);
      if (precision >= 0) conversion.precision = precision;
    }
    TakeSize(conversion);
    if (m_Rest.empty()) return std::nullopt;
    conversion.letter = m_Rest.front();
    m_Rest.remove_prefix(1);
    return conversion;
  }

 private:
  bool Take(std::wstring_view text) {
    if (!m_Rest.starts_with(text)) return false;
    m_Rest.remove_prefix(text.size());
    return true;
  }

  void TakeFlags(Conversion& conversion) {
    for (; !m_Rest.empty(); m_Rest.remove_prefix(1)) {
      switch (m_Rest.front()) {
        case L'-': conversion.left = true; break;
        case L'+': conversion.plus = true; break;
        case L' ': conversion.space = true; break;
        case L'0': conversion.zero = true; break;
        case L'#': conversion.alternate = true; break;
        default: return;
      }
    }
  }

  std::optional<int> TakeNumber() {
    if (Take(L"*")) return m_Arguments.NextNumber();
    std::optional<int> number;
    for (; !m_Rest.empty() && IsDigit(m_Rest.front()); m_Rest.remove_prefix(1))
      number = std::min(NumberLimit, number.value_or(0) * 10 + (m_Rest.front() - L'0'));
    return number;
  }

  void TakeSize(Conversion& conversion) {
    struct Row {
      std::wstring_view text;
      Size size;
    };
    constexpr std::array rows{
        Row{L"hh", Size::Char}, Row{L"h", Size::Short},      Row{L"ll", Size::LongLong},
        Row{L"l", Size::Long},  Row{L"I64", Size::LongLong}, Row{L"I32", Size::Int},
        Row{L"I", Size::Long},  Row{L"j", Size::LongLong},   Row{L"t", Size::Long},
        Row{L"z", Size::Long},  Row{L"L", Size::Int}};
    if (Take(L"w")) {
      conversion.wide = true;
      return;
    }
    for (const Row& row : rows) {
      if (!Take(row.text)) continue;
      conversion.size = row.size;
      return;
    }
  }

  std::wstring_view m_Rest;
  Arguments& m_Arguments;
};

template <typename Integer>
std::wstring Digits(Integer number, int base) {
  std::array<char, std::numeric_limits<Integer>::digits + 2> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, base);
  return Widen({buffer.data(), static_cast<std::size_t>(result.ptr - buffer.data())});
}

std::wstring SignOf(const Conversion& conversion, bool negative) {
  if (negative) return L"-";
  if (conversion.plus) return L"+";
  return conversion.space ? L" " : L"";
}

std::wstring Plain(const FormatArgument::Value& value);

// A negative number under an unsigned conversion has the bits of its size.
std::uint64_t BitsOf(const Conversion& conversion, std::int64_t number) {
  const bool is64 = conversion.size == Size::Long || conversion.size == Size::LongLong;
  return is64 || number >= 0 ? static_cast<std::uint64_t>(number)
                             : static_cast<std::uint32_t>(number);
}

std::wstring WithMinimum(std::wstring digits, const Conversion& conversion) {
  const auto minimum = static_cast<std::size_t>(conversion.precision.value_or(1));
  // Of 0 with a precision of 0 nothing is left.
  if (minimum == 0 && digits == L"0") return {};
  if (digits.size() < minimum) digits.insert(0, minimum - digits.size(), L'0');
  return digits;
}

Number SignedNumber(const Conversion& conversion, const FormatArgument::Value& value) {
  const auto* number = std::get_if<std::int64_t>(&value);
  const bool negative = number != nullptr && *number < 0;
  std::wstring digits = Plain(value);
  if (negative) digits.erase(0, 1);
  return {SignOf(conversion, negative), WithMinimum(std::move(digits), conversion)};
}

Number UnsignedNumber(const Conversion& conversion, std::uint64_t number) {
  const int base = conversion.letter == L'u' ? 10 : conversion.letter == L'o' ? 8 : 16;
  std::wstring digits = WithMinimum(Digits(number, base), conversion);
  std::wstring prefix;
  if (conversion.alternate && base == 8 && !digits.starts_with(L'0')) digits.insert(0, 1, L'0');
  if (conversion.alternate && base == 16 && number != 0) prefix = L"0x";
  if (conversion.letter == L'X') return {Upper(prefix), Upper(digits)};
  return {prefix, digits};
}

std::string FloatingDigits(double number, std::chars_format form, int precision) {
  // The largest double has 309 digits before the point.
  std::string buffer(static_cast<std::size_t>(precision) + 400, '\0');
  const auto result =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, form, precision);
  buffer.resize(static_cast<std::size_t>(result.ptr - buffer.data()));
  return buffer;
}

// The form of "%#g": the digits of "%g", with its zeros.
std::string GeneralWithZeros(double number, int precision) {
  const int digits = std::max(precision, 1);
  const std::string scientific = FloatingDigits(number, std::chars_format::scientific, digits - 1);
  const std::size_t mark = scientific.find('e');
  if (mark == scientific.npos) return scientific;
  const int exponent = std::stoi(scientific.substr(mark + 1));
  if (exponent < -4 || exponent >= digits) return scientific;
  return FloatingDigits(number, std::chars_format::fixed, digits - 1 - exponent);
}

std::string WithPoint(std::string digits) {
  if (digits.find('.') != digits.npos) return digits;
  return digits.insert(std::min(digits.find_first_of("ep"), digits.size()), 1, '.');
}

std::chars_format FormOf(wchar_t letter) {
  if (IsOneOf(letter, L"fF")) return std::chars_format::fixed;
  if (IsOneOf(letter, L"eE")) return std::chars_format::scientific;
  return IsOneOf(letter, L"aA") ? std::chars_format::hex : std::chars_format::general;
}

Number FloatingNumber(const Conversion& conversion, double number) {
  const bool negative = std::signbit(number);
  const double size = std::abs(number);
  const bool hex = IsOneOf(conversion.letter, L"aA");
  const int precision = conversion.precision.value_or(hex ? UsualHexDigits : UsualDigits);
  const bool keepsZeros = conversion.alternate && IsOneOf(conversion.letter, L"gG");
  std::string digits = keepsZeros ? GeneralWithZeros(size, precision)
                                  : FloatingDigits(size, FormOf(conversion.letter), precision);
  if (conversion.alternate && std::isfinite(size)) digits = WithPoint(std::move(digits));
  const bool upper = IsOneOf(conversion.letter, L"AEFG");
  std::wstring sign = SignOf(conversion, negative);
  if (hex && std::isfinite(size)) sign += upper ? L"0X" : L"0x";
  return {sign, upper ? Upper(Widen(digits)) : Widen(digits)};
}

// As the type alone has it.
std::wstring Plain(const FormatArgument::Value& value) {
  struct Printer {
    std::wstring operator()(std::int64_t number) const { return Digits(number, 10); }
    std::wstring operator()(std::uint64_t number) const { return Digits(number, 10); }
    std::wstring operator()(double number) const {
      return Widen(FloatingDigits(number, std::chars_format::general, UsualDigits));
    }
    std::wstring operator()(wchar_t character) const { return std::wstring(1, character); }
    std::wstring operator()(std::wstring_view text) const { return std::wstring(text); }
    std::wstring operator()(std::string_view text) const { return os::WideFromUtf8(text); }
    std::wstring operator()(FormatArgument::Pointer pointer) const {
      std::wstring digits = Upper(Digits(reinterpret_cast<std::uintptr_t>(pointer.value), 16));
      if (digits.size() < AddressDigits) digits.insert(0, AddressDigits - digits.size(), L'0');
      return digits;
    }
  };
  return std::visit(Printer{}, value);
}

bool IsInteger(const FormatArgument::Value& value) {
  return std::holds_alternative<std::int64_t>(value) ||
         std::holds_alternative<std::uint64_t>(value);
}

// A character's number for "%d" and the like, and the character of a number for "%c".
FormatArgument::Value Fitting(wchar_t letter, const FormatArgument::Value& value) {
  if (const auto* character = std::get_if<wchar_t>(&value); character && IsOneOf(letter, L"diouxX"))
    return static_cast<std::int64_t>(*character);
  if (const auto* number = std::get_if<std::int64_t>(&value); number && IsOneOf(letter, L"cC"))
    return static_cast<wchar_t>(*number);
  return value;
}

std::wstring Padded(const Conversion& conversion, const Number& number, bool zeros) {
  const std::size_t length = number.sign.size() + number.digits.size();
  const auto width = static_cast<std::size_t>(conversion.width);
  const std::size_t missing = length < width ? width - length : 0;
  if (conversion.left) return number.sign + number.digits + std::wstring(missing, L' ');
  if (zeros) return number.sign + std::wstring(missing, L'0') + number.digits;
  return std::wstring(missing, L' ') + number.sign + number.digits;
}

std::wstring Converted(const Conversion& conversion, const FormatArgument& argument) {
  const FormatArgument::Value value = Fitting(conversion.letter, argument.Get());
  const bool integer = IsInteger(value);
  const bool zeros = conversion.zero && !(integer && conversion.precision);
  if (integer && IsOneOf(conversion.letter, L"di"))
    return Padded(conversion, SignedNumber(conversion, value), zeros);
  if (integer && IsOneOf(conversion.letter, L"ouxX")) {
    const auto* negative = std::get_if<std::int64_t>(&value);
    const std::uint64_t bits =
        negative != nullptr ? BitsOf(conversion, *negative) : std::get<std::uint64_t>(value);
    return Padded(conversion, UnsignedNumber(conversion, bits), zeros);
  }
  const auto* real = std::get_if<double>(&value);
  if (real != nullptr && IsOneOf(conversion.letter, L"aAeEfFgG"))
    return Padded(conversion, FloatingNumber(conversion, *real), zeros && std::isfinite(*real));
  std::wstring text = Plain(value);
  if (IsOneOf(conversion.letter, L"sS") && conversion.precision)
    text.resize(std::min(text.size(), static_cast<std::size_t>(*conversion.precision)));
  return Padded(conversion, {{}, std::move(text)}, conversion.zero);
}

std::wstring Formatted(std::wstring_view format, Arguments& arguments) {
  FormatReader reader(format, arguments);
  std::wstring text(reader.TakePlain());
  while (!reader.IsAtEnd()) {
    const auto conversion = reader.TakeConversion();
    if (!conversion) break;
    if (!IsOneOf(conversion->letter, L"diouxXaAeEfFgGcCsSpn")) {
      text += conversion->letter;
    } else if (const auto argument = arguments.Next(*conversion);
               argument && conversion->letter != L'n') {
      text += Converted(*conversion, *argument);
    }
    text += reader.TakePlain();
  }
  return text;
}

class TypedArguments : public Arguments {
 public:
  explicit TypedArguments(std::span<const FormatArgument> list) : m_List(list) {}
  std::optional<FormatArgument> Next(const Conversion&) override {
    if (m_Used == m_List.size()) return std::nullopt;
    return m_List[m_Used++];
  }

 private:
  std::span<const FormatArgument> m_List;
  std::size_t m_Used = 0;
};

// Takes from a copy of the list. Each call of va_arg is right for one type.
class ListedArguments : public Arguments {
 public:
  explicit ListedArguments(std::va_list list) { va_copy(m_List, list); }
  ~ListedArguments() override { va_end(m_List); }
  ListedArguments(const ListedArguments&) = delete;
  ListedArguments& operator=(const ListedArguments&) = delete;

  std::optional<FormatArgument> Next(const Conversion& conversion) override {
    if (IsOneOf(conversion.letter, L"di")) return Signed(conversion.size);
    if (IsOneOf(conversion.letter, L"ouxX")) return Unsigned(conversion.size);
    if (IsOneOf(conversion.letter, L"aAeEfFgG")) return FormatArgument(va_arg(m_List, double));
    if (IsOneOf(conversion.letter, L"cC"))
      return FormatArgument(static_cast<wchar_t>(va_arg(m_List, int)));
    if (IsOneOf(conversion.letter, L"sS")) return Text(conversion);
    return FormatArgument(static_cast<const void*>(va_arg(m_List, const void*)));
  }

 private:
  FormatArgument Signed(Size size) {
    if (size == Size::LongLong) return va_arg(m_List, long long);
    if (size == Size::Long) return va_arg(m_List, long);
    const int number = va_arg(m_List, int);
    if (size == Size::Char) return static_cast<int>(static_cast<signed char>(number));
    return size == Size::Short ? static_cast<short>(number) : number;
  }

  FormatArgument Unsigned(Size size) {
    if (size == Size::LongLong) return va_arg(m_List, unsigned long long);
    if (size == Size::Long) return va_arg(m_List, unsigned long);
    const unsigned number = va_arg(m_List, unsigned);
    if (size == Size::Char) return static_cast<unsigned>(static_cast<unsigned char>(number));
    return size == Size::Short ? static_cast<unsigned short>(number) : number;
  }

  // In the printf of wide text "S" is the other one, the narrow one; "l" and "w" make either wide.
  FormatArgument Text(const Conversion& conversion) {
    const bool wide = conversion.wide || conversion.size == Size::Long ||
                      (conversion.letter == L's' && conversion.size != Size::Short);
    if (wide) return static_cast<const wchar_t*>(va_arg(m_List, const wchar_t*));
    return static_cast<const char*>(va_arg(m_List, const char*));
  }

  std::va_list m_List;
};

}  // namespace

std::wstring PrintfText(std::wstring_view format, std::span<const FormatArgument> arguments) {
  TypedArguments list(arguments);
  return Formatted(format, list);
}

std::wstring FormatVariableList(const wchar_t* format, std::va_list list) {
  ListedArguments arguments(list);
  return Formatted(format, arguments);
}

}  // namespace rastrel::job
