#pragma once

#include <clocale>
#include <cstdlib>
#include <locale>
#include <string>

#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::test {

/// For its life numbers have a decimal comma and grouped digits: in the streams' global locale, and
/// in the C library's where the machine can make such a one.
class CommaLocale {
 public:
  CommaLocale()
      : m_Old(std::locale::global(std::locale(
            std::locale(std::locale::classic(), new Numbers<char>), new Numbers<wchar_t>))),
        m_Path("LOCPATH", m_Locales.Path()) {
    const std::string make =
        "localedef -i de_DE -f UTF-8 " + m_Locales.Path("de_DE.UTF-8") + " 2>/dev/null";
    m_HasC = std::system(make.c_str()) == 0 && std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
  }
  ~CommaLocale() {
    std::locale::global(m_Old);
    std::setlocale(LC_ALL, "C");
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  /// Whether the C library's locale is such a one, too.
  [[nodiscard]] bool HasC() const { return m_HasC; }

 private:
  template <typename Character>
  class Numbers : public std::numpunct<Character> {
   protected:
    Character do_decimal_point() const override { return Character{','}; }
    Character do_thousands_sep() const override { return Character{'.'}; }
    std::string do_grouping() const override { return "\3"; }
  };

  ScratchDirectory m_Locales;
  std::locale m_Old;
  EnvironmentGuard m_Path;
  bool m_HasC = false;
};

}  // namespace rastrel::test
