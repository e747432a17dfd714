#pragma once

#include <algorithm>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

namespace rastrel::test {

/// A formatter in the plainest way: the format is walked character by character, and each value
/// goes through a wide stream with the classic locale. It has nothing in common with the library's.
class FormatOracle {
 public:
  using Argument = std::variant<std::int32_t, std::uint32_t, std::int64_t, std::uint64_t, double,
                                wchar_t, std::wstring, const void*>;

  FormatOracle(std::wstring format, std::vector<Argument> arguments)
      : m_Format(std::move(format)), m_Arguments(std::move(arguments)) {}

  std::wstring Text() {
    while (!AtEnd()) {
      const wchar_t character = Take();
      if (character != L'%') {
        m_Result += character;
      } else if (!AtEnd() && Peek() == L'%') {
        m_Result += Take();
      } else {
        Convert();
      }
    }
    return m_Result;
  }

 private:
  bool AtEnd() const { return m_At == m_Format.size(); }
  wchar_t Peek() const { return m_Format[m_At]; }
  wchar_t Take() { return m_Format[m_At++]; }

  int TakeDigits() {
    std::wstring digits;
    while (!AtEnd() && Peek() >= L'0' && Peek() <= L'9') digits += Take();
    return digits.empty() ? 0 : std::stoi(digits);
  }

  void Convert() {
    wchar_t fill = L' ';
    bool left = false;
    while (!AtEnd() && std::wstring(L" #+-0").find(Peek()) != std::wstring::npos) {
      const wchar_t flag = Take();
      if (flag == L' ') fill = L' ';
      if (flag == L'0') fill = L'0';
      if (flag == L'-') left = true;
      if (flag == L'+') left = false;
    }
    const int width = TakeDigits();
    int precision = -1;
    if (!AtEnd() && Peek() == L'.') {
      Take();
      precision = TakeDigits();
      if (!left) fill = L'0';
    }
    while (!AtEnd() && (Peek() == L'h' || Peek() == L'l' || Peek() == L'N')) Take();
    if (AtEnd()) return;
    const wchar_t letter = Take();
    if (m_Used == m_Arguments.size()) return;
    const Argument& argument = m_Arguments[m_Used++];
    if (letter == L'x' || letter == L'X') fill = L' ';
    std::wostringstream stream;
    stream.imbue(std::locale::classic());
    stream << std::setw(width) << std::setfill(fill) << (left ? std::left : std::right);
    stream << Converted(letter, precision, argument);
    m_Result += stream.str();
  }

  static std::wstring Converted(wchar_t letter, int precision, const Argument& argument) {
    std::wostringstream stream;
    stream.imbue(std::locale::classic());
    const bool upper = letter == L'X' || letter == L'E' || letter == L'G' || letter == L'F';
    if (upper) stream << std::uppercase;
    switch (letter) {
      case L'u': PutUnsigned(stream, argument); break;
      case L'o': PutUnsigned(stream << std::oct, argument); break;
      case L'x':
      case L'X': PutUnsigned(stream << std::hex, argument); break;
      case L'e':
      case L'E': stream << std::scientific; break;
      case L'f':
      case L'F': stream << std::fixed; break;
      default: break;
    }
    if (std::wstring(L"uoxX").find(letter) != std::wstring::npos) {
      std::wstring digits = stream.str();
      const auto zeros = static_cast<std::size_t>(std::max(precision, 0));
      if (upper || letter == L'x')
        while (digits.size() < zeros) digits.insert(digits.begin(), L'0');
      return digits;
    }
    if (std::wstring(L"eEfFgG").find(letter) != std::wstring::npos)
      stream << std::setprecision(precision < 0 ? 6 : precision);
    std::visit([&stream](const auto& value) { stream << value; }, argument);
    std::wstring text = stream.str();
    if (letter == L's' && precision >= 0)
      text = text.substr(0, static_cast<std::size_t>(precision));
    return text;
  }

  // Negative numbers as 32 bits.
  static void PutUnsigned(std::wostream& stream, const Argument& argument) {
    std::visit(
        [&stream](const auto& value) {
          using Value = std::decay_t<decltype(value)>;
          if constexpr (std::is_same_v<Value, std::int32_t> ||
                        std::is_same_v<Value, std::int64_t>) {
            if (value < 0) {
              stream << static_cast<std::uint32_t>(value);
            } else {
              stream << static_cast<std::uint64_t>(value);
            }
          } else {
            stream << value;
          }
        },
        argument);
  }

  std::wstring m_Format;
  std::vector<Argument> m_Arguments;
  std::wstring m_Result;
  std::size_t m_At = 0;
  std::size_t m_Used = 0;
};

}  // namespace rastrel::test
