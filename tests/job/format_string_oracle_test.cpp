#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <vector>

#include "rastrel/job/format_string.h"
#include "rastrel/platform/os/text.h"
#include "tests/support/environment_guard.h"
#include "tests/support/format_oracle.h"
#include "tests/support/scratch_directory.h"

namespace {

using rastrel::job::FormatArgument;
using rastrel::test::FormatOracle;
using Argument = FormatOracle::Argument;

// Random formats with arguments that fit them.
class Generator {
 public:
  explicit Generator(unsigned seed) : m_Random(seed) {}

  void Next() {
    m_Format.clear();
    m_Arguments.clear();
    for (int piece = Below(5); piece >= 0; --piece) {
      const int kind = Below(10);
      if (kind < 2) m_Format += Pick({L"text", L" ", L"\t\n", L"\u20ac", L"d", L"<<"});
      if (kind == 2) m_Format += L"%%";
      if (kind > 2) AddConversion();
    }
    if (Below(20) == 0) m_Format += Pick({L"%", L"%-", L"%08", L"%3.", L"%.2", L"%lh", L"%+N"});
    if (Below(20) == 0 && !m_Arguments.empty()) m_Arguments.pop_back();
  }

  [[nodiscard]] const std::wstring& Format() const { return m_Format; }
  [[nodiscard]] const std::vector<Argument>& Arguments() const { return m_Arguments; }

 private:
  int Below(int limit) { return static_cast<int>(m_Random() % static_cast<unsigned>(limit)); }
  std::wstring Pick(const std::vector<std::wstring>& choices) {
    return choices[static_cast<std::size_t>(Below(static_cast<int>(choices.size())))];
  }

  void AddConversion() {
    m_Format += L'%';
    for (int flag = Below(4); flag > 0; --flag) m_Format += Pick({L" ", L"#", L"+", L"-", L"0"});
    if (Below(2) == 0) m_Format += std::to_wstring(Below(30));
    const bool precise = Below(3) == 0;
    if (precise) m_Format += L'.';
    if (precise && Below(4) != 0) m_Format += std::to_wstring(Below(12));
    for (int modifier = Below(3); modifier > 0; --modifier) m_Format += Pick({L"h", L"l", L"N"});
    const std::wstring letter =
        Pick({L"d", L"i", L"u", L"o", L"x", L"X", L"e", L"E", L"g", L"G", L"f",
              L"F", L"s", L"s", L"p", L"c", L"k", L"*", L"z", L"I", L"S"});
    m_Format += letter;
    m_Arguments.push_back(ArgumentFor(letter.front()));
  }

  Argument ArgumentFor(wchar_t letter) {
    if (std::wstring(L"diuoxX").find(letter) != std::wstring::npos) return Number();
    if (std::wstring(L"eEgGfF").find(letter) != std::wstring::npos) return Floating(letter);
    if (letter == L's')
      return Pick({L"", L"a", L"text", L"a longer text with %d in it", L"\u00fc\u20ac"});
    if (letter == L'p') return reinterpret_cast<const void*>(std::uintptr_t{m_Random()} + 1);
    if (letter == L'c') return static_cast<wchar_t>(L'A' + Below(26));
    return Below(2) == 0 ? Number() : Argument(Pick({L"plain", L"x"}));
  }

  Argument Number() {
    const std::uint64_t bits = (std::uint64_t{m_Random()} << 32 | m_Random()) >> Below(64);
    switch (Below(4)) {
      case 0: return static_cast<std::int32_t>(bits);
      case 1: return static_cast<std::uint32_t>(bits);
      case 2: return static_cast<std::int64_t>(bits);
      default: return bits;
    }
  }

  Argument Floating(wchar_t letter) {
    // Streams write "inf" in lower case under fixed notation whatever their flags are, so not under
    // F.
    if (letter != L'F' && Below(30) == 0) return std::numeric_limits<double>::infinity();
    if (letter != L'F' && Below(30) == 0) return std::numeric_limits<double>::quiet_NaN();
    const double fraction = static_cast<double>(m_Random()) / 4294967296.0 - 0.5;
    return Below(10) == 0 ? static_cast<double>(Below(10))
                          : fraction * std::pow(10.0, Below(40) - 20);
  }

  std::mt19937 m_Random;
  std::wstring m_Format;
  std::vector<Argument> m_Arguments;
};

std::wstring Ours(const std::wstring& format, const std::vector<Argument>& arguments) {
  std::vector<FormatArgument> list;
  for (const Argument& argument : arguments)
    std::visit([&list](const auto& value) { list.emplace_back(value); }, argument);
  return rastrel::job::FormatText(format, list);
}

void CompareRandomFormats(unsigned seed, int count) {
  Generator generator(seed);
  for (int round = 0; round < count; ++round) {
    generator.Next();
    FormatOracle oracle(generator.Format(), generator.Arguments());
    ASSERT_EQ(oracle.Text(), Ours(generator.Format(), generator.Arguments()))
        << "format '" << rastrel::os::Utf8FromWide(generator.Format()) << "', round " << round;
  }
}

TEST(FormatStringOracle, a_hundred_thousand_random_formats_agree_with_a_stream) {
  CompareRandomFormats(20260204, 100'000);
}

// A locale of streams with a decimal comma and grouped digits.
class CommaNumbers : public std::numpunct<wchar_t> {
 protected:
  wchar_t do_decimal_point() const override { return L','; }
  wchar_t do_thousands_sep() const override { return L'.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(FormatStringOracle, no_locale_changes_a_number) {
  const std::locale old =
      std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
  // The C library's too, where the machine can make one.
  const rastrel::test::ScratchDirectory locales;
  const std::string make =
      "localedef -i de_DE -f UTF-8 " + locales.Path("de_DE.UTF-8") + " 2>/dev/null";
  const bool made = std::system(make.c_str()) == 0;
  const rastrel::test::EnvironmentGuard path("LOCPATH", locales.Path());
  if (made) {
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", 1.5);
    ASSERT_STREQ(text, "1,5");
  } else {
    std::printf("note: no locale of the C library could be made here; streams' locale only\n");
  }
  formatstringT<wchar_t> text;
  text.Format(L"%.3f %d %e %g %u", 1234567.25, 1234567, 1.5, 2.5, 7654321U);
  EXPECT_EQ(text, L"1234567.250 1234567 1.500000e+00 2.5 7654321");
  CompareRandomFormats(77, 5'000);
  std::setlocale(LC_ALL, "C");
  std::locale::global(old);
}

}  // namespace
