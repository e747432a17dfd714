#include "rastrel/conversion/scan_group.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace rastrel::conversion {

namespace {

// The rest of a text in narrow characters; a character beyond ASCII ends every number.
class Scanner {
 public:
  explicit Scanner(std::wstring_view text) {
    m_Text.reserve(text.size());
    for (const wchar_t character : text)
      m_Text += character > 0 && character < 0x80 ? static_cast<char>(character) : '?';
  }

  std::optional<std::int32_t> Integer() {
    const bool negative = PassSign();
    return Integer(negative, PassHexadecimalMark() ? 16 : Peek() == '0' ? 8 : 10);
  }

  std::optional<std::int32_t> DecimalInteger() {
    const bool negative = PassSign();
    return Integer(negative, 10);
  }

  template <typename Number>
  std::optional<Number> Floating() {
    const bool negative = PassSign();
    Number number = 0;
    const bool hexadecimal = PassHexadecimalMark();
    // from_chars would accept names of numbers after the mark.
    if (hexadecimal && std::string_view("iInN").find(Peek()) != std::string_view::npos)
      return std::nullopt;
    if (!Take(number, hexadecimal ? std::chars_format::hex : std::chars_format::general))
      return std::nullopt;
    return negative ? -number : number;
  }

  bool PassComma() {
    if (Peek() != ',') return false;
    ++m_At;
    return true;
  }

 private:
  std::optional<std::int32_t> Integer(bool negative, int base) {
    std::int64_t number = 0;
    if (!Take(number, base)) return std::nullopt;
    if (negative) number = -number;
    const auto narrow = static_cast<std::int32_t>(number);
    return narrow == number ? std::optional(narrow) : std::nullopt;
  }

  [[nodiscard]] char Peek() const { return m_At < m_Text.size() ? m_Text[m_At] : '\0'; }

  bool PassSign() {
    while (Peek() != '\0' && std::string_view(" \t\n\v\f\r").find(Peek()) != std::string_view::npos)
      ++m_At;
    const char sign = Peek();
    if (sign == '-' || sign == '+') ++m_At;
    return sign == '-';
  }

  bool PassHexadecimalMark() {
    const std::string_view rest = std::string_view(m_Text).substr(m_At);
    if (!rest.starts_with("0x") && !rest.starts_with("0X")) return false;
    m_At += 2;
    return true;
  }

  // from_chars takes a minus sign of its own; one that comes here is a second one.
  template <typename Number, typename Form>
  bool Take(Number& number, Form form) {
    if (Peek() == '-') return false;
    const char* const begin = m_Text.data() + m_At;
    const auto [end, error] = std::from_chars(begin, m_Text.data() + m_Text.size(), number, form);
    m_At += static_cast<std::size_t>(end - begin);
    return error == std::errc();
  }

  std::string m_Text;
  std::size_t m_At = 0;
};

template <typename Number, typename Next>
bool ScanGroup(std::span<Number> numbers, Next next) {
  std::vector<Number> scanned;
  for (std::size_t index = 0; index < numbers.size(); ++index) {
    const std::optional<Number> number = next();
    if (!number) return false;
    scanned.push_back(*number);
  }
  std::copy(scanned.begin(), scanned.end(), numbers.begin());
  return true;
}

template <typename Number, typename Next>
bool ScanList(std::span<Number> numbers, Scanner& scanner, Next next) {
  bool first = true;
  return ScanGroup(numbers, [&]() -> std::optional<Number> {
    if (!std::exchange(first, false) && !scanner.PassComma()) return std::nullopt;
    return next();
  });
}

}  // namespace

bool ScanIntegers(std::wstring_view text, std::span<std::int32_t> numbers) {
  Scanner scanner(text);
  return ScanGroup(numbers, [&scanner] { return scanner.Integer(); });
}

bool ScanFloats(std::wstring_view text, std::span<float> numbers) {
  Scanner scanner(text);
  return ScanGroup(numbers, [&scanner] { return scanner.Floating<float>(); });
}

bool ScanIntegerList(std::wstring_view text, std::span<std::int32_t> numbers) {
  Scanner scanner(text);
  return ScanList(numbers, scanner, [&scanner] { return scanner.DecimalInteger(); });
}

bool ScanDecimalList(std::wstring_view text, std::span<double> numbers) {
  Scanner scanner(text);
  return ScanList(numbers, scanner, [&scanner] { return scanner.Floating<double>(); });
}

}  // namespace rastrel::conversion
