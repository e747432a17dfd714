#include "interpreter/pdf_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <utility>

#include "rastrel/platform/os/code_page.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::interpreter {
namespace {

constexpr int Utf16LowFirst = 1200;
constexpr int Utf8 = 65001;

// PDFDocEncoding where it differs from Latin 1: 0x18 to 0x1F, and 0x80 to 0xA0.
constexpr std::array<wchar_t, 8> Accents{0x02D8, 0x02C7, 0x02C6, 0x02D9,
                                         0x02DD, 0x02DB, 0x02DA, 0x02DC};
constexpr std::array<wchar_t, 33> Signs{
    0x2022, 0x2020, 0x2021, 0x2026, 0x2014, 0x2013, 0x0192, 0x2044, 0x2039, 0x203A, 0x2212,
    0x2030, 0x201E, 0x201C, 0x201D, 0x2018, 0x2019, 0x201A, 0x2122, 0xFB01, 0xFB02, 0x0141,
    0x0152, 0x0160, 0x0178, 0x017D, 0x0131, 0x0142, 0x0153, 0x0161, 0x017E, 0xFFFD, 0x20AC};

wchar_t CharacterOf(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  if (value >= 0x18 && value <= 0x1F) return Accents.at(value - 0x18U);
  if (value >= 0x80 && value <= 0xA0) return Signs.at(value - 0x80U);
  return value == 0x7F || value == 0xAD ? wchar_t{0xFFFD} : static_cast<wchar_t>(value);
}

}  // namespace

std::string Utf8FromPdfText(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF"))
    return os::Utf8FromWide(os::WideFromCodePage(Utf8, bytes.substr(3)));
  std::wstring text;
  if (bytes.starts_with("\xFE\xFF")) {
    std::string swapped(bytes.substr(2, (bytes.size() - 2) / 2 * 2));
    for (std::size_t at = 0; at < swapped.size(); at += 2) std::swap(swapped[at], swapped[at + 1]);
    text = os::WideFromCodePage(Utf16LowFirst, swapped);
  } else {
    std::ranges::transform(bytes, std::back_inserter(text), CharacterOf);
  }
  return os::Utf8FromWide(text);
}

}  // namespace rastrel::interpreter
